// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeRepair.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "core/takes/Takes.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/TakeFiles.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

#include <algorithm>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    /// Others look at the lock for a moment, too.
    constexpr auto lockLimit = 100ms;

    /// Mends what recorders that died have left. A recorder that lives keeps its lock, and then nothing is touched.
    void mend(TakesView& view)
    {
        const auto lock = RecorderLock::acquireWithin(VantiroPaths::lockFile(), lockLimit);
        if (!lock) {
            return;
        }
        for (Take& take : view.takes) {
            const auto repair = repairTake(take.path);
            if (!repair) {
                Terminal::fail(u"a take cannot be mended: %1"_s.arg(Terminal::safeName(errorText(repair.error()))));
            } else if (repair->outcome == TakeRepair::Outcome::repaired) {
                take = Takes::describe(take.path).value_or(take);
                view.mended.push_back(take);
            }
        }
    }

}  // namespace

int takesCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {}, {u"--json"_s}, Arguments::Operands::atMostOne);
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const auto folder = TakeFiles::folder(arguments->path());
    if (!folder) {
        return Terminal::fail(errorText(folder.error()));
    }
    TakesView view{.folder = *folder, .takes = Takes::list(*folder)};
    if (const auto running = RecorderStateStore::running()) {
        const auto recording = std::ranges::find_if(
            view.takes, [&running](const Take& take) { return TakeFiles::isSame(take.path, running->path); });
        view.recordingPath = recording == view.takes.end() ? std::nullopt : std::optional(recording->path);
    } else if (!view.takes.empty()) {
        mend(view);
    }
    if (arguments->has(u"--json"_s)) {
        Terminal::printJson(takesJson(view));
    } else {
        Terminal::print(takesText(view));
    }
    return Terminal::done;
}

}  // namespace vantiro
