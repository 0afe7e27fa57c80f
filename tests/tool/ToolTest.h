// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeHeader.h"
#include "tests/support/Sandbox.h"

#include <QProcess>
#include <QStringList>

#include <sys/resource.h>

namespace vantiro::test {

/// The real tool, on files alone.
class ToolTest : public SandboxTest {
protected:
    struct Outcome {
        int status = -1;
        QString output;
        QString errors;
    };

    enum class Disk {
        free,
        full,
    };

    [[nodiscard]] static Outcome run(
        const QStringList& words, Disk disk = Disk::free, const QString& tool = QStringLiteral(VANTIRO_TOOL))
    {
        QProcess process;
        process.setStandardInputFile(QProcess::nullDevice());
        if (disk == Disk::full) {
            process.setChildProcessModifier([] {
                const rlimit nothing{.rlim_cur = 0, .rlim_max = 0};
                ::setrlimit(RLIMIT_FSIZE, &nothing);
            });
        }
        process.start(tool, words);
        EXPECT_TRUE(process.waitForFinished());
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }

    /// 80,000 frames whose header knows of a tenth of them.
    static QByteArray takeBytes(double sampleRate, char byte)
    {
        TakeHeader header(TakeShape{.sampleRate = sampleRate, .channels = 1});
        header.tell(8000, false);
        return QByteArray(reinterpret_cast<const char*>(header.bytes().data()), TakeHeader::size)
            + QByteArray(10 * 8000 * 3, byte);
    }
};

}  // namespace vantiro::test
