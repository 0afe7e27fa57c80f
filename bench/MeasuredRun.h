// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>

namespace vantiro {

/// A program that ran from start to end, and what that cost.
struct MeasuredRun {
    std::chrono::nanoseconds wall{};
    std::chrono::nanoseconds processor{};  ///< Of all threads, in the program and in the system on its behalf.
    QByteArray output;                     ///< What it wrote to its standard output; messages of errors are dropped.

    /// Runs a program, which is looked for as a shell would, with variables ("NAME=value") added to the environment. A
    /// failure if it does not end well.
    [[nodiscard]] static Result<MeasuredRun> of(
        const QString& program, const QStringList& arguments, const QStringList& variables = {});
};

}  // namespace vantiro
