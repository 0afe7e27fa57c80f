// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/Arguments.h"

#include <algorithm>

namespace vantiro {

Result<Arguments> Arguments::parse(
    const QStringList& words, std::initializer_list<QString> options, std::initializer_list<QString> flags)
{
    Arguments arguments;
    for (qsizetype index = 0; index < words.size(); ++index) {
        QString name = words[index];
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
    return arguments;
}

std::optional<QString> Arguments::value(const QString& name) const
{
    const auto found = m_values.constFind(name);
    return found == m_values.cend() ? std::nullopt : std::optional(*found);
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
