// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <utility>

namespace vantiro::test {

/// A disk of its own, in memory, for as long as it is held.
class SmallVolume {
public:
    /// Mounted at a folder, which is made. Nothing if that is not permitted.
    [[nodiscard]] static std::unique_ptr<SmallVolume> mount(const QString& folder, int mebibytes);
    ~SmallVolume();

    SmallVolume(const SmallVolume&) = delete;
    SmallVolume& operator=(const SmallVolume&) = delete;

    /// From now on nothing can be written to it. Whether it worked.
    [[nodiscard]] bool makeReadOnly() const;

private:
    explicit SmallVolume(QByteArray folder) : m_folder(std::move(folder)) { }

    QByteArray m_folder;
};

}  // namespace vantiro::test
