// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/Palette.h"

/// The tones of metal, of what is milled into it and of lamps: each gradient from its first colour to its last.
namespace vantiro::palette {

inline constexpr QColor faceGradient[] = {colour(0x151915), colour(0x0E110E), colour(0x0B0D0B), colour(0x090B09)};
inline constexpr QColor plateGradient[] = {colour(0x181C18), colour(0x121512)};
inline constexpr QColor wellGradient[] = {colour(0x050605), colour(0x0A0C0A)};
inline constexpr QColor keyGradient[] = {colour(0x232923), colour(0x171B17)};
inline constexpr QColor keyHovered[] = {colour(0x323A32), colour(0x232923)};
inline constexpr QColor keyPressed[] = {colour(0x121612), colour(0x171B17)};
inline constexpr QColor keyDisabled[] = {colour(0x191D19), colour(0x141714)};
inline constexpr QColor bigKeyGradient[] = {colour(0x2A312A), colour(0x1D221D), colour(0x181C18)};
inline constexpr QColor bigKeyHovered[] = {colour(0x3B443B), colour(0x2B322B), colour(0x232923)};
inline constexpr QColor bigKeyPressed[] = {colour(0x131713), colour(0x191D19)};
inline constexpr QColor bigKeyDisabled[] = {colour(0x1A1E1A), colour(0x141714)};
inline constexpr QColor footGradient[] = {colour(0x161A16), colour(0x0E110E)};
inline constexpr QColor sheetGradient[] = {colour(0x1C211C), colour(0x141814)};
inline constexpr QColor menuFill = colour(0x151915);
inline constexpr QColor rowFill = colour(0x262D26);
inline constexpr QColor toolTipFill = colour(0x1C211C);
inline constexpr QColor slideGradient[] = {colour(0x040504), colour(0x0B0E0B)};
inline constexpr QColor capGradient[] = {colour(0x3A433A), colour(0x232923)};
inline constexpr QColor capHovered[] = {colour(0x465046), colour(0x2C332C)};
inline constexpr QColor pickerKeyGradient[] = {colour(0x1B1F1B), colour(0x141814)};
inline constexpr QColor pickerKeyHovered[] = {colour(0x262C26), colour(0x1B201B)};
inline constexpr QColor pickerKeyChosen[] = {colour(0x101310), colour(0x161A16)};
inline constexpr QColor railGradient[] = {colour(0x020302), colour(0x0A0C0A)};
inline constexpr QColor railCap[] = {colour(0x1D221D), colour(0x3A433A)};
inline constexpr QColor railCapHovered[] = {colour(0x2C332C), colour(0x4A554A)};

inline constexpr QColor slot = colour(0x030403);       ///< The gap around a key.
inline constexpr QColor plateSlot = colour(0x050605);  ///< The gap around a plate or a disabled key.
inline constexpr QColor sheetSlot = colour(0x020302);  ///< The gap around what floats.
inline constexpr QColor bar = colour(0x3A433A);        ///< How far a long list is scrolled.
inline constexpr QColor menuLine = colour(0x262C26);   ///< Parts a menu.
inline constexpr QColor fixedWord = colour(0xA9B5A9);  ///< The name of a source that cannot be changed.

inline constexpr QColor pipeOut = colour(0x222B14);
inline constexpr QColor capLampOut = colour(0x1E2618);
inline constexpr QColor lensOut = colour(0x1C2416);
inline constexpr QColor lensSeat = colour(0x060706);
inline constexpr QColor limeLens[] = {colour(0xE4FF9A), lime, colour(0x8FC41C)};
inline constexpr QColor amberLens[] = {colour(0xFFE2A6), amber, colour(0xCF8613)};
inline constexpr QColor redLens[] = {colour(0xFFB9B0), red, colour(0xC92E20)};

}  // namespace vantiro::palette
