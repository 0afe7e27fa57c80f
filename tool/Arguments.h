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

/// The words behind a command's name: options that take a value, flags that take none, and what the command works on.
class Arguments {
public:
    /// How many files or folders a command works on.
    enum class Operands {
        none,
        atMostOne,
        one,
    };

    /// Fails with a sentence for an option that is unknown, lacks its value or comes twice, and for a word too many or
    /// too few. `--name value` and `--name=value` are the same; behind `--` all words are operands.
    [[nodiscard]] static Result<Arguments> parse(const QStringList& words, std::initializer_list<QString> options,
        std::initializer_list<QString> flags, Operands operands = Operands::none);

    [[nodiscard]] bool has(const QString& name) const { return m_values.contains(name); }
    [[nodiscard]] std::optional<QString> value(const QString& name) const;
    /// The file or folder that the command works on, as an absolute path.
    [[nodiscard]] std::optional<QString> path() const;
    /// The whole number of an option, `usual` if it is not given. Fails with a sentence unless it lies in the range.
    [[nodiscard]] Result<int> number(const QString& name, int usual, int least, int most) const;
    /// The source that --device or --app names, if one does. Fails with a sentence if both do.
    [[nodiscard]] Result<std::optional<SourceRef>> source() const;

private:
    QHash<QString, QString> m_values;
    std::optional<QString> m_operand;
};

}  // namespace vantiro
