// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/sources/SourceRef.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>

namespace vantiro {

/// The words behind a command's name: options that take a value, flags that take none, and nothing else.
class Arguments {
public:
    /// Fails with a sentence for an option that is unknown, lacks its value or comes twice, and for a word too many.
    /// `--name value` and `--name=value` are the same.
    [[nodiscard]] static Result<Arguments> parse(
        const QStringList& words, std::initializer_list<QString> options, std::initializer_list<QString> flags);

    [[nodiscard]] bool has(const QString& name) const { return m_values.contains(name); }
    [[nodiscard]] std::optional<QString> value(const QString& name) const;
    /// The source that --device or --app names, if one does. Fails with a sentence if both do.
    [[nodiscard]] Result<std::optional<SourceRef>> source() const;

private:
    QHash<QString, QString> m_values;
};

}  // namespace vantiro
