// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "core/takes/Takes.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/PracticeText.h"
#include "tool/TakeFiles.h"
#include "tool/Terminal.h"

#include <algorithm>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// What came of the takes that the log lacks.
    struct Practised {
        std::vector<PracticeEntry> entries = {};
        int exitCode = Terminal::done;
    };

    std::vector<Take> finishedTakes(const QString& folder)
    {
        const auto running = RecorderStateStore::running();
        return Takes::list(folder, running ? std::optional(running->path) : std::nullopt);
    }

    std::vector<Take> withoutEntry(std::vector<Take> takes, const PracticeLog& log)
    {
        std::erase_if(takes, [&log](const Take& take) {
            return std::ranges::find(log.entries, take.fileName(), &PracticeEntry::take) != log.entries.end();
        });
        return takes;
    }

    /// Analyses them one by one; a take that cannot be read does not keep the others from the log.
    Practised practise(const std::vector<Take>& takes, SignalWatch& signals)
    {
        Practised practised;
        for (std::size_t index = 0; index < takes.size(); ++index) {
            const Take& take = takes[index];
            const auto analysis =
                TakeFiles::analyse(take.path, u"Analysing %1 of %2"_s.arg(index + 1).arg(takes.size()), signals);
            if (analysis) {
                practised.entries.push_back(PracticeEntry::of(take, *analysis));
                continue;
            }
            practised.exitCode = Terminal::fail(errorText(analysis.error()));
            if (signals.stopRequested()) {
                break;
            }
        }
        return practised;
    }

}  // namespace

int practiceCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {}, {u"--json"_s}, Arguments::Operands::atMostOne);
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const auto folder = TakeFiles::folder(arguments->path());
    if (!folder) {
        return Terminal::fail(errorText(folder.error()));
    }
    SignalWatch signals;
    const std::vector<Take> takes = finishedTakes(*folder);
    PracticeLog log = PracticeLog::load(*folder);
    if (log.unread) {
        return Terminal::fail(errorText(*log.unread));
    }
    if (!log.setAsideAs.isEmpty()) {
        Terminal::fail(u"the log of this folder was damaged and begins anew; its ratings are in %1"_s.arg(
            *folder + u'/' + log.setAsideAs));
    }
    log.followRenames(takes);
    Practised practised = practise(withoutEntry(takes, log), signals);
    // Read again: that may have taken minutes, and somebody else may have rated a set meanwhile.
    log = PracticeLog::load(*folder);
    const std::size_t renamed = log.followRenames(takes);
    QStringList analysed;
    for (const PracticeEntry& entry : practised.entries) {
        log.record(entry);
        analysed << entry.take;
    }
    if (!analysed.isEmpty() || renamed > 0) {
        if (const auto saved = log.save(*folder); !saved) {
            practised.exitCode = Terminal::fail(errorText(saved.error()));
        }
    }
    if (signals.stopRequested()) {
        return Terminal::failed;
    }
    const WeeklyComparison weeks = log.weekly(QDateTime::currentDateTimeUtc());
    if (arguments->has(u"--json"_s)) {
        Terminal::printJson(practiceJson(analysed, weeks));
        return practised.exitCode;
    }
    Terminal::print(practiceText(log, analysed.size(), weeks));
    return practised.exitCode;
}

}  // namespace vantiro
