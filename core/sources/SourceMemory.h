// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/sources/SourceRef.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace vantiro {

/// What is remembered of sources across runs: which one the user chose with a set of hardware connected, and at which
/// rate each one's last take ran. At home and in the club the choices differ, so a choice belongs to the whole set.
class SourceMemory {
public:
    /// The key of a set of input devices: their UIDs, sorted, with "|" between them.
    [[nodiscard]] static QString key(QStringList uids);

    /// The source that was chosen with these input devices connected.
    [[nodiscard]] std::optional<SourceRef> choice(const QStringList& uids) const;
    void remember(const SourceRef& source, const QStringList& uids);
    /// Forgets all choices; the rates stay.
    void forgetChoices();

    /// The rate in Hz of the source's last take.
    [[nodiscard]] std::optional<double> lastRate(const SourceRef& source) const;
    void rememberRate(double rate, const SourceRef& source);

    /// The memory in a JSON file: {"choices": {key: {"kind", "id"}}, "rates": {descriptor: Hz}}, both optional. A file
    /// that is missing or of another shape gives an empty memory.
    [[nodiscard]] static SourceMemory load(const QString& path);
    /// Replaces the file, making its folder.
    [[nodiscard]] Result<void> save(const QString& path) const;

    bool operator==(const SourceMemory&) const = default;

private:
    QHash<QString, SourceRef> m_choices;
    QHash<QString, double> m_rates;  ///< By descriptor.
};

}  // namespace vantiro
