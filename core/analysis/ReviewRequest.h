// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/JevBatch.h"
#include "core/analysis/JevQuestion.h"
#include "core/analysis/TakeAnalysis.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// A take's figures and moments with the questions about them, as a document for a judge outside the program. Its keys
/// are the fields' names, its figures are rounded. Any thread.
struct ReviewRequest {
    static constexpr std::int64_t currentVersion = 1;

    /// The take as a whole, rounded to tenths.
    struct Summary {
        double seconds = 0;
        std::optional<double> loudnessLUFS = std::nullopt;
        /// Median of the seconds that hold music; absent if none does.
        std::optional<double> typicalLevelDB = std::nullopt;
        double clipsPerHour = 0;
        double deadAirSeconds = 0;

        bool operator==(const Summary&) const = default;

        [[nodiscard]] QJsonObject toJson() const;
    };

    /// A moment. Times are rounded to hundredths of a second, levels to tenths of a dB.
    struct Item {
        std::int64_t id = 1;  ///< Its place in `moments`, from 1.
        TakeAnalysis::Moment::Kind kind = TakeAnalysis::Moment::Kind::clip;
        double start = 0;     ///< Seconds.
        double duration = 0;  ///< Seconds.
        std::optional<double> levelBeforeDB = std::nullopt;
        double levelDuringDB = 0;
        std::optional<double> levelAfterDB = std::nullopt;
        std::optional<double> changeDB = std::nullopt;
        double peakDB = 0;
        std::optional<double> clippedSeconds = std::nullopt;  ///< Of a clip only, rounded to milliseconds.
        QString facts;                                        ///< All of this as a sentence.

        bool operator==(const Item&) const = default;

        [[nodiscard]] QJsonObject toJson() const;
    };

    /// What the questions of one batch are about.
    struct MomentState {
        Summary take;
        Item moment;

        bool operator==(const MomentState&) const = default;

        [[nodiscard]] QJsonObject toJson() const;
    };

    std::int64_t version = currentVersion;
    Summary take;
    std::vector<Item> moments;                                 ///< In order of time.
    QMap<QString, JevQuestion> questions;                      ///< By key.
    QMap<QString, QList<TakeAnalysis::Moment::Kind>> applies;  ///< By the question's key, in the order of the kinds.

    /// Keeps the `limit` worst moments of the analysis. A negative limit ends the program.
    ReviewRequest(const TakeAnalysis& analysis, std::int64_t limit);

    bool operator==(const ReviewRequest&) const = default;

    /// A batch for each moment, with the questions that apply to it.
    [[nodiscard]] std::vector<JevBatch<MomentState>> batches() const;
    /// The whole document, its keys sorted.
    [[nodiscard]] QByteArray json() const;
};

}  // namespace vantiro
