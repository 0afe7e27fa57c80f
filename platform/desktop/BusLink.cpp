// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/BusLink.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

#include <poll.h>
#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    using namespace std::chrono;

    constexpr std::uint64_t patienceMicroseconds = 5'000'000;

    int hand(sd_bus_message* message, void* reader, sd_bus_error* /*error*/)
    {
        const bool isAnswer = sd_bus_message_is_method_error(message, nullptr) == 0;
        (*static_cast<BusLink::Reader*>(reader))(isAnswer ? message : nullptr);
        return 0;
    }

    /// The bus keeps the slot, and the slot the reader.
    void keep(sd_bus_slot* slot, BusLink::Reader* reader)
    {
        sd_bus_slot_set_destroy_callback(slot, [](void* owned) { delete static_cast<BusLink::Reader*>(owned); });
        sd_bus_slot_set_userdata(slot, reader);
        sd_bus_slot_set_floating(slot, 1);
        sd_bus_slot_unref(slot);
    }

}  // namespace

std::unique_ptr<BusLink> BusLink::open(BusKind kind)
{
    return adopt(openBus(kind));
}

std::unique_ptr<BusLink> BusLink::adopt(Bus bus)
{
    if (!bus || sd_bus_get_fd(bus.get()) < 0) {
        return nullptr;
    }
    return std::unique_ptr<BusLink>(new BusLink(std::move(bus)));
}

BusLink::BusLink(Bus bus)
    : m_bus(std::move(bus))
    , m_reads(sd_bus_get_fd(m_bus.get()), QSocketNotifier::Read)
    , m_writes(sd_bus_get_fd(m_bus.get()), QSocketNotifier::Write)
{
    m_timer.setSingleShot(true);
    connect(&m_reads, &QSocketNotifier::activated, this, &BusLink::serve);
    connect(&m_writes, &QSocketNotifier::activated, this, &BusLink::serve);
    connect(&m_timer, &QTimer::timeout, this, &BusLink::serve);
    wake();
}

BusLink::~BusLink()
{
    // Without the wait for what was not sent yet: a bus that hangs must not hold up the end.
    sd_bus_close_unref(m_bus.release());
}

BusMessage BusLink::newQuestion(const BusMethod& method) const
{
    BusMessage call = newCall(m_bus, method);
    if (call) {
        sd_bus_message_set_auto_start(call.get(), 0);
    }
    return call;
}

void BusLink::ask(const BusMessage& call, Reader answer)
{
    auto reader = std::make_unique<Reader>(std::move(answer));
    sd_bus_slot* slot = nullptr;
    if (call && sd_bus_call_async(m_bus.get(), &slot, call.get(), hand, reader.get(), patienceMicroseconds) >= 0) {
        keep(slot, reader.release());
    } else {
        QMetaObject::invokeMethod(
            this, [reader = std::shared_ptr<Reader>(std::move(reader))] { (*reader)(nullptr); }, Qt::QueuedConnection);
    }
    wake();
}

void BusLink::follow(const QString& rule, Reader reader)
{
    auto owned = std::make_unique<Reader>(std::move(reader));
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(m_bus.get(), &slot, rule.toUtf8().constData(), hand, nullptr, owned.get()) >= 0) {
        keep(slot, owned.release());
    }
    wake();
}

void BusLink::wake()
{
    const int events = sd_bus_get_events(m_bus.get());
    m_reads.setEnabled(events >= 0 && (events & POLLIN) != 0);
    m_writes.setEnabled(events >= 0 && (events & POLLOUT) != 0);
    std::uint64_t until = 0;
    if (events < 0 || sd_bus_get_timeout(m_bus.get(), &until) < 0
        || until == std::numeric_limits<std::uint64_t>::max()) {
        m_timer.stop();
        return;
    }
    const auto left = microseconds(until) - duration_cast<microseconds>(steady_clock::now().time_since_epoch());
    m_timer.start(std::max(ceil<milliseconds>(left), milliseconds::zero()));
}

void BusLink::serve()
{
    int result = 0;
    do {
        result = sd_bus_process(m_bus.get(), nullptr);
    } while (result > 0);
    if (result < 0 || sd_bus_is_open(m_bus.get()) <= 0) {
        m_reads.setEnabled(false);
        m_writes.setEnabled(false);
        m_timer.stop();
        Q_EMIT closed();
        return;
    }
    wake();
}

}  // namespace vantiro
