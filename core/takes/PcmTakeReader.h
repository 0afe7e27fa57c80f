// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/FileDescriptor.h"
#include "core/takes/PcmFile.h"
#include "core/takes/TakeReader.h"

namespace vantiro {

/// Linear PCM as it lies in a file. It is read, never mapped: a stick that is pulled out makes a failure and no signal.
class PcmTakeReader final : public TakeReader {
public:
    /// `path` is what failures name.
    PcmTakeReader(FileDescriptor file, const PcmLayout& layout, QString path);

    [[nodiscard]] const Format& format() const override { return m_format; }
    /// Any thread, several at once.
    [[nodiscard]] Result<std::int64_t> read(
        std::int64_t first, std::span<float* const> planes, std::int64_t frames) override;
    [[nodiscard]] bool isParallel() const override { return true; }

private:
    FileDescriptor m_file;
    PcmLayout m_layout;
    Format m_format;
    QString m_path;
};

}  // namespace vantiro
