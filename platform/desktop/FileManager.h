// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"

#include <QString>

#include <functional>

namespace vantiro {

/// The user's file manager. It is asked over the session bus; where nobody answers there, the second way is taken: a
/// folder is opened by whatever opens folders. Nothing here waits. Main thread only.
class FileManager {
public:
    /// Opens a folder.
    using SecondWay = std::function<void(const QString& folder)>;

    /// The link is the session bus; it may be absent, and else outlives this.
    FileManager(BusLink* session, SecondWay secondWay);

    /// Opens the folder of an absolute path with the file selected in it.
    void showItem(const QString& path) const;
    void showFolder(const QString& folder) const;

private:
    void ask(const char* method, const QString& path, const QString& folder) const;

    BusLink* m_session;
    SecondWay m_secondWay;
};

}  // namespace vantiro
