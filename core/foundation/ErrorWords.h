// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Error.h"

#include <QString>

/// Two faces of an error: a short stable code for logs, and words for people. Neither ever holds a secret. Any thread.
namespace vantiro::ErrorWords {

/// "URLError {number}", "LibraryError: {text}", "exchange: {text}", "CaptureError: {text}", or the domain and number of
/// a failure of the system.
[[nodiscard]] QString code(const Error& error);

/// Why something that involved the service failed: a fragment in lower case without a full stop.
[[nodiscard]] QString reason(const Error& error, const QString& service);

/// The sentence for a take that could not be posted to Mixcloud.
[[nodiscard]] QString mixcloudUploadFailed(const Error& error);

}  // namespace vantiro::ErrorWords
