// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/KeptAnalysis.h"

#include "core/analysis/TakeAnalysis.h"
#include "core/analysis/TakeOverview.h"
#include "core/foundation/Files.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/TakesFolder.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

namespace vantiro::KeptAnalysis {

namespace {

    void removeIfOlder(const QString& file, const QDateTime& moment)
    {
        const QFileInfo info(file);
        if (info.exists() && info.lastModified() < moment) {
            QFile::remove(file);
        }
    }

    /// Names and sizes repeat: when a take is worked over in place, or when another one takes its place.
    void removeStale(const Take& take)
    {
        const QString analysis = TakeAnalysis::cacheURL(take, TakeAnalysis::cacheFolder());
        const QString overview = TakeOverview::cacheURL(take, TakeOverview::cacheFolder());
        const QDateTime changed = QFileInfo(take.path).lastModified();
        removeIfOlder(analysis, changed);
        removeIfOlder(overview, changed);
        const auto text = files::read(analysis);
        if (!text) {
            return;
        }
        const auto kept = TakeAnalysis::fromJsonText(*text);
        if (kept
            && (kept->seconds != take.seconds || kept->sampleRate != take.sampleRate
                || kept->channels != take.channels)) {
            QFile::remove(analysis);
            QFile::remove(overview);
        }
    }

}  // namespace

bool isKept(const Take& take)
{
    const auto running = RecorderStateStore::running();
    if ((running && files::isSame(take.path, running->path))
        || !files::isSame(QFileInfo(take.path).path(), TakesFolder::current())) {
        return false;
    }
    removeStale(take);
    return true;
}

}  // namespace vantiro::KeptAnalysis
