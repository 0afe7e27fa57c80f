// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/TakeFiles.h"

#include "core/recorder/TakesFolder.h"
#include "core/sources/PreflightFacts.h"
#include "core/takes/Takes.h"
#include "tool/ProgressBar.h"

#include <QFileInfo>

#include <optional>
#include <utility>

namespace vantiro::TakeFiles {

using namespace Qt::StringLiterals;

namespace {

    /// Calls `load` with what tells and stops the progress of one file, which is no folder.
    template <class Load>
    auto withBar(const QString& path, const QString& title, SignalWatch& signals, Load load)
        -> decltype(load(TakeAnalysis::Progress()))
    {
        if (QFileInfo(path).isDir()) {
            return captureFailure(u"%1 is a folder, not a take."_s.arg(path));
        }
        ProgressBar bar(title);
        return load(TakeAnalysis::Progress{
            .cancelled = [&signals] { return signals.stopRequested(); },
            .advanced = [&bar](double part) { bar.advance(part); },
        });
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

Result<TakeAnalysis::Both> analyseAnew(const QString& path, const QString& title, SignalWatch& signals)
{
    return withBar(path, title, signals, [&path](const TakeAnalysis::Progress& progress) {
        return TakeAnalysis::analyze(path, {}, TakeOverview::usualSlices, progress);
    });
}

Result<TakeAnalysis> analyse(const QString& path, const QString& title, SignalWatch& signals)
{
    const auto take = Takes::describe(path);
    if (take && isKept(*take)) {
        return withBar(path, title, signals,
            [&take](const TakeAnalysis::Progress& progress) { return TakeAnalysis::load(*take, progress); });
    }
    auto both = analyseAnew(path, title, signals);
    return both ? Result<TakeAnalysis>(std::move(both->analysis)) : std::unexpected(both.error());
}

}  // namespace vantiro::TakeFiles
