// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Error.h"

#include "core/foundation/Secrets.h"

#include <system_error>

namespace vantiro {

QString errorText(const Error& error)
{
    return Secrets::redacted(std::visit(
        [](const auto& kind) {
            if constexpr (requires { kind.description; }) {
                return kind.description;
            } else {
                return kind.text;
            }
        },
        error));
}

Error errnoError(const QString& what, int number)
{
    return SystemError{QStringLiteral("errno"), number, what + QStringLiteral(": ") + errnoText(number)};
}

QString errnoText(int number)
{
    // strerror() may share one buffer between threads; the category's message does not.
    return QString::fromStdString(std::generic_category().message(number));
}

}  // namespace vantiro
