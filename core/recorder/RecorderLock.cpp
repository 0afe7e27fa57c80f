// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderLock.h"

#include "core/foundation/Files.h"

#include <QFile>
#include <QFileInfo>

#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace vantiro {

namespace {

    constexpr std::chrono::milliseconds retryInterval{20};

}  // namespace

std::optional<RecorderLock> RecorderLock::acquire(const QString& path)
{
    // The failure of the folder is the failure of the file in it.
    [[maybe_unused]] const auto made = files::makeFolder(QFileInfo(path).path());
    FileDescriptor descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (!descriptor.isOpen() || ::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) {
        return std::nullopt;
    }
    return RecorderLock(std::move(descriptor));
}

std::optional<RecorderLock> RecorderLock::acquireWithin(const QString& path, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        if (auto lock = acquire(path); lock || std::chrono::steady_clock::now() >= deadline) {
            return lock;
        }
        std::this_thread::sleep_for(retryInterval);
    }
}

bool RecorderLock::isHeld(const QString& path)
{
    return !acquire(path).has_value();
}

RecorderLock::RecorderLock(FileDescriptor descriptor) noexcept : m_descriptor(std::move(descriptor)) { }

RecorderLock& RecorderLock::operator=(RecorderLock&& other) noexcept
{
    // What this held is released when `other` goes.
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

RecorderLock::~RecorderLock()
{
    // Closing alone would leave the lock to a copy of the descriptor, such as that of a child between fork and exec.
    if (m_descriptor.isOpen()) {
        ::flock(m_descriptor.get(), LOCK_UN);
    }
}

}  // namespace vantiro
