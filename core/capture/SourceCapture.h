// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/Capture.h"
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
        std::optional<std::vector<std::int64_t>> channels;  ///< Counted from 1; the first two if absent.
        std::optional<QString> filePath;                    ///< Absolute; a meter without one.
        TakeFormat format = TakeFormat::caf;
    };

    /// Fails as Capture::open() does; with "{id} is not running" for an application that is not there.
    [[nodiscard]] static Result<std::unique_ptr<SourceCapture>> open(
        const Options& options, AudioPlatform& audio, TakeStorage& storage);

    [[nodiscard]] Capture& capture() noexcept { return *m_capture; }
    [[nodiscard]] const Capture& capture() const noexcept { return *m_capture; }
    /// What to call the source.
    [[nodiscard]] const QString& name() const noexcept { return m_name; }

    /// Ends the capture and lets go of the source. May be called again.
    CaptureStats stop();

private:
    explicit SourceCapture(std::unique_ptr<Capture> capture);

    std::unique_ptr<Capture> m_capture;
    QString m_name;
};

}  // namespace vantiro
