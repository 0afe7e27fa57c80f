// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Numbers.h"

#include <QLocale>

namespace vantiro {

QString groupedNumber(qint64 number)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(number);
}

}  // namespace vantiro
