// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>

namespace vantiro {

/// One recorded audio file.
struct Take {
    QString path;            ///< Absolute.
    QDateTime created;       ///< When the recording began, in UTC.
    std::int64_t bytes = 0;  ///< Size of the file.
    double seconds = 0;      ///< Length, from what the file holds now; a take under recording grows.
    double sampleRate = 0;   ///< Hz
    std::int64_t channels = 0;

    bool operator==(const Take&) const = default;

    /// The file's name without its extension.
    [[nodiscard]] QString name() const;
    /// The file's name.
    [[nodiscard]] QString fileName() const;
};

}  // namespace vantiro
