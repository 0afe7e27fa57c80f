// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/DemoTake.h"

#include "core/foundation/Files.h"
#include "core/foundation/Json.h"
#include "core/recorder/RecorderClient.h"
#include "core/recorder/RecorderStateStore.h"
#include "tool/Terminal.h"

#include <QCoreApplication>

#include <chrono>

#include <unistd.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr auto startLimit = 15s;
    constexpr int lookMilliseconds = 20;
    constexpr int stopMilliseconds = 20'000;

}  // namespace

DemoTake::DemoTake(SourceRef source, QString dataHome, QString output)
    : m_source(std::move(source))
    , m_dataHome(std::move(dataHome))
    , m_output(std::move(output))
{ }

DemoTake::~DemoTake()
{
    killStarter();
    if (m_started) {
        if (const auto ended = stop(); !ended) {
            Terminal::fail(errorText(ended.error()));
        }
    }
}

Result<RecorderState> DemoTake::start(const std::function<bool()>& interrupted)
{
    m_starter.setProcessChannelMode(QProcess::ForwardedChannels);
    m_starter.setProcessEnvironment(environment());
    m_starter.start(QCoreApplication::applicationFilePath(),
        {u"demo"_s, u"--start-take"_s, m_output, u"--source"_s, m_source.descriptor()});
    m_started = true;
    for (auto waited = 0ms; waited < startLimit && !interrupted();
        waited += std::chrono::milliseconds(lookMilliseconds)) {
        if (auto running = state()) {
            return *std::move(running);
        }
        if (m_starter.waitForFinished(lookMilliseconds)) {
            break;
        }
    }
    return captureFailure(u"the take of %1 did not start"_s.arg(m_source.id));
}

std::optional<RecorderState> DemoTake::state() const
{
    auto state = RecorderStateStore::read(m_dataHome + u"/Vantiro/recorder.json"_s);
    return state && state->isRunning() ? std::move(state) : std::nullopt;
}

void DemoTake::killStarter()
{
    if (m_starter.state() != QProcess::NotRunning) {
        m_starter.kill();
        m_starter.waitForFinished();
    }
}

Result<RecorderState> DemoTake::stop()
{
    m_started = false;
    QProcess command;
    command.setProcessEnvironment(environment());
    command.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    command.start(QCoreApplication::applicationFilePath(), {u"stop"_s, u"--json"_s});
    command.waitForFinished(stopMilliseconds);
    const auto object = json::object(command.readAllStandardOutput());
    if (!object) {
        return captureFailure(u"the recorder of %1 left no account"_s.arg(m_source.id));
    }
    return RecorderState::fromJson(*object);
}

int DemoTake::beTheStarter(const SourceRef& source, const QString& output)
{
    const auto state = RecorderClient::start({.source = source, .output = output});
    if (!state) {
        return Terminal::fail(errorText(state.error()));
    }
    for (;;) {
        ::pause();
    }
}

QProcessEnvironment DemoTake::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_DATA_HOME"_s, m_dataHome);
    return environment;
}

}  // namespace vantiro
