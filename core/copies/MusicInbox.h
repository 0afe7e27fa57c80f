// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"
#include "core/copies/CopyOutcome.h"
#include "core/copies/CopyRoom.h"
#include "core/foundation/Result.h"
#include "core/foundation/SettingsStore.h"

#include <QDir>
#include <QLatin1StringView>
#include <QString>

#include <functional>
#include <optional>

/// A folder that a music library watches and imports from. Whole files appear in it, never parts. Paths are absolute.
namespace vantiro::MusicInbox {

inline constexpr QLatin1StringView folderName{"Automatically Add to Music.localized"};
inline constexpr QLatin1StringView bookmarkKey{"musicInboxBookmark"};  ///< The setting with the user's choice.

/// Where a library keeps the folder by itself. Any thread.
[[nodiscard]] QString defaultFolder(const QString& home);

/// The inbox that a picked folder is or holds; nothing if there is none. `exists` tells whether a path is a folder. Any
/// thread.
[[nodiscard]] std::optional<QString> resolve(
    const QString& picked, const std::function<bool(const QString& path)>& exists);

/// The inbox for a folder that the user picked: what resolve() finds on disk, else the folder itself if files can be
/// made in it. Fails with refusal(). Any thread.
[[nodiscard]] Result<QString> inboxFor(const QString& picked);

/// Why a picked folder is no inbox, a LibraryError. Any thread.
[[nodiscard]] Error refusal(const QString& picked);

/// What a take says that there is no inbox for, a LibraryError. Any thread.
[[nodiscard]] Error missing();

/// The user's choice; nothing if there is none.
[[nodiscard]] std::optional<QString> chosen(const SettingsStore& settings);
/// Remembers the choice, or forgets it.
void save(const std::optional<QString>& inbox, SettingsStore& settings);

/// The inbox to use: the default folder where it exists, else the chosen one where that does. Any thread.
[[nodiscard]] std::optional<QString> locateInbox(
    const std::optional<QString>& chosen, const QString& home = QDir::homePath());

/// Puts a whole copy of a file into the inbox, under its own name or, where that is taken, with four characters behind
/// it. Fails with missing() if there is no inbox, with CopyWords or the system's error otherwise, and then leaves
/// nothing. `cancelled` may be empty. Blocks; any thread.
[[nodiscard]] CopyOutcome addToMusic(const QString& file, const std::optional<QString>& inbox,
    const CopyEncoder::Cancelled& cancelled = {}, const CopyRoom::Surroundings& surroundings = {});

}  // namespace vantiro::MusicInbox
