// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/graph/TapTest.h"

#include <map>

namespace vantiro::test {

/// A test of what the tool asks of a desktop: a system bus and a session bus of its own, with services that are made
/// for the test and start nothing else.
class DesktopTest : public TapTest {
protected:
    void SetUp() override;

    /// Starts the services, each with "grant", "refuse" or "hang".
    void startServices(const QString& logind, const QString& session, const QString& systemd);
    /// What the services were asked and what ended, line by line.
    [[nodiscard]] QStringList asked() const;
    [[nodiscard]] QStringList askedOf(const QString& service) const;
    [[nodiscard]] bool waitForAsked(const QString& line) const;
    /// The buses answer nobody any more.
    void freezeBuses();

    /// A recorder with the program "deck" that plays to the speakers.
    [[nodiscard]] std::unique_ptr<Program> recordDeck();

private:
    std::map<QString, std::unique_ptr<Program>> m_buses;
    std::unique_ptr<Program> m_services;
    std::unique_ptr<Program> m_deck;
};

}  // namespace vantiro::test
