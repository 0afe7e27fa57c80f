// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// Which applications count as DJ programs or audio workstations, by prefixes of their identifiers.
namespace vantiro::KnownDJApps {

/// The prefixes that the program knows by itself. Those that end in a dot match a whole vendor.
[[nodiscard]] const QStringList& builtInPrefixes();

/// The built-in prefixes, then those of the user's file, a JSON array of texts, in its order. A file that is missing,
/// unreadable or of another shape adds nothing. Reads the file at each call. Any thread.
[[nodiscard]] QStringList prefixes(const QString& userFile);

/// Whether the identifier begins with one of the prefixes, whatever the case of either. Any thread.
[[nodiscard]] bool contains(const QString& identifier, const QStringList& prefixes);

}  // namespace vantiro::KnownDJApps
