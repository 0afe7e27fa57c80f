// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeFormat.h"
#include "core/foundation/Result.h"
#include "core/recorder/RecorderState.h"
#include "core/sources/SourceRef.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

/// Starts and stops the detached recorder. start() and stop() block for as long as they wait and so belong on a thread
/// of their own; calls of start() must not overlap. Errors that are worded here are CaptureErrors.
namespace vantiro::RecorderClient {

/// What to record, and where to.
struct Request {
    SourceRef source;
    std::optional<std::vector<std::int64_t>> channels =
        std::nullopt;  ///< Counted from 1; absent: the recorder decides.
    TakeFormat format = TakeFormat::caf;
    std::optional<QString> output = std::nullopt;  ///< Absolute path of the take; absent: the recorder names it.
};

/// The recorder program that belongs to the running program, if there is one.
[[nodiscard]] std::optional<QString> toolPath();
/// The same for a program at this resolved path: "../libexec/vantiro/vantiro" from its folder, then "vantiro" beside
/// it, then itself if that is its name; the first that is an executable file.
[[nodiscard]] std::optional<QString> toolPathFor(const QString& executable);

/// The arguments that make the recorder record this, without the program's own name.
[[nodiscard]] QStringList argumentVector(const Request& request);

/// How start() finds the recorder and how long it waits for it. The wait is long since a question to the user may stand
/// between the recorder and its source.
struct StartOptions {
    std::function<std::optional<QString>()> findTool = toolPath;
    int rounds = 1200;
    std::chrono::milliseconds interval{100};  ///< Before each round.
};

/// Launches the recorder and waits until its take really runs; returns the state that it wrote. From then on nothing
/// ties it to this process. Fails with "already recording: {path}", "the vantiro recorder tool is missing from this
/// build", a SystemError of the launch, or, if it exits or does not come up in time, with what it printed ("the
/// recorder did not start" if that is nothing); a recorder still there then is told to end.
[[nodiscard]] Result<RecorderState> start(const Request& request, const StartOptions& options = {});

/// Asks the running recorder to finish its take and waits until it is gone; returns the final record of that take, or
/// nothing if there was no take or it left no record. Fails with "the recorder (pid {pid}) is still finalizing {path}"
/// when the time is over, which does the take no harm, or as ProcessLiveness::signal() does.
[[nodiscard]] Result<std::optional<RecorderState>> stop(std::chrono::milliseconds timeout);

}  // namespace vantiro::RecorderClient
