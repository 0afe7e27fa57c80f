// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/Arguments.h"

#include <QDir>

#include <algorithm>

namespace vantiro {

Result<Arguments> Arguments::parse(const QStringList& words, std::initializer_list<QString> options,
    std::initializer_list<QString> flags, Operands operands)
{
    Arguments arguments;
    bool isBehindOptions = false;
    for (qsizetype index = 0; index < words.size(); ++index) {
        QString name = words[index];
        if (operands != Operands::none && !isBehindOptions && name == u"--") {
            isBehindOptions = true;
            continue;
        }
        if (operands != Operands::none && (isBehindOptions || !name.startsWith(u'-')) && !name.isEmpty()) {
            if (arguments.m_operand) {
                return captureFailure(QStringLiteral("%1 is one name too many").arg(name));
            }
            arguments.m_operand = name;
            continue;
        }
        std::optional<QString> value;
        if (const qsizetype equals = name.indexOf(u'='); equals > 0 && name.startsWith(u"--")) {
            value = name.mid(equals + 1);
            name.truncate(equals);
        }
        const bool takesValue = std::ranges::find(options, name) != options.end();
        if (!takesValue && (value || std::ranges::find(flags, name) == flags.end())) {
            return captureFailure(QStringLiteral("%1 is not understood here").arg(words[index]));
        }
        if (takesValue && !value) {
            if (index + 1 == words.size()) {
                return captureFailure(QStringLiteral("%1 needs a value").arg(name));
            }
            value = words[++index];
        }
        if (arguments.has(name)) {
            return captureFailure(QStringLiteral("%1 is given twice").arg(name));
        }
        arguments.m_values.insert(name, value.value_or(QString()));
    }
    if (operands == Operands::one && !arguments.m_operand) {
        return captureFailure(QStringLiteral("name the file or folder to work on"));
    }
    return arguments;
}

std::optional<QString> Arguments::value(const QString& name) const
{
    const auto found = m_values.constFind(name);
    return found == m_values.cend() ? std::nullopt : std::optional(*found);
}

std::optional<QString> Arguments::path() const
{
    return m_operand ? std::optional(QDir::cleanPath(QDir::current().absoluteFilePath(*m_operand))) : std::nullopt;
}

Result<int> Arguments::number(const QString& name, int usual, int least, int most) const
{
    bool valid = true;
    const auto text = value(name);
    const int number = text ? text->toInt(&valid) : usual;
    if (!valid || number < least || number > most) {
        return captureFailure(QStringLiteral("%1 takes a number from %2 to %3").arg(name).arg(least).arg(most));
    }
    return number;
}

Result<std::optional<SourceRef>> Arguments::source() const
{
    const auto device = value(QStringLiteral("--device"));
    const auto app = value(QStringLiteral("--app"));
    if (device && app) {
        return captureFailure(QStringLiteral("give one source: --device UID or --app ID"));
    }
    if (device) {
        return SourceRef::device(*device);
    }
    return app ? std::optional(SourceRef::app(*app)) : std::nullopt;
}

}  // namespace vantiro
