// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"

#include "core/foundation/Json.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/VantiroPaths.h"

#include <QFile>

namespace vantiro::RecorderStateStore {

std::optional<RecorderState> running()
{
    auto state = read(VantiroPaths::stateFile());
    if (!state || !state->isRunning() || !RecorderLock::isHeld(VantiroPaths::lockFile())) {
        return std::nullopt;
    }
    return state;
}

std::optional<RecorderState> read(const QString& path)
{
    const auto bytes = files::read(path);
    const auto object = bytes ? json::object(*bytes) : std::nullopt;
    if (!object) {
        return std::nullopt;
    }
    auto state = RecorderState::fromJson(*object);
    return state ? std::optional(*std::move(state)) : std::nullopt;
}

Result<void> write(const RecorderState& state, const QString& path, files::Durability durability)
{
    return files::replace(path, state.toJsonText(), durability);
}

void clear()
{
    QFile::remove(VantiroPaths::stateFile());
}

}  // namespace vantiro::RecorderStateStore
