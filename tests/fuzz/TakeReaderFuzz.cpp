// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakePass.h"
#include "core/foundation/FileDescriptor.h"
#include "core/takes/TakeReader.h"
#include "core/takes/Takes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

// Any bytes make a failure, or audio no longer than they are that reads to its end.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    using namespace vantiro;
    const FileDescriptor file(::memfd_create("take", MFD_CLOEXEC));
    if (!file.isOpen() || ::write(file.get(), data, size) != static_cast<ssize_t>(size)) {
        return -1;
    }
    const QString path = QStringLiteral("/proc/self/fd/%1").arg(file.get());
    const auto reader = TakeReader::open(path);
    const auto take = Takes::describe(path);
    if (reader.has_value() != take.has_value()) {
        std::abort();
    }
    if (!reader) {
        return 0;
    }
    const TakeReader::Format& format = (*reader)->format();
    const bool isSane = format.channels >= 1 && format.channels <= 256 && format.sampleRate >= 1
        && format.sampleRate <= 1'000'000 && format.frames >= 0
        && format.frames <= static_cast<std::int64_t>(size) / 2 / format.channels
        && take->seconds == static_cast<double>(format.frames) / format.sampleRate && take->created.isValid();
    if (!isSane) {
        std::abort();
    }
    const auto channels = static_cast<std::size_t>(format.channels);
    std::vector<float> samples(channels * static_cast<std::size_t>(format.frames));
    std::vector<float*> planes;
    for (std::size_t channel = 0; channel < channels; ++channel) {
        planes.push_back(samples.data() + channel * static_cast<std::size_t>(format.frames));
    }
    if ((*reader)->read(0, planes, format.frames + 1) != format.frames) {
        std::abort();
    }
    const auto scanned = scanTake(**reader, TakeAnalysis::Options().clipGap, TakeOverview::usualSlices);
    if (!scanned || scanned->frames != format.frames) {
        std::abort();
    }
    return 0;
}
