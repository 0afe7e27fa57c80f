// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Still pictures of the main window with sample models: nothing of the user's is read, changed or heard.
namespace vantiro::Snapshot {

/// Without a screen, drawn by the processor, two pixels a point. Comes before the QGuiApplication, whose choice all
/// this is.
void prepare();

/// Writes the pictures into a folder, which is made, and prints each one's path. The program's exit code: 1 if that
/// failed, with a sentence on the terminal.
[[nodiscard]] int run(const QString& folder);

}  // namespace vantiro::Snapshot
