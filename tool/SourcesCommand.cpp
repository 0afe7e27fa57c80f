// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopPlatform.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Listening.h"
#include "tool/SignalWatch.h"
#include "tool/SourcesText.h"
#include "tool/Terminal.h"

namespace vantiro {

int sourcesCommand(const QStringList& words)
{
    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    const auto arguments = Arguments::parse(words, {}, {u"--json"_s, u"--no-listen"_s});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    SignalWatch signals;
    const Platform platform = makeDesktopPlatform();
    auto found =
        Listening::find(*platform.audio, signals, arguments->has(u"--no-listen"_s) ? 0ms : SourceProbe::usualTime);
    if (!found) {
        return Terminal::fail(errorText(found.error()));
    }
    const SourcesView view = SourcesView::of(*std::move(found), *platform.audio);
    if (arguments->has(u"--json"_s)) {
        Terminal::printJson(sourcesJson(view));
    } else {
        Terminal::print(sourcesText(view).join(u'\n'));
    }
    return Terminal::done;
}

}  // namespace vantiro
