// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/sources/SourceRef.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace vantiro {

/// A private graph and folders of its own for everything that a recorder keeps. While it lives, this process and those
/// that it starts see nothing else.
class BenchRig {
public:
    static constexpr auto deviceName = "bench.card";
    static constexpr auto programName = "bench.deck";
    static constexpr auto programId = "org.vantiro.BenchDeck";
    static constexpr auto sinkName = "bench.speakers";
    static constexpr int sampleRate = 48000;

    [[nodiscard]] static Result<std::unique_ptr<BenchRig>> make();

    /// A stereo interface that plays what `render` writes, so many frames a cycle.
    [[nodiscard]] Result<std::unique_ptr<VirtualDevice>> makeDevice(VirtualDeviceOptions::Render render,
        const QString& name = QLatin1StringView(deviceName), int quantum = 256) const;

    /// A program's stereo stream, which this process plays to the rig's speakers.
    [[nodiscard]] Result<std::unique_ptr<VirtualDevice>> makeProgram(VirtualDeviceOptions::Render render) const;

    /// Links two ports, named as `NODE:PORT`; false if one of them is not there.
    [[nodiscard]] static bool link(const QString& output, const QString& input);

    /// A path in the rig's folder.
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    BenchRig() = default;

    QTemporaryDir m_folder;
    std::unique_ptr<PrivateGraph> m_graph;
};

}  // namespace vantiro
