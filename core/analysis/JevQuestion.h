// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

namespace vantiro {

/// A question that somebody outside judges. Any thread.
struct JevQuestion {
    enum class Primitive {
        score,   ///< One of several levels.
        noul,    ///< Yes or no.
        choice,  ///< One of several options.
    };

    Primitive type = Primitive::score;
    QString instructions;            ///< What to judge.
    QStringList levels;              ///< Of a score, from the lowest to the highest.
    QMap<QString, QString> options;  ///< Of the others: what each answer means. Those of a noul are "true" and "false".

    bool operator==(const JevQuestion&) const = default;

    [[nodiscard]] static JevQuestion score(const QString& instructions, const QStringList& levels);
    [[nodiscard]] static JevQuestion noul(const QString& instructions, const QString& yes, const QString& no);
    [[nodiscard]] static JevQuestion choice(const QString& instructions, const QMap<QString, QString>& options);

    /// With the keys "type", "instructions" and "criteria": the levels of a score, the options of the others.
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Result<JevQuestion> fromJson(const QJsonObject& object);
};

/// "score", "noul" or "choice". Any thread.
[[nodiscard]] QString rawValue(JevQuestion::Primitive type);

}  // namespace vantiro
