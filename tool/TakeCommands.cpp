// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderClient.h"
#include "core/recorder/RecorderStateStore.h"
#include "tool/AccountText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Terminal.h"

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr auto stopLimit = 15s;

    void show(const RecorderState& state, bool asJson)
    {
        if (asJson) {
            Terminal::printJson(state.toJsonText());
            return;
        }
        for (const QString& line : accountText(state)) {
            Terminal::print(line);
        }
    }

}  // namespace

int statusCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {}, {QStringLiteral("--json")});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const auto state = RecorderStateStore::running();
    if (!state) {
        return Terminal::fail(QStringLiteral("No take is running."));
    }
    show(*state, arguments->has(QStringLiteral("--json")));
    return Terminal::done;
}

int stopCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {}, {QStringLiteral("--json")});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    if (!RecorderStateStore::running()) {
        return Terminal::fail(QStringLiteral("No take is running."));
    }
    const auto last = RecorderClient::stop(stopLimit);
    if (!last) {
        return Terminal::fail(errorText(last.error()));
    }
    if (!*last) {
        return Terminal::fail(
            QStringLiteral("The recorder stopped unexpectedly. The take up to that moment is in your takes folder."));
    }
    show(**last, arguments->has(QStringLiteral("--json")));
    return (*last)->stats && (*last)->stats->writeFailed() ? Terminal::failed : Terminal::done;
}

}  // namespace vantiro
