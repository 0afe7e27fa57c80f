// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>

#include <utility>

namespace vantiro {

/// The folder that a copy is made in before it arrives: beside its destination, so on the same volume, and out of
/// sight. It stands in the CopyJournal from before it is made until it is gone. One thread at a time, any thread.
class CopyFolder {
public:
    /// Makes the folder, mode 0700; the one that holds `destination` must exist. Fails with the SystemError of the
    /// volume.
    [[nodiscard]] static Result<CopyFolder> beside(const QString& destination);

    /// Removes the folder and all that is left in it.
    ~CopyFolder();

    CopyFolder(CopyFolder&& other) noexcept : m_path(std::exchange(other.m_path, QString())) { }
    CopyFolder(const CopyFolder&) = delete;
    CopyFolder& operator=(const CopyFolder&) = delete;
    CopyFolder& operator=(CopyFolder&&) = delete;

    /// Absolute.
    [[nodiscard]] const QString& path() const { return m_path; }

private:
    explicit CopyFolder(QString path) : m_path(std::move(path)) { }

    QString m_path;
};

}  // namespace vantiro
