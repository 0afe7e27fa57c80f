// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/MixcloudPostName.h"
#include "core/copies/TakeExporter.h"
#include "core/copies/TakeTagging.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <set>

namespace vantiro::test {

using Listing = MixcloudPostName::Listing;

TEST(CopyNames, NameTheAccountThenTheDjThenNobody)
{
    struct Case {
        std::optional<QString> djName;
        std::optional<QString> account;
        std::optional<QString> artist;
        QString nowPlaying;
    };
    const QString dj = QStringLiteral("DJ X");
    for (const Case& one : {
             Case{dj, QStringLiteral(" dj-x\n"), QStringLiteral("dj-x"), dj},
             Case{QStringLiteral("\t DJ X "), std::nullopt, dj, dj},
             Case{QStringLiteral("  "), QStringLiteral("  "), std::nullopt, QStringLiteral("Vantiro")},
             Case{std::nullopt, std::nullopt, std::nullopt, QStringLiteral("Vantiro")},
         }) {
        EXPECT_EQ(TakeTagging::artist(one.djName, one.account), one.artist);
        EXPECT_EQ(TakeTagging::nowPlayingArtist(one.djName), one.nowPlaying);
    }
}

TEST(CopyNames, TellTheDateInEnglishInTheZoneThatIsAsked)
{
    // Its own digits, its own names of months.
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    const QDateTime recorded(QDate(2026, 8, 31), QTime(22, 4), QTimeZone::utc());
    const QTimeZone east(2 * 3600);
    EXPECT_EQ(TakeTagging::title(recorded, east), QStringLiteral("Mix, 1 Sep 2026, 00:04"));
    EXPECT_EQ(TakeTagging::dayTitle(recorded, east), QStringLiteral("Mix, 1 Sep 2026"));
    EXPECT_EQ(TakeTagging::releaseDate(recorded, east), QStringLiteral("2026-09-01"));
    EXPECT_EQ(TakeTagging::title(recorded, QTimeZone::utc()), QStringLiteral("Mix, 31 Aug 2026, 22:04"));
    QLocale::setDefault(QLocale::c());
}

TEST(CopyNames, GiveASuffixOnlyToUnlistedPostsWithoutANameOfTheirOwn)
{
    struct Case {
        const char* entered;
        Listing listing;
        const char* name;
    };
    for (const Case& one : {
             Case{" My set ", Listing::unlisted, "My set"},
             Case{"My set", Listing::listed, "My set"},
             Case{" \n", Listing::unlisted, "Mix, 25 Sep 2026 k7qa"},
             Case{"Mix, 25 Sep 2026", Listing::unlisted, "Mix, 25 Sep 2026 k7qa"},
             Case{"", Listing::listed, "Mix, 25 Sep 2026"},
         }) {
        EXPECT_EQ(MixcloudPostName::final(QString::fromLatin1(one.entered), QStringLiteral("Mix, 25 Sep 2026"),
                      one.listing, QStringLiteral("k7qa")),
            QString::fromLatin1(one.name));
    }
}

TEST(CopyNames, DrawSuffixesFromAllCharactersThatNobodyTakesForOthers)
{
    QRandomGenerator generator(7);
    std::set<QChar> seen;
    for (int draw = 0; draw < 500; ++draw) {
        const QString suffix = MixcloudPostName::randomSuffix(generator);
        EXPECT_EQ(suffix.size(), 4);
        seen.insert(suffix.begin(), suffix.end());
    }
    EXPECT_EQ(seen.size(), 31U);
    for (const QChar lookAlike : QStringLiteral("ilo01")) {
        EXPECT_FALSE(seen.contains(lookAlike));
    }
}

TEST(CopyNames, SuggestANameThatIsNeverTheTakes)
{
    struct Case {
        const char* source;
        ExportFormat format;
        const char* name;
    };
    for (const Case& one : {
             Case{"/m/Set.wav", ExportFormat::wav, "Set export.wav"},
             Case{"/m/Set.WAV", ExportFormat::wav, "Set export.wav"},
             Case{"/m/Set.caf", ExportFormat::wav, "Set.wav"},
             Case{"/m/Set 1.2.caf", ExportFormat::flac, "Set 1.2.flac"},
             Case{"/m/Set.m4a", ExportFormat::alac, "Set export.m4a"},
             Case{"/m/Set.wav", ExportFormat::aac, "Set.m4a"},
         }) {
        EXPECT_EQ(
            TakeExporter::suggestedName(QString::fromLatin1(one.source), one.format), QString::fromLatin1(one.name));
    }
}

}  // namespace vantiro::test
