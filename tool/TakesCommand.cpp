// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeHeader.h"
#include "core/capture/TakeRepair.h"
#include "core/foundation/Files.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "core/takes/Takes.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/TakeFiles.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

#include <QFile>

#include <algorithm>
#include <span>

#include <sys/stat.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    /// Others look at the lock for a moment, too.
    constexpr auto lockLimit = 100ms;

    /// The header tells another length than the file has, or more room is reserved than the audio needs. Takes that
    /// another program added to look like that, too.
    bool looksUnfinished(const Take& take)
    {
        constexpr std::int64_t ordinaryReserve = std::int64_t{1} << 20;
        QFile file(take.path);
        const QByteArray start = file.open(QIODevice::ReadOnly) ? file.read(qint64{TakeHeader::size}) : QByteArray();
        const auto header = TakeHeader::parse(std::as_bytes(std::span(start)));
        struct stat status = {};
        if (!header || ::fstat(file.handle(), &status) != 0) {
            return false;
        }
        const std::int64_t told = header->frames();
        const std::int64_t whole =
            std::int64_t{TakeHeader::size} + told * header->shape().frameBytes() + (header->needsPadding(told) ? 1 : 0);
        return status.st_size != whole || std::int64_t{status.st_blocks} * 512 - whole > ordinaryReserve;
    }

    /// Mends what recorders that died have left. A recorder that lives keeps its lock, and then nothing is touched. One
    /// that starts meanwhile waits for a single take at most.
    void mend(TakesView& view)
    {
        for (Take& take : view.takes) {
            if (!looksUnfinished(take)) {
                continue;
            }
            const auto lock = RecorderLock::acquireWithin(VantiroPaths::lockFile(), lockLimit);
            if (!lock) {
                return;
            }
            const auto repair = repairTake(take.path);
            if (!repair) {
                Terminal::fail(u"a take cannot be mended: %1"_s.arg(errorText(repair.error())));
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
            view.takes, [&running](const Take& take) { return files::isSame(take.path, running->path); });
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
