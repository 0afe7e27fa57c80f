// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/DemoTake.h"

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
    constexpr auto endLimit = 15s;
    constexpr int lookMilliseconds = 20;

}  // namespace

DemoTake::~DemoTake()
{
    killStarter();
    if (RecorderStateStore::running()) {
        if (const auto ended = stop(); !ended) {
            Terminal::fail(errorText(ended.error()));
        }
    }
}

Result<RecorderState> DemoTake::start(
    const SourceRef& source, const QString& output, const std::function<bool()>& interrupted)
{
    m_starter.setProcessChannelMode(QProcess::ForwardedChannels);
    m_starter.start(QCoreApplication::applicationFilePath(),
        {u"demo"_s, u"--start-take"_s, output, u"--source"_s, source.descriptor()});
    for (auto waited = 0ms; waited < startLimit && !interrupted();
        waited += std::chrono::milliseconds(lookMilliseconds)) {
        if (auto running = RecorderStateStore::running()) {
            return *std::move(running);
        }
        if (m_starter.waitForFinished(lookMilliseconds)) {
            break;
        }
    }
    return captureFailure(u"the take of %1 did not start"_s.arg(source.id));
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
    auto last = RecorderClient::stop(endLimit);
    if (!last) {
        return std::unexpected(last.error());
    }
    if (!*last) {
        return captureFailure(u"the recorder left no account"_s);
    }
    return **std::move(last);
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

}  // namespace vantiro
