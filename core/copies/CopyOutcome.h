// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <expected>
#include <utility>

namespace vantiro {

/// Why there is no copy.
struct CopyFailure {
    enum class Stage {
        refused,    ///< Nothing was written. The error's own sentence says what to do instead.
        failed,     ///< The disk, or a file that is not what it was.
        cancelled,  ///< Whoever asked for it knows.
    };

    Stage stage = Stage::failed;
    Error error;
};

using CopyOutcome = std::expected<void, CopyFailure>;

/// With what a maker of errors gave.
[[nodiscard]] inline std::unexpected<CopyFailure> copyFailure(CopyFailure::Stage stage, std::unexpected<Error> error)
{
    return std::unexpected(CopyFailure{stage, std::move(error).error()});
}

}  // namespace vantiro
