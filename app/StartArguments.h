// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <expected>

namespace vantiro {

/// What the program was asked for when it was started.
struct StartArguments {
    enum class Task {
        window,       ///< The application.
        snapshot,     ///< Still pictures of the window.
        sampleTakes,  ///< The standard sample takes.
        gallery,      ///< All controls, in a window or as a picture.
    };

    Task task = Task::window;
    QString folder = {};     ///< Of the pictures or the sample takes.
    QString picture = {};    ///< Where a picture of the gallery goes; empty for a window.
    double scale = 1;        ///< Of that picture: 1, 1.5 or 2.
    QStringList links = {};  ///< Of the application's own scheme, for its window.

    /// Reads the words behind the program's name. What is not understood is a plain start, and so is a task without its
    /// folder: a desktop may start programs with words of its own. Only the gallery is particular; the error is a
    /// sentence for the terminal.
    [[nodiscard]] static std::expected<StartArguments, QString> read(const QStringList& words);
};

}  // namespace vantiro
