// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakePass.h"

#include "core/analysis/LoudnessMeter.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

namespace vantiro {

namespace {

    /// Asks and tells the caller, one thread at a time, and remembers the first failure of any of them.
    class Supervision {
    public:
        Supervision(const TakeAnalysis::Progress& progress, std::int64_t frames)
            : m_progress(progress)
            , m_frames(frames)
        { }

        [[nodiscard]] bool isStopped()
        {
            if (m_isStopped.load(std::memory_order_relaxed) || !m_progress.cancelled) {
                return m_isStopped.load(std::memory_order_relaxed);
            }
            const std::scoped_lock lock(m_mutex);
            return m_progress.cancelled();
        }
        void fail(const Error& error)
        {
            const std::scoped_lock lock(m_mutex);
            m_failure = m_failure ? m_failure : error;
            m_isStopped = true;
        }
        void advance(std::int64_t frames)
        {
            const std::scoped_lock lock(m_mutex);
            m_done += frames;
            if (m_progress.advanced) {
                // The stated length may be an estimate.
                m_progress.advanced(std::min(1.0, static_cast<double>(m_done) / static_cast<double>(m_frames)));
            }
        }
        /// Once no other thread runs.
        [[nodiscard]] const std::optional<Error>& failure() const { return m_failure; }

    private:
        const TakeAnalysis::Progress& m_progress;
        std::int64_t m_frames;
        std::mutex m_mutex;
        std::atomic<bool> m_isStopped = false;
        std::optional<Error> m_failure;
        std::int64_t m_done = 0;
    };

    class Pass {
    public:
        Pass(TakeReader& reader, double clipGap, std::int64_t overviewSlices, const TakeAnalysis::Progress& progress,
            const PassMeans& means)
            : m_reader(reader)
            , m_plan(ScanPlan::of(reader.format(), clipGap, means.segmentBlocks))
            , m_kernel(*means.kernel)
            , m_overview(m_plan.format.frames, overviewSlices)
            , m_supervision(progress, std::max<std::int64_t>(1, m_plan.format.frames))
        { }

        [[nodiscard]] Result<ScannedTake> run(unsigned threads)
        {
            if (m_reader.isParallel()) {
                scanSideBySide(threads);
            } else {
                scanInOrder();
            }
            if (m_supervision.failure()) {
                return std::unexpected(*m_supervision.failure());
            }
            return finish();
        }

    private:
        void scanSideBySide(unsigned threads);
        void work(std::span<ScannedSegment> segments);
        void scanInOrder();
        /// Room for the levels of so many frames.
        void makeRoom(std::int64_t frames);
        /// Fails the pass if so many frames have more blocks than there may be.
        [[nodiscard]] bool isTooLong(std::int64_t frames);
        [[nodiscard]] ScannedSegment segmentAt(std::int64_t first, std::int64_t length);
        /// Joins the next segment; whether the take goes on after it.
        [[nodiscard]] bool join(const ScannedSegment& segment);
        [[nodiscard]] ScannedTake finish();

        [[nodiscard]] std::size_t blocksOf(std::int64_t frames) const
        {
            return static_cast<std::size_t>((frames + m_plan.blockFrames - 1) / m_plan.blockFrames);
        }

        TakeReader& m_reader;
        ScanPlan m_plan;
        const BlockKernel& m_kernel;
        TakeOverview::Builder m_overview;
        Supervision m_supervision;
        std::atomic<std::size_t> m_next = 0;
        ScannedTake m_take;
        std::vector<double> m_steps;
    };

    void Pass::scanSideBySide(unsigned threads)
    {
        const std::int64_t frames = m_plan.format.frames;
        if (isTooLong(frames)) {
            return;
        }
        makeRoom(frames);
        std::vector<ScannedSegment> segments;
        for (std::int64_t first = 0; first < frames; first += m_plan.segmentFrames) {
            segments.push_back(segmentAt(first, std::min(m_plan.segmentFrames, frames - first)));
        }
        const std::size_t useful = (segments.size() + TakeScanner::mostSegments - 1) / TakeScanner::mostSegments;
        const std::size_t wanted = threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency());
        {
            std::vector<std::jthread> workers;
            for (bool isGranted = true; isGranted && workers.size() + 1 < std::min(useful, wanted);) {
                try {
                    workers.emplace_back([this, &segments] { work(segments); });
                } catch (const std::system_error&) {
                    // Those that run do all.
                    isGranted = false;
                }
            }
            work(segments);
        }
        if (!m_supervision.failure()) {
            for (const ScannedSegment& segment : segments) {
                if (!join(segment)) {
                    break;
                }
            }
        }
    }

    void Pass::work(std::span<ScannedSegment> segments)
    {
        TakeScanner scanner(m_reader, m_plan, m_overview, m_kernel);
        for (;;) {
            // Always the same ones side by side, whichever thread takes them.
            const std::size_t first = m_next.fetch_add(TakeScanner::mostSegments);
            if (first >= segments.size()) {
                return;
            }
            const auto taken = segments.subspan(first, std::min(TakeScanner::mostSegments, segments.size() - first));
            const Result<void> scanned =
                scanner.scan(taken, TakeScanner::Start::atRest, [this] { return m_supervision.isStopped(); });
            if (!scanned) {
                m_supervision.fail(scanned.error());
                return;
            }
            for (const ScannedSegment& segment : taken) {
                m_supervision.advance(segment.length);
            }
        }
    }

    void Pass::scanInOrder()
    {
        // The stated length may be wrong, so it asks for no more memory than a day of audio needs.
        constexpr std::size_t blocksOfDay = std::size_t{24} * 3600 * 100;
        const std::size_t expected = std::min(blocksOfDay, blocksOf(m_plan.format.frames + m_plan.segmentFrames));
        m_take.power.reserve(expected);
        m_take.peak.reserve(expected);
        TakeScanner scanner(m_reader, m_plan, m_overview, m_kernel);
        // Going back costs a decoder much, so the filters go on; and its stated length may be wrong, so the end of the
        // take is where it gives nothing more.
        for (bool goesOn = true; goesOn;) {
            const std::int64_t first = m_take.frames;
            if (isTooLong(first)) {
                return;
            }
            makeRoom(first + m_plan.segmentFrames);
            ScannedSegment segment = segmentAt(first, m_plan.segmentFrames);
            const auto start = first == 0 ? TakeScanner::Start::atRest : TakeScanner::Start::goesOn;
            const Result<void> scanned =
                scanner.scan({&segment, 1}, start, [this] { return m_supervision.isStopped(); });
            if (!scanned) {
                m_supervision.fail(scanned.error());
                return;
            }
            goesOn = join(segment);
            m_supervision.advance(segment.frames);
        }
    }

    void Pass::makeRoom(std::int64_t frames)
    {
        m_take.power.resize(blocksOf(frames));
        m_take.peak.resize(blocksOf(frames));
    }

    bool Pass::isTooLong(std::int64_t frames)
    {
        if (frames / m_plan.blockFrames < mostBlocks) {
            return false;
        }
        m_supervision.fail(CaptureError{
            QStringLiteral("This take seems to be longer than four days. Its sample rate may be damaged.")});
        return true;
    }

    ScannedSegment Pass::segmentAt(std::int64_t first, std::int64_t length)
    {
        const auto firstBlock = static_cast<std::size_t>(first / m_plan.blockFrames);
        ScannedSegment segment;
        segment.first = first;
        segment.length = length;
        segment.power = std::span(m_take.power).subspan(firstBlock, blocksOf(length));
        segment.peak = std::span(m_take.peak).subspan(firstBlock, blocksOf(length));
        return segment;
    }

    bool Pass::join(const ScannedSegment& segment)
    {
        for (const FrameRun& run : segment.clipRuns) {
            joinRun(m_take.clipRuns, run, m_plan.clipGapFrames);
        }
        m_take.clippedSamples += segment.clippedSamples;
        for (const ScannedSegment::SlicePart& part : segment.slices) {
            m_overview.raise(part.slice, part.peak, part.clippedSamples);
        }
        // A step may begin in one segment and end in the next.
        const auto firstStep = static_cast<std::size_t>(segment.first / m_plan.stepFrames);
        m_steps.resize(firstStep + segment.stepSquares.size());
        for (std::size_t step = 0; step < segment.stepSquares.size(); ++step) {
            m_steps[firstStep + step] += segment.stepSquares[step];
        }
        m_take.frames = segment.first + segment.frames;
        return segment.frames == segment.length;
    }

    ScannedTake Pass::finish()
    {
        makeRoom(m_take.frames);
        m_take.blockFrames = m_plan.blockFrames;
        m_take.overview = m_overview.finish();
        if (m_plan.weighting) {
            // The last step counts only if it is whole.
            m_steps.resize(static_cast<std::size_t>(m_take.frames / m_plan.stepFrames));
            for (double& step : m_steps) {
                step /= static_cast<double>(m_plan.stepFrames);
            }
            m_take.loudness = integratedLoudness(m_steps);
        }
        return std::move(m_take);
    }

}  // namespace

Result<ScannedTake> scanTake(TakeReader& reader, double clipGap, std::int64_t overviewSlices,
    const TakeAnalysis::Progress& progress, const PassMeans& means)
{
    return Pass(reader, clipGap, overviewSlices, progress, means).run(means.threads);
}

}  // namespace vantiro
