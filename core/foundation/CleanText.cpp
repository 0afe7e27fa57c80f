// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/CleanText.h"

#include <QList>

#include <ranges>

namespace vantiro {

QString cleanText(const QString& text)
{
    constexpr qsizetype longestText = 200;
    QString clean;
    // Cut between characters: half of one would be shown as a wrong one.
    for (const char32_t character : text.left(2 * longestText).toUcs4() | std::views::take(longestText)) {
        if (QChar::isPrint(character)) {
            clean += QString::fromUcs4(&character, 1);
        }
    }
    return clean.trimmed();
}

}  // namespace vantiro
