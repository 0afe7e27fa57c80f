// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/takes/Take.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <span>
#include <vector>

namespace vantiro {

/// The shape of a take: a fixed small number of peaks along its whole length, and where it clipped.
struct TakeOverview {
    static constexpr float clipLevel = 0.999F;  ///< A sample of at least this magnitude clips.
    static constexpr std::int64_t usualSlices = 600;

    std::vector<float> peaks;         ///< Largest magnitude of each slice, all channels, at most 1.
    std::vector<std::int64_t> clips;  ///< Slices with at least one clipped sample, ascending.
    std::int64_t clippedSamples = 0;  ///< Each channel counted.

    bool operator==(const TakeOverview&) const = default;

    class Builder;

    /// Reads the whole file. Fails as TakeReader does.
    [[nodiscard]] static Result<TakeOverview> compute(const QString& path, std::int64_t slices = usualSlices);
    /// The overview of a take from its cache, else computed and then cached. A cache that cannot be read or written is
    /// passed over. Blocks for a read of the file at worst.
    [[nodiscard]] static Result<TakeOverview> load(const Take& take);
    /// "{stem}-{bytes}.json" in the folder.
    [[nodiscard]] static QString cacheURL(const Take& take, const QString& folder);
    /// The folder of all cached overviews.
    [[nodiscard]] static QString cacheFolder();

    [[nodiscard]] QByteArray toJsonText() const;
    [[nodiscard]] static Result<TakeOverview> fromJsonText(const QByteArray& text);
};

/// Collects an overview from chunks of any size, in order.
class TakeOverview::Builder {
public:
    /// `total` is the number of frames that the take is expected to have; a take of fewer frames than slices has one
    /// frame a slice. What comes beyond `total` is not measured.
    Builder(std::int64_t total, std::int64_t slices);

    /// `planes` is one pointer a channel.
    void add(std::span<const float* const> planes, std::int64_t frames);
    /// Adds what was found in a part of one slice: its largest magnitude and how many samples clipped.
    void raise(std::int64_t slice, float peak, std::int64_t clippedSamples);
    [[nodiscard]] TakeOverview finish() const;

    [[nodiscard]] std::int64_t slices() const { return m_slices; }
    /// The slice that holds a frame, which is slices() or more if the frame lies beyond the total.
    [[nodiscard]] std::int64_t sliceAt(std::int64_t frame) const;
    /// The first frame of a slice.
    [[nodiscard]] std::int64_t firstFrame(std::int64_t slice) const { return slice * m_total / m_slices; }

private:
    std::int64_t m_total;
    std::int64_t m_slices;
    std::vector<float> m_peaks;
    std::vector<bool> m_clipped;
    std::int64_t m_clippedSamples = 0;
    std::int64_t m_frame = 0;
};

}  // namespace vantiro
