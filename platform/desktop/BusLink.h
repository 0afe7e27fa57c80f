// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/Bus.h"

#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

struct sd_bus;
struct sd_bus_message;

namespace vantiro {

/// A connection to a message bus that the event loop of its thread serves: nothing here ever waits. A bus that goes
/// away answers nobody any more. What is called back must not destroy the link.
class BusLink final : public QObject {
    Q_OBJECT

public:
    /// Reads a message; null in place of an answer that did not come.
    using Reader = std::function<void(sd_bus_message*)>;

    /// Nothing if there is no such bus.
    [[nodiscard]] static std::unique_ptr<BusLink> open(BusKind kind);
    /// Serves a connection from here on; nothing if it is none.
    [[nodiscard]] static std::unique_ptr<BusLink> adopt(Bus bus);
    ~BusLink() override;

    [[nodiscard]] sd_bus* bus() const { return m_bus.get(); }

    /// A call without its arguments yet.
    [[nodiscard]] BusMessage newRequest(const BusMethod& method) const { return newCall(m_bus, method); }
    /// The same, starting no service that does not run.
    [[nodiscard]] BusMessage newQuestion(const BusMethod& method) const;
    /// Sends a call and hands its answer to the reader, later.
    void ask(const BusMessage& call, Reader answer);
    /// Hands every signal that fits the rule to the reader.
    void follow(const QString& rule, Reader reader);
    /// To be called after anything else was sent through bus().
    void wake();

Q_SIGNALS:
    /// The bus went away.
    void closed();

private:
    explicit BusLink(Bus bus);
    void serve();

    Bus m_bus;
    QSocketNotifier m_reads;
    QSocketNotifier m_writes;
    QTimer m_timer;
};

}  // namespace vantiro
