// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/TakeFiles.h"

#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/TakesFolder.h"
#include "core/sources/PreflightFacts.h"
#include "core/takes/Takes.h"
#include "tool/ProgressBar.h"

#include <QDir>
#include <QFileInfo>

namespace vantiro::TakeFiles {

using namespace Qt::StringLiterals;

namespace {

    /// A failure in words for whoever sits at the terminal.
    Result<TakeAnalysis> told(Result<TakeAnalysis> analysis, SignalWatch& signals)
    {
        if (!analysis && signals.stopRequested()) {
            return captureFailure(u"cancelled"_s);
        }
        return analysis;
    }

}  // namespace

Result<QString> folder(const std::optional<QString>& named)
{
    QString path = named.value_or(TakesFolder::current());
    if (QFileInfo(path).isDir()) {
        return path;
    }
    if (named) {
        return captureFailure(
            QFileInfo::exists(path) ? u"%1 is no folder."_s.arg(path) : u"There is no folder %1."_s.arg(path));
    }
    if (const auto disk = PreflightFacts::volume(path).missingVolume) {
        return captureFailure(
            u"%1 is not connected, and the takes folder is on it. Connect it, or name a folder."_s.arg(*disk));
    }
    return captureFailure(
        u"There are no takes yet: the folder %1 comes with the first. 'vantiro record' makes one."_s.arg(path));
}

bool isSame(const QString& path, const QString& other)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(other).canonicalFilePath();
}

std::optional<Take> finishedTake(const QString& path)
{
    const auto running = RecorderStateStore::running();
    return running && isSame(path, running->path) ? std::nullopt : Takes::describe(path);
}

Result<TakeAnalysis> analyse(const QString& path, const QString& title, SignalWatch& signals)
{
    if (QFileInfo(path).isDir()) {
        return captureFailure(u"%1 is a folder, not a take."_s.arg(path));
    }
    ProgressBar bar(title);
    const TakeAnalysis::Progress progress{
        .cancelled = [&signals] { return signals.stopRequested(); },
        .advanced = [&bar](double part) { bar.advance(part); },
    };
    const auto take = finishedTake(path);
    if (take) {
        return told(TakeAnalysis::load(*take, progress), signals);
    }
    auto both = TakeAnalysis::analyze(path, {}, TakeOverview::usualSlices, progress);
    return told(both ? Result<TakeAnalysis>(std::move(both->analysis)) : std::unexpected(both.error()), signals);
}

}  // namespace vantiro::TakeFiles
