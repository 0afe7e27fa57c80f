// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/WindowTest.h"

#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"

#include <QDataStream>
#include <QFile>
#include <QJsonDocument>
#include <QStandardPaths>

#include <csignal>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    /// Longer than the screen itself waits for anything.
    constexpr int patienceMilliseconds = 30'000;

    VirtualDevice::Options::Render noise(float magnitude)
    {
        return
            [magnitude, seed = std::uint32_t{1}](std::span<float* const> channels, int frames, std::int64_t) mutable {
                for (int frame = 0; frame < frames; ++frame) {
                    for (float* channel : channels) {
                        seed = seed * 1664525U + 1013904223U;
                        channel[frame] = magnitude * (static_cast<float>(seed >> 8) / 8388608.0F - 1.0F);
                    }
                }
            };
    }

}  // namespace

void WindowTest::SetUp()
{
    const bool isPossible = std::ranges::all_of(QStringList{u"Xvfb"_s, u"openbox"_s, u"xdotool"_s},
        [](const QString& name) { return !QStandardPaths::findExecutable(name).isEmpty(); });
    if (!isPossible && !qEnvironmentVariableIsSet("CI")) {
        GTEST_SKIP() << "Xvfb, openbox or xdotool is not installed, so nothing of the window is tested here.";
    }
    DesktopTest::SetUp();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    m_screen.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_screen.start(u"/usr/bin/python3"_s, {QStringLiteral(VANTIRO_SCREEN), m_sandbox.path(u"screen"_s)});
    const QJsonObject environment = nextAnswer()[u"value"_s].toObject();
    ASSERT_FALSE(environment.isEmpty()) << "there is no screen";
    for (auto variable = environment.begin(); variable != environment.end(); ++variable) {
        m_sandbox.setVariable(variable.key().toUtf8().constData(), variable->toString().toUtf8());
    }
    // A user's environment that would make the picture another one.
    m_sandbox.setVariable("QT_SCALE_FACTOR", "1");
    m_sandbox.setVariable("WAYLAND_DISPLAY", std::nullopt);
}

void WindowTest::TearDown()
{
    m_app.reset();
    m_screen.closeWriteChannel();
    if (!m_screen.waitForFinished(patienceMilliseconds)) {
        m_screen.kill();
        m_screen.waitForFinished();
    }
    DesktopTest::TearDown();
}

std::unique_ptr<VirtualDevice> WindowTest::interface(
    const QString& name, const QString& description, float magnitude) const
{
    auto made = VirtualDevice::make(m_graph->socketPath(),
        {.name = name,
            .description = description,
            .quantum = 1024,
            .properties = {{u"device.bus"_s, u"usb"_s}},
            .render = noise(magnitude)});
    EXPECT_TRUE(made) << qPrintable(errorText(made.error()));
    return made ? *std::move(made) : nullptr;
}

void WindowTest::writeSettings(const QJsonObject& settings)
{
    Sandbox::writeFile(VantiroPaths::settingsFile(), QJsonDocument(settings).toJson());
}

void WindowTest::writeSilentTake(const QString& path, int seconds)
{
    constexpr qint64 rate = 48'000;
    constexpr qint64 bytesPerFrame = 6;
    const qint64 bytes = seconds * rate * bytesPerFrame;
    QByteArray header;
    QDataStream out(&header, QIODevice::WriteOnly);
    out.writeRawData("caff\0\1\0\0desc", 12);
    out << qint64{32} << static_cast<double>(rate);
    out.writeRawData("lpcm", 4);
    out << quint32{2} << quint32{6} << quint32{1} << quint32{2} << quint32{24};
    out.writeRawData("data", 4);
    out << bytes + 4 << quint32{0};
    Sandbox::writeFile(path, header);
    EXPECT_TRUE(QFile::resize(path, header.size() + bytes));
}

void WindowTest::open(const QStringList& arguments)
{
    m_app = std::make_unique<Program>(QStringLiteral(VANTIRO_APP), arguments);
    waitForWindow();
    sees(u"frame 'Vantiro' active"_s);
}

void WindowTest::expectEnd(std::chrono::milliseconds limit)
{
    const auto result = m_app->wait(limit);
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
}

QString WindowTest::sees(const QString& text)
{
    return ask(u"sees"_s, {text}).toString();
}

void WindowTest::misses(const QString& text)
{
    ask(u"misses"_s, {text});
}

QStringList WindowTest::tree()
{
    return ask(u"tree"_s).toVariant().toStringList();
}

void WindowTest::press(const QString& name, int number)
{
    ask(u"press"_s, {name, number});
}

void WindowTest::key(const QStringList& keys)
{
    ask(u"key"_s, QJsonArray::fromStringList(keys));
}

void WindowTest::click(const QPoint& place)
{
    ask(u"click"_s, {place.x(), place.y()});
}

QRect WindowTest::waitForWindow(const QString& title)
{
    const QJsonArray place = ask(u"shows_window"_s, {title}).toArray();
    return {place[0].toInt(), place[1].toInt(), place[2].toInt(), place[3].toInt()};
}

void WindowTest::waitForNoWindow(const QString& title)
{
    ask(u"hides_window"_s, {title});
}

QImage WindowTest::screenshot()
{
    const QString file = m_sandbox.path(u"window.png"_s);
    ask(u"screenshot"_s, {file});
    return QImage(file).convertToFormat(QImage::Format_RGB32);
}

RecorderState WindowTest::waitForTake(double seconds)
{
    std::optional<RecorderState> state;
    EXPECT_TRUE(waitFor(
        [&] {
            state = RecorderStateStore::running();
            return state && (seconds <= 0 || (state->stats && state->stats->seconds() >= seconds));
        },
        30s))
        << "no take runs";
    return state.value_or(RecorderState{});
}

RecorderState WindowTest::waitForWholeTake()
{
    EXPECT_TRUE(waitFor([] { return !RecorderLock::isHeld(VantiroPaths::lockFile()); }, 20s))
        << "the take does not end";
    expectIdle();
    RecorderState take = lastTake();
    expectContinuous(take);
    EXPECT_EQ(SoundFile::read(take.path).frames, take.stats->frames) << qPrintable(take.path);
    return take;
}

QJsonValue WindowTest::ask(const QString& method, const QJsonArray& arguments)
{
    QJsonArray question{method};
    for (const QJsonValue& argument : arguments) {
        question.append(argument);
    }
    m_screen.write(QJsonDocument(question).toJson(QJsonDocument::Compact) + '\n');
    const QJsonObject answer = nextAnswer();
    EXPECT_TRUE(answer.contains(u"value"_s)) << qPrintable(answer[u"error"_s].toString(u"no answer"_s));
    return answer[u"value"_s];
}

QJsonObject WindowTest::nextAnswer()
{
    while (!m_screen.canReadLine()) {
        if (!m_screen.waitForReadyRead(patienceMilliseconds)) {
            return {};
        }
    }
    return QJsonDocument::fromJson(m_screen.readLine()).object();
}

}  // namespace vantiro::test
