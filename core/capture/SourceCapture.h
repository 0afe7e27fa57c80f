// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/Capture.h"
#include "core/capture/ProcessTap.h"
#include "core/sources/SourceRef.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro {

/// A source, as the user names one, opened for capture. It is built stopped: set the callbacks of capture(), start it,
/// and at the end call stop() here.
class SourceCapture {
public:
    struct Options {
        SourceRef source;
        std::optional<std::int32_t> pid = std::nullopt;                    ///< The program's process, if it is known.
        std::optional<std::vector<std::int64_t>> channels = std::nullopt;  ///< Counted from 1; the first two if absent.
        std::optional<QString> filePath = std::nullopt;                    ///< Absolute; a meter without one.
        TakeFormat format = TakeFormat::caf;
    };

    /// A program is looked for by its pid, by its identifier, and, if the identifier is a number, by that pid. Fails as
    /// Capture::open() and ProcessTap::open() do, and with "{id} is not running" for a program that is not there.
    [[nodiscard]] static Result<std::unique_ptr<SourceCapture>> open(
        const Options& options, AudioPlatform& audio, TakeStorage& storage);

    [[nodiscard]] Capture& capture() noexcept { return *m_capture; }
    [[nodiscard]] const Capture& capture() const noexcept { return *m_capture; }
    /// What to call the source.
    [[nodiscard]] const QString& name() const noexcept { return m_name; }

    /// Ends the capture and lets go of the source. May be called again.
    CaptureStats stop();

private:
    SourceCapture(std::unique_ptr<ProcessTap> tap, std::unique_ptr<Capture> capture);

    // Destroyed from the last to the first: the capture ends before the tap that it records from.
    std::unique_ptr<ProcessTap> m_tap;
    std::unique_ptr<Capture> m_capture;
    QString m_name;
};

}  // namespace vantiro
