// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QLatin1StringView>
#include <QString>
#include <QTimeZone>

#include <optional>

/// How takes are called where they are listened to. Dates are English and Gregorian whatever the user's locale. Any
/// thread.
namespace vantiro::TakeTagging {

inline constexpr QLatin1StringView djNameKey{"djName"};        ///< The setting with the user's artist name.
inline constexpr QLatin1StringView fallbackArtist{"Vantiro"};  ///< While playing, when nobody is named.
inline constexpr QLatin1StringView album{"Vantiro"};           ///< The album tag of every copy.
inline constexpr QLatin1StringView genre{"DJ Mix"};            ///< The genre tag of every copy.

/// The account's name, else the DJ name, trimmed; nothing if neither says anything. Copies hand in no account.
[[nodiscard]] std::optional<QString> artist(
    const std::optional<QString>& djName, const std::optional<QString>& mixcloudUsername);

/// The DJ name, trimmed, else fallbackArtist.
[[nodiscard]] QString nowPlayingArtist(const std::optional<QString>& djName);

/// "Mix, 25 Sep 2026, 21:04"
[[nodiscard]] QString title(const QDateTime& recorded, const QTimeZone& timeZone);
/// "Mix, 25 Sep 2026"
[[nodiscard]] QString dayTitle(const QDateTime& recorded, const QTimeZone& timeZone);
/// "2026-09-25"
[[nodiscard]] QString releaseDate(const QDateTime& recorded, const QTimeZone& timeZone);

}  // namespace vantiro::TakeTagging
