// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"

#include <QString>

#include <functional>
#include <vector>

namespace vantiro {

/// A state of the window, made by hand from fixed data.
struct SnapshotScene {
    QString name;  ///< Of the picture's file, without its ending.
    /// May be called again, so that a running clock shows the same as before.
    std::function<void(AppModel&)> fill;
};

/// All scenes that are pictured.
[[nodiscard]] std::vector<SnapshotScene> snapshotScenes();

}  // namespace vantiro
