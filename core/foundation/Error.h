// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <variant>

namespace vantiro {

/// What went wrong in the capture and recorder layers, as a finished sentence or fragment that is shown as it stands.
struct CaptureError {
    QString description;

    bool operator==(const CaptureError&) const = default;
};

/// What went wrong in the application's own work with takes and services, as a finished sentence or fragment.
struct LibraryError {
    QString description;

    bool operator==(const LibraryError&) const = default;
};

/// What went wrong while signing in to a service, as a finished sentence or fragment.
struct ExchangeFailure {
    QString description;

    bool operator==(const ExchangeFailure&) const = default;
};

/// A request to a server that got no answer.
struct NetworkError {
    /// The cases that have words of their own.
    enum class Kind {
        offline,
        dropped,
        timedOut,
        cancelled,
        other,
    };

    Kind kind = Kind::other;
    int number = 0;  ///< Of QNetworkReply::NetworkError.
    QString text;    ///< The network library's own words.

    bool operator==(const NetworkError&) const = default;
};

/// A failure that the operating system reported, translated once where it was met.
struct SystemError {
    QString domain;  ///< Where the number comes from, "errno" for calls of the C library.
    int number = 0;  ///< The positive number inside that domain.
    QString text;    ///< A sentence or fragment that names the file or service concerned.

    bool operator==(const SystemError&) const = default;
};

/// The closed set of failures that the program's words tell apart.
using Error = std::variant<CaptureError, LibraryError, ExchangeFailure, NetworkError, SystemError>;

/// The text of any error, as a log or a terminal prints it, without secrets. Any thread.
[[nodiscard]] QString errorText(const Error& error);

/// A SystemError of the domain "errno" whose text is "{what}: {the system's words for the number}". Any thread.
[[nodiscard]] Error errnoError(const QString& what, int number);

/// The system's words for an errno value. Any thread.
[[nodiscard]] QString errnoText(int number);

}  // namespace vantiro
