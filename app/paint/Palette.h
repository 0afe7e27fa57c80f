// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

#include <algorithm>

/// Every colour that is painted; nothing else names one by its numbers.
namespace vantiro::palette {

/// A colour from 0xRRGGBB.
constexpr QColor colour(unsigned rgb)
{
    return {static_cast<int>(rgb >> 16 & 0xFFU), static_cast<int>(rgb >> 8 & 0xFFU), static_cast<int>(rgb & 0xFFU)};
}

inline constexpr QColor face = colour(0x0B0D0B);    ///< The faceplate.
inline constexpr QColor raised = colour(0x141814);  ///< Plates, menus.
inline constexpr QColor edge = colour(0x232923);    ///< The top of a key, hairlines.
inline constexpr QColor well = colour(0x060706);    ///< The bottom of anything milled.

inline constexpr QColor ink = colour(0xDBE6DB);    ///< Words that matter, symbols.
inline constexpr QColor body = colour(0xB4C0B4);   ///< Long text.
inline constexpr QColor soft = colour(0x9AA79A);   ///< Help, second lines.
inline constexpr QColor dim = colour(0x7E8C7E);    ///< Legends, figures of scales; never on a key.
inline constexpr QColor faint = colour(0x4A554A);  ///< The idle clock, lines; no word that matters.
inline constexpr QColor off = colour(0x5A665A);    ///< The legend of a disabled key.

inline constexpr QColor lime = colour(0xB8F034);     ///< Ready, a good level, what is lit, focus.
inline constexpr QColor amber = colour(0xFFB02E);    ///< Warns.
inline constexpr QColor red = colour(0xFF4B3A);      ///< Records, clips: lamps and large words.
inline constexpr QColor redWord = colour(0xFF6A5B);  ///< Red words of 13 points and less.
inline constexpr QColor quiet = colour(0x4C8F4E);    ///< A meter below -10 dB.

inline constexpr QColor quietGroove = colour(0x58A45A);  ///< The quiet end as a thin line.
inline constexpr QColor light = ink;                     ///< What edges catch, at a small alpha.
inline constexpr QColor dark = colour(0x000000);         ///< Shadows, at any alpha.
inline constexpr QColor sheen = colour(0xE2EEE2);        ///< What the record mirrors.
inline constexpr QColor gloss = colour(0xFFFFFF);        ///< The hot core of a lit segment, at a small alpha.

inline constexpr QColor paperTop = colour(0x1F271B);  ///< The record's label.
inline constexpr QColor paperBottom = colour(0x141A12);
inline constexpr QColor paperInk = colour(0xCFE99A);
inline constexpr QColor glassTop = colour(0x10150F);  ///< The window in the label.
inline constexpr QColor glassHover = colour(0x182016);
inline constexpr QColor glassBottom = colour(0x060806);
inline constexpr QColor lampOut = colour(0x27301A);     ///< A lime lamp without light.
inline constexpr QColor redLampOut = colour(0x3A1713);  ///< A red one.

/// The one metal of the deck, a grey with a breath of green, by its `lightness` from 0 to 255.
constexpr QColor metal(int lightness)
{
    const int others = lightness - std::min(12, (lightness + 3) / 7);
    return {others, lightness, others};
}

/// `colour` at another opacity, 0 to 1.
inline QColor faded(QColor colour, double alpha)
{
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}

}  // namespace vantiro::palette
