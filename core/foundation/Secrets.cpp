// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Secrets.h"

#include <QRegularExpression>

#include <array>

namespace vantiro::Secrets {

namespace {

    QRegularExpression compiled(const QString& pattern)
    {
        QRegularExpression expression(
            pattern, QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
        if (!expression.isValid()) {
            qFatal("a pattern for secrets does not compile: %s", qUtf8Printable(expression.errorString()));
        }
        return expression;
    }

}  // namespace

QString redacted(const QString& text)
{
    static const std::array patterns{
        compiled(QStringLiteral(R"re((access_token|client_secret)=[^&\s"'<>]*)re")),
        compiled(QStringLiteral(R"re("(access_token|client_secret)"\s*:\s*"[^"]*")re")),
    };
    // Half a surrogate pair, as JSON can carry it, would make every match fail and let the secret through.
    QString result = text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
    for (const QRegularExpression& pattern : patterns) {
        result.replace(pattern, QStringLiteral("[redacted]"));
    }
    return result;
}

}  // namespace vantiro::Secrets
