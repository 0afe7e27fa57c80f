// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/FakeOutput.h"

#include <limits>
#include <utility>

namespace vantiro::test {

struct FakeOutput::Stream final : PlaybackStream {
    explicit Stream(std::shared_ptr<FakeOutput> to) : output(std::move(to)) { }
    ~Stream() override
    {
        const std::scoped_lock lock(output->m_mutex);
        output->m_source = nullptr;
    }

    bool isAlive() const override
    {
        const std::scoped_lock lock(output->m_mutex);
        return output->m_alive;
    }
    void setActive(bool active) override
    {
        const std::scoped_lock lock(output->m_mutex);
        output->m_active = active;
    }

    std::shared_ptr<FakeOutput> output;
};

std::unique_ptr<PlaybackStream> FakeOutput::openStream(std::shared_ptr<FakeOutput> output, PlaybackSource& source)
{
    {
        const std::scoped_lock lock(output->m_mutex);
        output->m_source = &source;
    }
    return std::make_unique<Stream>(std::move(output));
}

bool FakeOutput::isOpen() const
{
    const std::scoped_lock lock(m_mutex);
    return m_source != nullptr;
}

bool FakeOutput::isActive() const
{
    const std::scoped_lock lock(m_mutex);
    return m_active;
}

std::vector<float> FakeOutput::pump(int frames)
{
    const std::scoped_lock lock(m_mutex);
    if (m_source == nullptr || !m_active || !m_alive) {
        return {};
    }
    // What is not written to shows.
    std::vector<float> samples(static_cast<std::size_t>(frames) * static_cast<std::size_t>(m_request.channels),
        std::numeric_limits<float>::quiet_NaN());
    m_source->fill(samples);
    return samples;
}

void FakeOutput::vanish()
{
    const std::scoped_lock lock(m_mutex);
    m_alive = false;
}

}  // namespace vantiro::test
