// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QCoreApplication;

namespace vantiro {

/// Gives the texts inside tr() and translate() their wording for Linux and their plural forms, as long as the
/// application lives. A catalogue that cannot be read is logged, and texts stay as the source has them. Comes before
/// anything that asks for a text.
void installCatalogue(QCoreApplication& application);

}  // namespace vantiro
