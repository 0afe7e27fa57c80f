// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace vantiro {

// Each command takes the words behind its name and returns the program's exit code.

/// Records a take, detached for the window or in the foreground.
int recordCommand(const QStringList& words);
/// Shows the running take.
int statusCommand(const QStringList& words);
/// Ends the running take and shows its account.
int stopCommand(const QStringList& words);
/// Starts or stops a take, by the window if it is there.
int toggleCommand(const QStringList& words);
/// Lists what can be recorded from, the likeliest first.
int sourcesCommand(const QStringList& words);
/// Tells what stands in the way of a take.
int checkCommand(const QStringList& words);
/// Lists the takes of a folder, and mends those that were left unfinished.
int takesCommand(const QStringList& words);
/// Tells what happened in a set.
int analyzeCommand(const QStringList& words);
/// Draws the shape of a take.
int shapeCommand(const QStringList& words);
/// Makes a copy of a take in another format, and hands one to the music library.
int exportCommand(const QStringList& words);
/// Compares this week's sets with last week's.
int practiceCommand(const QStringList& words);
/// Writes made takes.
int samplesCommand(const QStringList& words);
/// Records a take from a virtual rig on a private graph.
int demoCommand(const QStringList& words);

}  // namespace vantiro
