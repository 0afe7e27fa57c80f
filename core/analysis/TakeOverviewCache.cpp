// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/CacheFile.h"
#include "core/analysis/TakeOverview.h"
#include "core/foundation/Files.h"
#include "core/recorder/VantiroPaths.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

QByteArray TakeOverview::toJsonText() const
{
    QJsonArray clipped;
    for (const std::int64_t slice : clips) {
        clipped.append(static_cast<qint64>(slice));
    }
    const QJsonObject object{
        {"peaks"_L1, CacheFile::numbers(peaks)},
        {"clips"_L1, clipped},
        {"clippedSamples"_L1, static_cast<qint64>(clippedSamples)},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Result<TakeOverview> TakeOverview::fromJsonText(const QByteArray& text)
{
    TakeOverview overview;
    // What is not an object reads as an empty one, which lacks every required key.
    json::Reader reader(json::object(text).value_or(QJsonObject()));
    CacheFile::readList(reader, "peaks"_L1, overview.peaks);
    CacheFile::readList(reader, "clips"_L1, overview.clips, json::integer);
    reader.read("clippedSamples"_L1, overview.clippedSamples);
    return reader.finish(std::move(overview));
}

QString TakeOverview::cacheURL(const Take& take, const QString& folder)
{
    return CacheFile::path(take, folder, u".json"_s);
}

QString TakeOverview::cacheFolder()
{
    return VantiroPaths::support() + u"/Overviews"_s;
}

Result<TakeOverview> TakeOverview::load(const Take& take)
{
    const QString file = cacheURL(take, cacheFolder());
    if (const auto text = files::read(file)) {
        if (auto kept = fromJsonText(*text)) {
            return kept;
        }
    }
    auto overview = compute(take.path);
    if (overview) {
        CacheFile::keep(file, overview->toJsonText());
    }
    return overview;
}

}  // namespace vantiro
