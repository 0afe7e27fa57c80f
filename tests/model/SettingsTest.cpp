// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/AppModel.h"
#include "core/foundation/Json.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QJsonDocument>

#include <memory>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using test::Sandbox;

    class SettingsTest : public test::SandboxTest {
    protected:
        [[nodiscard]] AppSettings settings() const { return AppSettings(std::make_unique<SettingsStore>(m_file)); }
        [[nodiscard]] QJsonObject stored() const { return json::object(Sandbox::readFile(m_file)).value(); }

        QString m_file = VantiroPaths::settingsFile();
    };

    QJsonObject parsed(const char* text)
    {
        return json::object(text).value();
    }

    /// All settings as they are seen, under the names that they are stored by.
    QJsonObject seen(const AppSettings& settings)
    {
        QJsonObject pages;
        for (const auto& [take, page] : settings.mixcloudPages().asKeyValueRange()) {
            pages.insert(take, page);
        }
        QJsonObject channels;
        for (const auto& [source, channel] : settings.firstChannel().asKeyValueRange()) {
            channels.insert(source, static_cast<qint64>(channel));
        }
        return {{u"format"_s, rawValue(settings.format())},
            {u"takeCopy"_s, settings.takeCopy() ? rawValue(*settings.takeCopy()) : u"off"_s},
            {u"addToMusic"_s, settings.addToMusic()}, {u"djName"_s, settings.djName()},
            {u"mixcloudPrivate"_s, settings.mixcloudPrivate()}, {u"mixcloudPages"_s, pages},
            {u"takesFolder"_s, settings.takesFolder()}, {u"isAdvanced"_s, settings.isAdvanced()},
            {u"didSetup"_s, settings.didSetup()}, {u"autoPick"_s, settings.autoPick()},
            {u"revealAfterTake"_s, settings.revealAfterTake()}, {u"confirmStop"_s, settings.confirmStop()},
            {u"hotkeyEnabled"_s, settings.hotkeyEnabled()}, {u"showsMenuBarItem"_s, settings.showsMenuBarItem()},
            {u"deckMotion"_s, settings.deckMotion()}, {u"checksForUpdates"_s, settings.checksForUpdates()},
            {u"allowsURLControl"_s, settings.allowsURLControl()}, {u"firstChannel"_s, channels},
            {u"playbackOutput"_s, settings.playbackOutput()}, {u"playbackOutputName"_s, settings.playbackOutputName()}};
    }

    /// Everything unlike its default.
    constexpr auto allChanged = R"({"format": "wav", "takeCopy": "off", "addToMusic": false, "djName": "Zoë",
        "mixcloudPrivate": false, "mixcloudPages": {"a.caf": "https://example.org/a"}, "takesFolder": "/disk/takes",
        "isAdvanced": true, "didSetup": true, "autoPick": false, "revealAfterTake": true, "confirmStop": true,
        "hotkeyEnabled": false, "showsMenuBarItem": false, "deckMotion": false, "checksForUpdates": false,
        "allowsURLControl": true, "firstChannel": {"mixer": 3},
        "playbackOutput": "amp", "playbackOutputName": "Amp"})";

    void changeAll(AppSettings& settings)
    {
        settings.setFormat(TakeFormat::wav);
        settings.setTakeCopy(std::nullopt);
        settings.setAddToMusic(false);
        settings.setDjName(u"Zoë"_s);
        settings.setMixcloudPrivate(false);
        settings.setMixcloudPages({{u"a.caf"_s, u"https://example.org/a"_s}});
        settings.setTakesFolder(u"/disk/../disk/takes/"_s);
        settings.setIsAdvanced(true);
        settings.setDidSetup(true);
        settings.setAutoPick(false);
        settings.setRevealAfterTake(true);
        settings.setConfirmStop(true);
        settings.setHotkeyEnabled(false);
        settings.setShowsMenuBarItem(false);
        settings.setDeckMotion(false);
        settings.setChecksForUpdates(false);
        settings.setAllowsURLControl(true);
        settings.setFirstChannel({{u"mixer"_s, 3}});
        settings.setPlaybackOutput(u"amp"_s, u"Amp"_s);
    }

}  // namespace

TEST_F(SettingsTest, ReadTheirDefaultsWhereNothingOrSomethingOfAnotherTypeIsStored)
{
    QJsonObject defaults = parsed(R"({"format": "caf", "takeCopy": "aac", "addToMusic": true, "djName": "",
        "mixcloudPrivate": true, "mixcloudPages": {}, "isAdvanced": false, "didSetup": false, "autoPick": true,
        "revealAfterTake": false, "confirmStop": false, "hotkeyEnabled": true, "showsMenuBarItem": true,
        "deckMotion": true, "checksForUpdates": true, "allowsURLControl": false, "firstChannel": {},
        "playbackOutput": "", "playbackOutputName": ""})");
    defaults.insert(u"takesFolder"_s, m_sandbox.home() + u"/Music/Vantiro"_s);
    struct Case {
        const char* stored;
        const char* unlikeDefault;
    };
    const Case cases[] = {
        {"{}", "{}"},
        {allChanged, allChanged},
        {R"({"format": "flac", "takeCopy": "mp3"})", R"({"takeCopy": "off"})"},
        {R"({"format": 1, "takeCopy": 1})", "{}"},
        {R"({"takeCopy": "alac"})", R"({"takeCopy": "alac"})"},
        {R"({"takeCopy": "AAC", "djName": 7})", R"({"takeCopy": "off"})"},
        {R"({"autoPick": "yes", "hotkeyEnabled": 0, "addToMusic": null, "deckMotion": []})", "{}"},
        {R"({"isAdvanced": 1, "didSetup": "true", "allowsURLControl": {}})", "{}"},
        {R"({"takesFolder": "takes", "firstChannel": [3], "mixcloudPages": "a"})", "{}"},
        {R"({"takesFolder": "/a/b/../c/"})", R"({"takesFolder": "/a/c"})"},
        {R"({"firstChannel": {"a": 3, "b": 1.5}, "mixcloudPages": {"a": "b", "c": 1}})", "{}"},
    };
    for (const Case& test : cases) {
        QJsonObject expected = defaults;
        const QJsonObject changes = parsed(test.unlikeDefault);
        for (auto change = changes.begin(); change != changes.end(); ++change) {
            expected.insert(change.key(), change.value());
        }
        Sandbox::writeFile(m_file, test.stored);
        EXPECT_EQ(seen(settings()), expected) << test.stored;
    }
}

TEST_F(SettingsTest, AreAllWrittenAsTheyWillBeReadAndLeaveUnknownKeysAlone)
{
    Sandbox::writeFile(m_file, R"({"later": {"deep": [1]}, "format": "caf"})");
    {
        AppSettings changed = settings();
        changeAll(changed);
    }
    QJsonObject expected = parsed(allChanged);
    expected.insert(u"later"_s, parsed(R"({"deep": [1]})"));
    EXPECT_EQ(stored(), expected);

    // The default folder goes on following the music folder.
    settings().setTakesFolder(VantiroPaths::takes() + u'/');
    EXPECT_FALSE(stored().contains(u"takesFolder"_s));
}

TEST_F(SettingsTest, KeepWhatAnotherProgramChangedMeanwhile)
{
    AppSettings first = settings();
    AppSettings second = settings();
    first.setDjName(u"A"_s);
    first.flush();
    second.setConfirmStop(true);
    second.flush();
    first.setFormat(TakeFormat::wav);
    first.flush();
    EXPECT_EQ(stored(), parsed(R"({"djName": "A", "confirmStop": true, "format": "wav"})"));
}

TEST_F(SettingsTest, SetABrokenFileAsideByteForByte)
{
    const QFileInfo file(m_file);
    const auto aside = [&](const QString& name) { return Sandbox::readFile(file.dir().filePath(name)); };
    Sandbox::writeFile(m_file, "{\"djName\": \"A\"");
    {
        AppSettings changed = settings();
        EXPECT_EQ(changed.djName(), QString());
        EXPECT_EQ(aside(u"settings.broken.json"_s), "{\"djName\": \"A\"");
        // It breaks once more while the program runs.
        Sandbox::writeFile(m_file, "[]");
        changed.setDjName(u"B"_s);
    }
    EXPECT_EQ(aside(u"settings.broken.json"_s), "{\"djName\": \"A\"");
    EXPECT_EQ(aside(u"settings.broken-2.json"_s), "[]");
    EXPECT_EQ(stored(), parsed(R"({"djName": "B"})"));
}

TEST_F(SettingsTest, LoseNothingWhileTheFileCannotBeWritten)
{
    const QString folder = QFileInfo(m_file).path();
    Sandbox::writeFile(folder, "a file where the folder should be");
    AppSettings changed = settings();
    changed.setDjName(u"A"_s);
    changed.setTakesFolder(u"/disk"_s);
    changed.setTakesFolder(VantiroPaths::takes());
    changed.flush();
    EXPECT_EQ(changed.djName(), u"A");

    ASSERT_TRUE(QFile::remove(folder));
    Sandbox::writeFile(m_file, R"({"takesFolder": "/older", "didSetup": true})");
    changed.setFormat(TakeFormat::wav);
    changed.flush();
    EXPECT_EQ(stored(), parsed(R"({"djName": "A", "format": "wav", "didSetup": true})"));
}

TEST_F(SettingsTest, OfASampleLeaveTheFileUntouched)
{
    const QByteArray before = R"({"format": "caf"})";
    Sandbox::writeFile(m_file, before);
    {
        AppModel sample(std::make_unique<SettingsStore>(m_file), {}, {}, AppModel::Kind::sample);
        changeAll(sample);
        EXPECT_EQ(sample.format(), TakeFormat::wav);
    }
    EXPECT_EQ(Sandbox::readFile(m_file), before);
}

}  // namespace vantiro
