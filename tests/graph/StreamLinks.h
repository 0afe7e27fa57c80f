// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/pipewire/LinkPlan.h"
#include "platform/pipewire/LinkSet.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace vantiro::test {

/// All that nodes of these names play, whenever they come.
class StreamPlan final : public LinkPlan {
public:
    explicit StreamPlan(QStringList names) : m_names(std::move(names)) { }

    [[nodiscard]] bool isAlive(const GraphSnapshot& /*graph*/) const override { return true; }
    [[nodiscard]] std::vector<Entry> entries(const GraphSnapshot& graph) const override;

private:
    QStringList m_names;
};

/// Leads streams to a sink, as a session manager would: those of these names, as soon as they have ports. The graph is
/// the one that the environment leads to. The links end with this object.
class StreamLinks final : private GraphMirror::Observer {
public:
    StreamLinks(QStringList names, QString sink);
    ~StreamLinks() override;

    StreamLinks(const StreamLinks&) = delete;
    StreamLinks& operator=(const StreamLinks&) = delete;

private:
    void graphChanged(const GraphSnapshot& graph) override;
    void connectionLost() override { m_links.clear(); }

    StreamPlan m_plan;
    QString m_sink;
    GraphMirror m_mirror;
    LinkSet m_links;
};

}  // namespace vantiro::test
