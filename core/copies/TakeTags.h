// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace vantiro {

/// What a copy says about itself to a player. Apple Lossless and AAC carry it; WAV and FLAC carry no tags.
struct TakeTags {
    QString title;                  ///< As from TakeTagging::title.
    std::optional<QString> artist;  ///< As from TakeTagging::artist; absent means no artist tag at all.
    QString releaseDate;            ///< As from TakeTagging::releaseDate.
    QDateTime recorded;             ///< When the take was recorded.
    std::optional<QByteArray> artwork = std::nullopt;  ///< The cover, as PNG. Without bytes there is none.

    bool operator==(const TakeTags&) const = default;
};

}  // namespace vantiro
