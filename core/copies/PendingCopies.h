// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/takes/ExportFormat.h"

#include <QString>

#include <optional>
#include <vector>

namespace vantiro {

/// What is still to be made of a take that has ended.
struct PendingCopy {
    QString take;                        ///< Its path, absolute.
    std::optional<ExportFormat> format;  ///< Of the copy; absent if there is only something for the music library.
    bool toMusic = false;                ///< It goes to the music library too.

    bool operator==(const PendingCopy&) const = default;
};

/// Remembers these, in pending-copies.json of the support folder, until they are done. Several processes at once; any
/// thread.
namespace PendingCopies {

    /// Notes a copy as this process's own, in place of another of the same take.
    [[nodiscard]] Result<void> add(const PendingCopy& copy);
    /// Forgets what is pending for a take: it is done, or has failed for good.
    [[nodiscard]] Result<void> remove(const QString& take);
    /// The copies of processes that are gone. From now on they are this process's own, so nobody else takes them up.
    [[nodiscard]] std::vector<PendingCopy> takeUp();

}  // namespace PendingCopies

}  // namespace vantiro
