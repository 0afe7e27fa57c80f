// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ModelServices.h"

#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"

namespace vantiro {

RecorderServices RecorderServices::real()
{
    return {.running = RecorderStateStore::running,
        .last = [] { return RecorderStateStore::read(VantiroPaths::lastTakeFile()); },
        .start = [](const RecorderClient::Request& request) { return RecorderClient::start(request); },
        .stop = RecorderClient::stop};
}

}  // namespace vantiro
