// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"
#include "core/sources/PreflightFacts.h"

#include <optional>

namespace vantiro {

/// Keeps the model's findings: what stands in the way of a take of the selected source. Main thread only.
class FindingsWatch {
public:
    FindingsWatch(AppModel& model, const ModelServices& services);

    FindingsWatch(const FindingsWatch&) = delete;
    FindingsWatch& operator=(const FindingsWatch&) = delete;

    /// Makes the findings anew. `peakDB` is the loudest level heard lately; without it the level that the selected
    /// source had when all were listened to. The disk is looked at in the background: what it tells comes later.
    void refresh(std::optional<float> peakDB = std::nullopt);

    /// Makes the findings anew from what is known of level and disk, and from the source as it is now.
    void recheck();

private:
    [[nodiscard]] std::vector<PreflightFinding> findings() const;
    void lookAtVolume();
    void forgetVolume();

    AppModel& m_model;
    ModelServices m_services;
    std::optional<float> m_peakDB;
    VolumeFacts m_volume;
    bool m_looking = false;  ///< A disk that does not answer is asked once only.
    Guard m_guard;
};

}  // namespace vantiro
