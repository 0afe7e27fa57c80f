// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro::Notice {

/// Shows a sentence on the desktop, outside of any window. Waits for some seconds at the most, and is lost where nobody
/// shows such things. Any thread.
void show(const QString& sentence);

}  // namespace vantiro::Notice
