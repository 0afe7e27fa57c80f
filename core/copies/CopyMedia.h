// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"
#include "core/copies/TakeTags.h"
#include "core/foundation/Result.h"

#include <QString>

#include <memory>
#include <optional>

namespace vantiro {

/// What the platform does for copies; what is null is missing. Any thread.
struct CopyMedia {
    /// What a file with encoded audio tells about itself.
    struct Facts {
        bool isAAC = false;
        std::optional<QString> album = std::nullopt;  ///< Its album tag.
    };

    /// Makes an encoder; fails, before anything is written, with CopyWords::cannotConvert for what the format cannot
    /// keep.
    Result<std::unique_ptr<CopyEncoder>> (*openEncoder)(const CopyEncoder::Plan& plan) = nullptr;
    /// Fails if the file cannot be read as audio.
    Result<Facts> (*inspect)(const QString& path) = nullptr;
    /// Writes an M4A file with the packets of another one and these tags alone; nothing is synced. `target` must not
    /// exist; what stands there after a failure means nothing.
    Result<void> (*remux)(const QString& source, const TakeTags& tags, const QString& target) = nullptr;

    /// From now on.
    static void use(const CopyMedia& media);
    /// What a file tells about itself; nothing if there is none or it cannot be read.
    [[nodiscard]] static std::optional<Facts> factsOf(const QString& path);
    [[nodiscard]] static CopyMedia current();
};

}  // namespace vantiro
