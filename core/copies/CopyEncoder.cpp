// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyEncoder.h"

#include "core/copies/CopyMedia.h"
#include "core/copies/CopyWords.h"
#include "core/copies/WavCopy.h"

namespace vantiro {

Result<std::unique_ptr<CopyEncoder>> CopyEncoder::open(const Plan& plan)
{
    if (plan.format == ExportFormat::wav) {
        return WavCopy::open(plan);
    }
    if (const auto openEncoder = CopyMedia::current().openEncoder) {
        return openEncoder(plan);
    }
    return CopyWords::cannotConvert(plan.format);
}

}  // namespace vantiro
