// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/ModelFlows.h"

#include <QCoreApplication>
#include <QString>

#include <functional>

namespace vantiro {

/// Links of the application's own scheme, `vantiro://command`. Any web page may hold one, so that nothing of it counts
/// but the command's own word, and the user has to allow them first. Main thread only.
///
/// | command       | does                                           |
/// |---------------|------------------------------------------------|
/// | record        | starts a take; never stops one                 |
/// | stop          | stops the running take; never starts one       |
/// | toggle        | one or the other                               |
/// | play          | plays the newest take, or pauses it            |
/// | stop-playback | takes the take off the deck                    |
/// | takes, deck   | show that page                                 |
/// | simple        | shows the deck in its small form               |
/// | advanced      | shows the deck with the inspector              |
/// | guide         | shows the setup guide; needs nobody's consent  |
class Links {
    Q_DECLARE_TR_FUNCTIONS(Links)

public:
    /// Longer ones have no command.
    static constexpr qsizetype longest = 2048;

    /// Shows the setup guide, or whatever stands in for it: without starting anything.
    using ShowGuide = std::function<void()>;

    Links(AppModel& model, ModelFlows& flows, ShowGuide showGuide);

    enum class Outcome {
        quiet,
        visible,  ///< The window shows something on account of it: a page, the deck that plays, an alert.
    };

    /// Does what the link says, if it may. What is no link of ours does nothing.
    Outcome open(const QString& url);

    /// The command's word, in small letters; empty if there is none in the strictest sense. A word need not be a
    /// command that there is.
    [[nodiscard]] static QString command(const QString& url);

private:
    Outcome obey(const QString& command);

    AppModel& m_model;
    ModelFlows& m_flows;
    ShowGuide m_showGuide;
};

}  // namespace vantiro
