// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace vantiro {

/// Ctrl+Alt+Super+R, whichever program has the keyboard, for as long as this lives. Main thread only.
class HotKey : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    /// The keys went down; holding them is one press.
    void pressed();
};

}  // namespace vantiro
