// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/JevQuestion.h"

#include <QJsonObject>
#include <QMap>
#include <QString>

namespace vantiro {

/// The questions as JSON, by key. Any thread.
[[nodiscard]] inline QJsonObject toJson(const QMap<QString, JevQuestion>& questions)
{
    QJsonObject object;
    for (auto question = questions.cbegin(); question != questions.cend(); ++question) {
        object.insert(question.key(), question->toJson());
    }
    return object;
}

/// One unit of judging: a state, which has a toJson() of its own, and the questions about it by key. Any thread.
template <class State>
struct JevBatch {
    State state;
    QMap<QString, JevQuestion> questions;

    bool operator==(const JevBatch&) const = default;

    [[nodiscard]] QJsonObject toJson() const
    {
        return {{QStringLiteral("state"), state.toJson()}, {QStringLiteral("questions"), vantiro::toJson(questions)}};
    }
};

}  // namespace vantiro
