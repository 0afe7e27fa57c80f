// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/AudioDevice.h"
#include "core/sources/KnownDJApps.h"
#include "core/sources/SourceObservation.h"
#include "core/sources/SourceRef.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace vantiro {

TEST(SourceRef, GoesThroughItsDescriptorAndItsJson)
{
    struct Case {
        SourceRef ref;
        QString descriptor;
    };
    const Case cases[] = {
        {SourceRef::app(QStringLiteral("com.serato.dj")), QStringLiteral("app:com.serato.dj")},
        {SourceRef::app(QStringLiteral("app:1")), QStringLiteral("app:app:1")},
        {SourceRef::app(QString()), QStringLiteral("app:")},
        {SourceRef::device(QStringLiteral("alsa_input.usb-Foo:1")), QStringLiteral("alsa_input.usb-Foo:1")},
        {SourceRef::device(QStringLiteral("App:1")), QStringLiteral("App:1")},
        {SourceRef::device(QString()), QString()},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(test.ref.descriptor(), test.descriptor);
        EXPECT_EQ(SourceRef::fromDescriptor(test.descriptor), test.ref) << qPrintable(test.descriptor);
        EXPECT_EQ(SourceRef::fromJson(test.ref.toJson()), test.ref) << qPrintable(test.descriptor);
    }
    EXPECT_EQ(SourceRef::app(QStringLiteral("x")).toJson(),
        (QJsonObject{{QStringLiteral("kind"), QStringLiteral("app")}, {QStringLiteral("id"), QStringLiteral("x")}}));
    EXPECT_FALSE(
        SourceRef::fromJson({{QStringLiteral("kind"), QStringLiteral("Device")}, {QStringLiteral("id"), QString()}}));
    EXPECT_FALSE(SourceRef::fromJson({{QStringLiteral("kind"), QStringLiteral("device")}}));
}

TEST(AudioDevice, KeepsAllSevenFieldsInJsonAndNeedsThem)
{
    const AudioDevice device{
        QStringLiteral("uid"), QStringLiteral("Näme"), QStringLiteral("usb"), 10, 4, 44100, QStringLiteral("line")};
    const QJsonObject object = device.toJson();
    EXPECT_EQ(object.size(), 7);
    EXPECT_EQ(AudioDevice::fromJson(object), device);
    for (const QString& key : object.keys()) {
        QJsonObject lacking = object;
        lacking.remove(key);
        EXPECT_FALSE(AudioDevice::fromJson(lacking)) << qPrintable(key);
    }
}

TEST(SourceObservation, DecidesWhatIsAMicrophone)
{
    struct Case {
        const char16_t* name;
        const char16_t* transport;
        const char16_t* terminal;
        bool isMicrophone;
    };
    const Case cases[] = {
        {u"Virtual Mic", u"virtual", u"microphone", false},
        {u"Interface", u"usb", u"microphone", true},
        {u"Line In", u"built-in", u"line", true},
        {u"Speaker", u"bluetooth", u"unknown", true},
        {u"Phone", u"continuity", u"unknown", true},
        {u"Box", u"airplay", u"line", true},
        {u"Screen", u"display", u"unknown", true},
        {u"FaceTime HD Camera", u"usb", u"line", true},
        {u"USB HEADSET 2", u"other", u"unknown", true},
        {u"DJ's AirPods Pro", u"other", u"unknown", true},
        {u"Some Webcam", u"aggregate", u"unknown", true},
        {u"My Microphones", u"thunderbolt", u"digital", true},
        {u"Studio MIC", u"usb", u"unknown", true},
        {u"Mica Interface", u"usb", u"unknown", false},
        {u"Cosmic", u"usb", u"unknown", false},
        {u"Studio Mic ", u"usb", u"unknown", false},
        {u"DDJ-400", u"usb", u"unknown", false},
    };
    for (const Case& test : cases) {
        SourceObservation observation{.ref = SourceRef::device(QStringLiteral("uid")),
            .name = QString::fromUtf16(test.name),
            .transport = QString::fromUtf16(test.transport),
            .inputTerminal = QString::fromUtf16(test.terminal)};
        EXPECT_EQ(observation.isMicrophone(), test.isMicrophone) << qPrintable(observation.name);
        observation.ref.kind = SourceRef::Kind::app;
        EXPECT_FALSE(observation.isMicrophone()) << qPrintable(observation.name);
    }
}

TEST(KnownDJApps, MatchPrefixesWhateverTheCase)
{
    const QStringList& known = KnownDJApps::builtInPrefixes();
    for (const char* identifier : {"COM.SERATO.DJ", "com.pioneer.rekordbox6", "com.native-instruments.traktor",
             "com.image-line.flstudio", "org.mixxx.Mixxx", "mixxx", "Bitwig-Studio", "REAPER"}) {
        EXPECT_TRUE(KnownDJApps::contains(QString::fromLatin1(identifier), known)) << identifier;
    }
    for (const char* identifier : {"com.seratoo", "com.serato", "firefox", "org.gnome.Music", ""}) {
        EXPECT_FALSE(KnownDJApps::contains(QString::fromLatin1(identifier), known)) << identifier;
    }
    EXPECT_TRUE(KnownDJApps::contains(QStringLiteral("firefox"), {QString()}));
}

using KnownDJAppsFile = test::SandboxTest;

TEST_F(KnownDJAppsFile, AddsTheUsersPrefixesAndIsIgnoredWhenBroken)
{
    const QString file = m_sandbox.path(QStringLiteral("dj-apps.json"));
    const QStringList& known = KnownDJApps::builtInPrefixes();
    EXPECT_EQ(KnownDJApps::prefixes(file), known);

    test::Sandbox::writeFile(file, R"(["com.example.", "mixxx", "com.example."])");
    const QStringList added{QStringLiteral("com.example."), QStringLiteral("mixxx"), QStringLiteral("com.example.")};
    EXPECT_EQ(KnownDJApps::prefixes(file), known + added);

    for (const char* broken :
        {"{}", "", "[\"com.example.\"", "[\"com.example.\", 1]", "\"com.example.\"", "[[\"a\"]]"}) {
        test::Sandbox::writeFile(file, broken);
        EXPECT_EQ(KnownDJApps::prefixes(file), known) << broken;
    }
}

}  // namespace vantiro
