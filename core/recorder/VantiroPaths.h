// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeFormat.h"

#include <QDateTime>
#include <QString>

/// Where the program keeps things, as absolute paths. Every call asks the environment anew; nothing is made on disk.
/// Any thread, as long as no other changes the environment.
namespace vantiro::VantiroPaths {

/// The folder of takes: "Vantiro" in the user's music folder.
[[nodiscard]] QString takes();
/// The folder that the window and the recorder meet in: ${XDG_DATA_HOME:-~/.local/share}/Vantiro.
[[nodiscard]] QString support();
/// The running take's RecorderState, replaced as its figures change.
[[nodiscard]] QString stateFile();
/// Locked by the recorder for the whole of a take; its content means nothing.
[[nodiscard]] QString lockFile();
/// What a detached recorder printed.
[[nodiscard]] QString recorderLog();
/// The RecorderState of the take that ended last.
[[nodiscard]] QString lastTakeFile();
/// The user's own list of DJ programs.
[[nodiscard]] QString djAppsFile();
/// What is remembered of sources.
[[nodiscard]] QString sourcesFile();
/// The temporary folders of copies that are being made.
[[nodiscard]] QString exportsFile();
/// Copies that are to be made after takes.
[[nodiscard]] QString pendingCopiesFile();
/// The trace for support.
[[nodiscard]] QString traceFile();
/// The user's settings: ${XDG_CONFIG_HOME:-~/.config}/Vantiro/settings.json.
[[nodiscard]] QString settingsFile();

/// "mix-2026-09-19_21-04-33.caf": the moment in the local time zone, in plain digits whatever the locale.
[[nodiscard]] QString newTakeName(TakeFormat format, const QDateTime& now = QDateTime::currentDateTimeUtc());
/// newTakeName() in takes(). Two takes of one second get the same path; whoever makes the file sees to that.
[[nodiscard]] QString newTakeURL(TakeFormat format, const QDateTime& now = QDateTime::currentDateTimeUtc());

}  // namespace vantiro::VantiroPaths
