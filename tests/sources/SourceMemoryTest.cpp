// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceMemory.h"

#include "tests/support/Sandbox.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    using SourceMemoryTest = test::SandboxTest;

    const QStringList hardware{u"b"_s, u"a"_s};
    const SourceRef mixer = SourceRef::device(u"a"_s);
    const SourceRef serato = SourceRef::app(u"com.serato.dj"_s);

}  // namespace

TEST_F(SourceMemoryTest, KeepsAChoiceForASetOfHardwareInAnyOrder)
{
    EXPECT_EQ(SourceMemory::key({u"b"_s, u"a"_s, u"B"_s}), u"B|a|b"_s);
    EXPECT_EQ(SourceMemory::key({}), QString());

    SourceMemory memory;
    memory.remember(serato, hardware);
    memory.remember(mixer, hardware);
    memory.remember(serato, {});
    memory.rememberRate(48000, serato);
    EXPECT_EQ(memory.choice({u"a"_s, u"b"_s}), mixer);
    EXPECT_EQ(memory.choice({}), serato);
    EXPECT_EQ(memory.choice({u"a"_s, u"b"_s, u"c"_s}), std::nullopt);

    memory.forgetChoices();
    EXPECT_EQ(memory.choice({u"a"_s, u"b"_s}), std::nullopt);
    EXPECT_EQ(memory.lastRate(serato), 48000);
    EXPECT_EQ(memory.lastRate(mixer), std::nullopt);
}

TEST_F(SourceMemoryTest, SurvivesInAFileOfAFixedShape)
{
    SourceMemory memory;
    memory.remember(mixer, hardware);
    memory.remember(serato, {});
    memory.rememberRate(44100, serato);
    memory.rememberRate(96000.5, mixer);
    const QString file = m_sandbox.path(u"support/Vantiro/sources.json"_s);
    ASSERT_TRUE(memory.save(file));
    EXPECT_EQ(QJsonDocument::fromJson(test::Sandbox::readFile(file)), QJsonDocument::fromJson(R"({
        "choices": {"": {"kind": "app", "id": "com.serato.dj"}, "a|b": {"kind": "device", "id": "a"}},
        "rates": {"app:com.serato.dj": 44100, "a": 96000.5}})"));
    EXPECT_EQ(SourceMemory::load(file), memory);

    EXPECT_FALSE(memory.save(file + u"/below a file"_s));
}

TEST_F(SourceMemoryTest, IsEmptyAfterAFileThatIsMissingOrBroken)
{
    const QString file = m_sandbox.path(u"sources.json"_s);
    EXPECT_EQ(SourceMemory::load(file), SourceMemory());

    test::Sandbox::writeFile(file, R"({"rates": {"a": 48000}})");
    EXPECT_EQ(SourceMemory::load(file).lastRate(mixer), 48000) << "choices may be missing";
    test::Sandbox::writeFile(file, R"({"choices": {"a": {"kind": "device", "id": "a"}}})");
    EXPECT_EQ(SourceMemory::load(file).choice({u"a"_s}), mixer) << "rates may be missing";

    for (const char* broken : {"", "garbage", "[]", R"({"rates": {"a": 48000, "b": "48000"}})", R"({"rates": []})",
             R"({"rates": {"a": 48000}, "choices": {"a": "a"}})",
             R"({"rates": {"a": 48000}, "choices": {"a": {"kind": "disk", "id": "a"}}})",
             R"({"rates": {"a": 48000}, "choices": {"a": {"kind": "app"}}})",
             R"({"rates": {"a": 48000}, "choices": 1})"}) {
        test::Sandbox::writeFile(file, broken);
        EXPECT_EQ(SourceMemory::load(file), SourceMemory()) << broken;
    }
    SourceMemory memory;
    memory.rememberRate(48000, mixer);
    EXPECT_TRUE(memory.save(file));
    EXPECT_EQ(SourceMemory::load(file), memory) << "the next save replaces what was broken";
}

}  // namespace vantiro
