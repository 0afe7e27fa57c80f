// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/KnownDJApps.h"

#include "core/foundation/Files.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace vantiro::KnownDJApps {

namespace {

    QStringList readUserFile(const QString& path)
    {
        const auto bytes = files::read(path);
        if (!bytes) {
            return {};
        }
        QStringList entries;
        for (const auto& entry : QJsonDocument::fromJson(*bytes).array()) {
            if (!entry.isString()) {
                return {};
            }
            entries.append(entry.toString());
        }
        return entries;
    }

}  // namespace

const QStringList& builtInPrefixes()
{
    static const QStringList prefixes{
        QStringLiteral("com.algoriddim."),
        QStringLiteral("com.serato."),
        QStringLiteral("com.pioneer.rekordbox"),
        QStringLiteral("com.native-instruments.Traktor"),
        QStringLiteral("com.atomixproductions."),
        QStringLiteral("org.mixxx."),
        QStringLiteral("com.air-music-technology.EnginePrime"),
        QStringLiteral("com.Guillemot.DJUCED"),
        QStringLiteral("com.ableton."),
        QStringLiteral("com.apple.logic10"),
        QStringLiteral("com.apple.garageband10"),
        QStringLiteral("com.apple.mainstage"),
        QStringLiteral("com.image-line."),
        QStringLiteral("com.bitwig."),
        QStringLiteral("com.cockos.reaper"),
        QStringLiteral("com.presonus.studioone"),
        QStringLiteral("com.steinberg.cubase"),
        QStringLiteral("com.avid.ProTools"),
        QStringLiteral("com.propellerheads.reason"),
        QStringLiteral("com.reasonstudios.reason"),
        // The names that such programs go by here: desktop ids, and the binaries of those that have none.
        QStringLiteral("mixxx"),
        QStringLiteral("cockos-reaper"),
        QStringLiteral("reaper"),
        QStringLiteral("fm.reaper."),
        QStringLiteral("bitwig"),
        QStringLiteral("org.ardour."),
        QStringLiteral("ardour"),
        QStringLiteral("renoise"),
        QStringLiteral("zrythm"),
        QStringLiteral("org.zrythm."),
        QStringLiteral("lmms"),
        QStringLiteral("io.lmms."),
        QStringLiteral("qtractor"),
        QStringLiteral("giada"),
        QStringLiteral("xwax"),
        QStringLiteral("idjc"),
        QStringLiteral("virtualdj"),
        QStringLiteral("traktor"),
        QStringLiteral("rekordbox"),
        QStringLiteral("serato"),
        QStringLiteral("djay"),
    };
    return prefixes;
}

QStringList prefixes(const QString& userFile)
{
    return builtInPrefixes() + readUserFile(userFile);
}

bool contains(const QString& identifier, const QStringList& prefixes)
{
    const QString lower = identifier.toLower();
    return std::ranges::any_of(
        prefixes, [&lower](const QString& prefix) { return lower.startsWith(prefix.toLower()); });
}

}  // namespace vantiro::KnownDJApps
