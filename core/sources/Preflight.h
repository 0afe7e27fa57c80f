// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// The facts before a take.
struct PreflightInput {
    QString sourceName;
    bool sourcePresent = false;  ///< It can be opened now.
    bool sourceIsApp = false;
    double sampleRate = 0;                                 ///< Hz.
    std::optional<double> lastSampleRate = std::nullopt;   ///< The rate remembered for this source, Hz.
    std::optional<float> peakDB = std::nullopt;            ///< The peak heard lately; absent if nothing was measured.
    std::optional<std::int64_t> freeBytes = std::nullopt;  ///< Where takes go; absent if unknown.
    std::int64_t bytesPerSecond = 0;                       ///< What recording costs.
    std::optional<QString> missingVolume = std::nullopt;   ///< The disk of the takes folder, if it is not mounted.

    bool operator==(const PreflightInput&) const = default;
};

/// One sentence before a take.
struct PreflightFinding {
    /// A list never has two findings of one check.
    enum class Check {
        source,
        signal,
        level,
        sampleRate,
        disk,
        folder,
    };
    enum class Severity {
        ok,
        warning,
        blocker,
    };

    Check check = Check::source;
    Severity severity = Severity::ok;
    QString title = {};
    QString advice = {};  ///< What to do; may be empty.

    bool operator==(const PreflightFinding&) const = default;

    /// The check's name.
    [[nodiscard]] QString id() const;
};

/// What stands in the way of a take, as a short list of plain sentences. Any thread.
namespace Preflight {

    /// Bytes that a second of recording costs at this rate: two channels of 24 bits.
    [[nodiscard]] std::int64_t bytesPerSecond(double sampleRate);

    /// Source, signal or level, sample rate, and disk or folder if they are known, in this order; the source alone if
    /// it is not there.
    [[nodiscard]] std::vector<PreflightFinding> run(const PreflightInput& input);

    /// For when no source could be picked; `choosable` are the names of what was found.
    [[nodiscard]] std::vector<PreflightFinding> noSource(const QStringList& choosable);

    /// For when the disk of the takes folder, of this name, is not there.
    [[nodiscard]] PreflightFinding missingVolume(const QString& name);

    /// For when the system keeps audio inputs from us.
    [[nodiscard]] PreflightFinding microphoneDenied();

    /// False only for a source or a takes folder that is not there. Everything else warns and leaves the decision to
    /// the DJ.
    [[nodiscard]] bool canRecord(std::span<const PreflightFinding> findings);

}  // namespace Preflight

}  // namespace vantiro
