// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/ReviewRequest.h"

#include "core/analysis/Median.h"
#include "core/analysis/ReviewQuestions.h"
#include "core/foundation/Json.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    using Moment = TakeAnalysis::Moment;
    using Kind = Moment::Kind;
    using Item = ReviewRequest::Item;
    using Summary = ReviewRequest::Summary;

    /// Seconds at or below this level hold no music.
    constexpr float musicDB = -60;

    /// To the nearest of so many parts of one.
    double rounded(double value, double parts)
    {
        // A negative zero would be read out with its sign.
        return std::round(value * parts) / parts + 0.0;
    }

    std::optional<double> tenths(std::optional<double> value)
    {
        return value ? std::optional(rounded(*value, 10)) : std::nullopt;
    }

    std::optional<double> typicalLevel(const TakeAnalysis& analysis)
    {
        std::vector<float> levels;
        std::ranges::copy_if(analysis.rmsDB, std::back_inserter(levels), [](float level) { return level > musicDB; });
        if (levels.empty()) {
            return std::nullopt;
        }
        return upperMedian(std::move(levels));
    }

    Summary summary(const TakeAnalysis& analysis)
    {
        return {
            .seconds = rounded(analysis.seconds, 10),
            .loudnessLUFS = tenths(analysis.loudness),
            .typicalLevelDB = tenths(typicalLevel(analysis)),
            .clipsPerHour = rounded(analysis.clipsPerHour(), 10),
            .deadAirSeconds = rounded(analysis.deadAirSeconds(), 10),
        };
    }

    /// How much a moment is worth a judgement: the weights make a long dropout and a long distortion the worst.
    double severity(const Moment& moment)
    {
        const double change = std::abs(static_cast<double>(moment.changeDB().value_or(0)));
        switch (moment.kind) {
        case Kind::clip:
            return moment.clippedSeconds * 10 + 3;
        case Kind::drop:
            return std::min(moment.duration, 10.0) * (change / 6) / 1.5;
        case Kind::silence:
            return moment.duration * 0.5;
        case Kind::jump:
            return change / 6;
        }
        return 0;
    }

    std::vector<Moment> worst(std::vector<Moment> moments, std::size_t limit)
    {
        if (moments.size() > limit) {
            std::ranges::stable_sort(moments, std::ranges::greater(), severity);
            moments.resize(limit);
            std::ranges::stable_sort(moments, {}, &Moment::start);
        }
        return moments;
    }

    QString level(std::optional<double> decibels)
    {
        return decibels ? QString::asprintf("%.1f dBFS", *decibels) : u"nothing (edge of the take)"_s;
    }

    QString time(double seconds)
    {
        return QString::asprintf("%.2f s", seconds);
    }

    QString facts(const Item& item, const Summary& take)
    {
        const QString opening =
            u"At %1 of a %2 take, "_s.arg(time(item.start), QString::asprintf("%.1f s", take.seconds));
        const QString before = level(item.levelBeforeDB);
        const QString during = level(item.levelDuringDB);
        const QString after = level(item.levelAfterDB);
        const QString levels = u"The level is %1 before and %2 after."_s.arg(before, after);
        switch (item.kind) {
        case Kind::clip:
            return opening
                + u"the signal hits full scale for %1 in total within %2. The level there is %3, peak %4. "_s.arg(
                    time(item.clippedSeconds.value_or(0)), time(item.duration), during, level(item.peakDB))
                + levels;
        case Kind::drop:
            return opening
                + u"the level falls from %1 to %2 for %3, then returns to %4."_s.arg(
                    before, during, time(item.duration), after);
        case Kind::silence:
            return opening + u"there is silence for %1. "_s.arg(time(item.duration)) + levels;
        case Kind::jump: {
            const bool rises = item.levelBeforeDB && item.levelDuringDB > *item.levelBeforeDB;
            return opening
                + u"the level %1 from %2 to %3 and holds for %4. After that it is %5."_s.arg(
                    rises ? u"rises"_s : u"falls"_s, before, during, time(item.duration), after);
        }
        }
        return {};
    }

    Item item(std::int64_t id, const Moment& moment, const Summary& take)
    {
        Item item{
            .id = id,
            .kind = moment.kind,
            .start = rounded(moment.start, 100),
            .duration = rounded(moment.duration, 100),
            .levelBeforeDB = tenths(moment.levelBeforeDB),
            .levelDuringDB = rounded(static_cast<double>(moment.levelDuringDB), 10),
            .levelAfterDB = tenths(moment.levelAfterDB),
            .changeDB = tenths(moment.changeDB()),
            .peakDB = rounded(static_cast<double>(moment.peakDB), 10),
            .clippedSeconds =
                moment.kind == Kind::clip ? std::optional(rounded(moment.clippedSeconds, 1000)) : std::nullopt,
            .facts = {},
        };
        item.facts = facts(item, take);
        return item;
    }

    void insert(QJsonObject& object, QLatin1StringView key, std::optional<double> value)
    {
        if (value) {
            object.insert(key, json::number(*value));
        }
    }

}  // namespace

QJsonObject ReviewRequest::Summary::toJson() const
{
    QJsonObject object;
    insert(object, "seconds"_L1, seconds);
    insert(object, "loudnessLUFS"_L1, loudnessLUFS);
    insert(object, "typicalLevelDB"_L1, typicalLevelDB);
    insert(object, "clipsPerHour"_L1, clipsPerHour);
    insert(object, "deadAirSeconds"_L1, deadAirSeconds);
    return object;
}

QJsonObject ReviewRequest::Item::toJson() const
{
    QJsonObject object{{"id"_L1, static_cast<qint64>(id)}, {"kind"_L1, rawValue(kind)}, {"facts"_L1, facts}};
    insert(object, "start"_L1, start);
    insert(object, "duration"_L1, duration);
    insert(object, "levelBeforeDB"_L1, levelBeforeDB);
    insert(object, "levelDuringDB"_L1, levelDuringDB);
    insert(object, "levelAfterDB"_L1, levelAfterDB);
    insert(object, "changeDB"_L1, changeDB);
    insert(object, "peakDB"_L1, peakDB);
    insert(object, "clippedSeconds"_L1, clippedSeconds);
    return object;
}

QJsonObject ReviewRequest::MomentState::toJson() const
{
    return {{"take"_L1, take.toJson()}, {"moment"_L1, moment.toJson()}};
}

ReviewRequest::ReviewRequest(const TakeAnalysis& analysis, std::int64_t limit)
    : take(summary(analysis))
    , questions(ReviewQuestions::all())
    , applies(ReviewQuestions::applies())
{
    if (limit < 0) {
        qFatal("a review request cannot keep %lld moments", static_cast<long long>(limit));
    }
    std::int64_t id = 0;
    for (const Moment& moment : worst(analysis.moments, static_cast<std::size_t>(limit))) {
        moments.push_back(item(++id, moment, take));
    }
}

std::vector<JevBatch<ReviewRequest::MomentState>> ReviewRequest::batches() const
{
    std::vector<JevBatch<MomentState>> batches;
    for (const Item& moment : moments) {
        JevBatch<MomentState> batch{.state = {take, moment}, .questions = {}};
        for (auto question = questions.cbegin(); question != questions.cend(); ++question) {
            if (applies.value(question.key()).contains(moment.kind)) {
                batch.questions.insert(question.key(), question.value());
            }
        }
        batches.push_back(std::move(batch));
    }
    return batches;
}

QByteArray ReviewRequest::json() const
{
    QJsonArray items;
    for (const Item& moment : moments) {
        items.append(moment.toJson());
    }
    QJsonObject kinds;
    for (auto question = applies.cbegin(); question != applies.cend(); ++question) {
        QJsonArray names;
        for (const Kind kind : question.value()) {
            names.append(rawValue(kind));
        }
        kinds.insert(question.key(), names);
    }
    const QJsonObject document{
        {"version"_L1, static_cast<qint64>(version)},
        {"take"_L1, take.toJson()},
        {"moments"_L1, items},
        {"questions"_L1, toJson(questions)},
        {"applies"_L1, kinds},
    };
    return QJsonDocument(document).toJson(QJsonDocument::Compact);
}

}  // namespace vantiro
