// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/AudioProcess.h"

#include "core/foundation/Json.h"

#include <algorithm>
#include <limits>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    template <class Test>
    std::optional<AudioProcess> first(const std::vector<AudioProcess>& processes, Test test)
    {
        const auto found = std::ranges::find_if(processes, test);
        return found == processes.end() ? std::nullopt : std::optional(*found);
    }

}  // namespace

QJsonObject AudioProcess::toJson() const
{
    QJsonObject object{{u"pid"_s, pid}, {u"name"_s, name}, {u"isPlaying"_s, isPlaying}};
    if (bundleID) {
        object.insert(u"bundleID"_s, *bundleID);
    }
    return object;
}

Result<AudioProcess> AudioProcess::fromJson(const QJsonObject& object)
{
    json::Reader reader(object);
    AudioProcess process;
    std::int64_t pid = 0;
    reader.read("pid"_L1, pid);
    reader.read("bundleID"_L1, process.bundleID);
    reader.read("name"_L1, process.name);
    reader.read("isPlaying"_L1, process.isPlaying);
    if (pid < 1 || pid > std::numeric_limits<std::int32_t>::max()) {
        reader.reject("pid"_L1);
    }
    process.pid = static_cast<std::int32_t>(pid);
    return reader.finish(std::move(process));
}

void AudioProcesses::sort(std::vector<AudioProcess>& processes)
{
    std::ranges::sort(processes, [](const AudioProcess& left, const AudioProcess& right) {
        const int order = left.name.toCaseFolded().localeAwareCompare(right.name.toCaseFolded());
        return order != 0 ? order < 0 : left.pid < right.pid;
    });
}

std::vector<AudioProcess> AudioProcesses::playing(std::vector<AudioProcess> processes)
{
    std::erase_if(processes, [](const AudioProcess& process) { return !process.isPlaying; });
    return processes;
}

std::optional<AudioProcess> AudioProcesses::withBundleID(
    const std::vector<AudioProcess>& processes, const QString& bundleID)
{
    const auto named = [&](const AudioProcess& process) {
        return process.bundleID && process.bundleID->compare(bundleID, Qt::CaseInsensitive) == 0;
    };
    const auto sounding =
        first(processes, [&](const AudioProcess& process) { return process.isPlaying && named(process); });
    return sounding ? sounding : first(processes, named);
}

std::optional<AudioProcess> AudioProcesses::withPid(const std::vector<AudioProcess>& processes, std::int32_t pid)
{
    return first(processes, [pid](const AudioProcess& process) { return process.pid == pid; });
}

std::optional<AudioProcess> AudioProcesses::withID(const std::vector<AudioProcess>& processes, const QString& id)
{
    if (auto process = withBundleID(processes, id)) {
        return process;
    }
    bool isNumber = false;
    const int pid = id.toInt(&isNumber);
    return isNumber ? withPid(processes, pid) : std::nullopt;
}

}  // namespace vantiro
