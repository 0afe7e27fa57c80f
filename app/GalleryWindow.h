// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/StartArguments.h"

/// The gallery of all controls, in a window or as a picture.
namespace vantiro::GalleryWindow {

/// For a picture: without a screen, drawn by the processor, at the scale that was asked for. Comes before the
/// QGuiApplication, whose choice all this is.
void prepare(const StartArguments& arguments);

/// Shows the gallery until its window is closed, or writes its picture. The program's exit code: 1 if that failed,
/// with a sentence on the terminal.
[[nodiscard]] int run(const StartArguments& arguments);

}  // namespace vantiro::GalleryWindow
