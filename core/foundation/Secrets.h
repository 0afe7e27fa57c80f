// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro::Secrets {

/// The text with every access token and client secret, as a query item or as a JSON member, replaced by "[redacted]",
/// its name included. Every text that reaches a log, a report or the screen passes here. Any thread.
[[nodiscard]] QString redacted(const QString& text);

}  // namespace vantiro::Secrets
