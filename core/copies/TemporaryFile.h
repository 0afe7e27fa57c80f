// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <utility>

namespace vantiro {

/// A file that is made out of sight and then given its name. It stands in the CopyJournal from before it is made until
/// it is gone, under whose names for files it goes. One thread at a time, any thread.
class TemporaryFile {
public:
    /// The path that starts so, with a fresh UUID and then the ending behind it; absolute. Nothing is made.
    TemporaryFile(const QString& start, const QString& ending);
    /// Removes the file, if it still has this name.
    ~TemporaryFile();

    TemporaryFile(TemporaryFile&& other) noexcept : m_path(std::exchange(other.m_path, QString())) { }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    TemporaryFile& operator=(TemporaryFile&&) = delete;

    [[nodiscard]] const QString& path() const { return m_path; }

private:
    QString m_path;
};

}  // namespace vantiro
