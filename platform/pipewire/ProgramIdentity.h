// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/pipewire/GraphSnapshot.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace vantiro {

/// Who stands behind a client of the graph. What a client says of itself is a stranger's text and counts only where
/// the system does not know better.
struct ProgramIdentity {
    QString identifier;          ///< The same at each start of the program; never empty.
    QString name;                ///< As shown to the user; never empty.
    std::int32_t pid = 0;        ///< 0 if nobody knows.
    bool pidIsVerified = false;  ///< The kernel vouches for the pid, and not the client alone.

    /// Same program, same process.
    [[nodiscard]] bool isSameAs(const ProgramIdentity& other) const
    {
        return pid == other.pid && identifier.compare(other.identifier, Qt::CaseInsensitive) == 0;
    }
};

/// Finds out who a client is, from the client's properties, the process table and the installed desktop entries. Any
/// thread; reads a few small files.
class ProgramLookup {
public:
    /// Where to look; tests have folders of their own.
    struct Places {
        QString processes = QStringLiteral("/proc");
        QStringList applications;  ///< Folders of desktop entries, the first counts most.
    };

    /// The places of this machine.
    ProgramLookup();
    explicit ProgramLookup(Places places);

    /// `node` are the properties of the client's playback node, which some clients fill better than their own.
    [[nodiscard]] std::optional<ProgramIdentity> identify(
        const GraphProperties& client, const GraphProperties& node) const;

private:
    [[nodiscard]] std::int32_t verifiedPid(const GraphProperties& client, const GraphProperties& node) const;
    [[nodiscard]] QString executable(std::int32_t pid) const;
    [[nodiscard]] QString desktopIdFromCgroup(std::int32_t pid) const;
    [[nodiscard]] QString programName(std::int32_t pid) const;
    [[nodiscard]] QString desktopEntryName(const QString& id) const;
    [[nodiscard]] bool isApplicationId(const QString& id) const;

    Places m_places;
};

}  // namespace vantiro
