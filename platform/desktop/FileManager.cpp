// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/FileManager.h"

#include <QFileInfo>
#include <QUrl>

#include <utility>

#include <systemd/sd-bus.h>

namespace vantiro {

FileManager::FileManager(BusLink* session, SecondWay secondWay) : m_session(session), m_secondWay(std::move(secondWay))
{ }

void FileManager::showItem(const QString& path) const
{
    ask("ShowItems", path, QFileInfo(path).path());
}

void FileManager::showFolder(const QString& folder) const
{
    ask("ShowFolders", folder, folder);
}

void FileManager::ask(const char* method, const QString& path, const QString& folder) const
{
    const BusMessage call = m_session != nullptr
        ? m_session->newRequest(
              {"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", method})
        : nullptr;
    const QByteArray url = QUrl::fromLocalFile(path).toEncoded();
    if (!call || sd_bus_message_append(call.get(), "ass", 1, url.constData(), "") < 0) {
        m_secondWay(folder);
        return;
    }
    m_session->ask(call, [secondWay = m_secondWay, folder](sd_bus_message* answer) {
        if (answer == nullptr) {
            secondWay(folder);
        }
    });
}

}  // namespace vantiro
