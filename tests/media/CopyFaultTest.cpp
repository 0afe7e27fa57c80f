// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyMedia.h"
#include "core/copies/TakeExporter.h"
#include "platform/media/FfmpegEncoder.h"
#include "platform/media/FfmpegTakeReader.h"
#include "tests/support/Sandbox.h"
#include "tests/support/SmallVolume.h"
#include "tests/takes/PcmBytes.h"

#include <QDir>
#include <QFile>

#include <cerrno>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;
    using Stage = CopyFailure::Stage;

    /// Copies of half a minute of noise, by the real encoders.
    class CopyFaults : public SandboxTest {
    protected:
        CopyFaults()
        {
            CopyMedia::use({.openEncoder = FfmpegEncoder::open});
            PcmLayout layout{.sampleRate = 48000, .channels = 2};
            layout.sample = PcmLayout::Sample::int24;
            const QByteArray second = PcmSamples::random(layout, 48000).bytes;
            Sandbox::writeFile(m_take, cafFile(layout, second.repeated(30)));
        }

        CopyOutcome makeCopy(ExportFormat format, const QString& folder, CopyEncoder::Progress progress = {})
        {
            m_copy = folder + u"/take."_s + fileExtension(format);
            m_folder = folder;
            // Room is taken for granted, so that the disk itself has to say no.
            return TakeExporter::exportTake(
                {.source = m_take, .destination = m_copy, .format = format, .progress = std::move(progress)},
                {.volume = [](const QString&) { return CopyRoom::Volume(); }});
        }

        /// All that lies in the folder of the last copy.
        [[nodiscard]] QStringList left() const
        {
            return QDir(m_folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
        }

        QString m_take = m_sandbox.path(u"take.caf"_s);
        QString m_copy;
        QString m_folder;
    };

}  // namespace

TEST_F(CopyFaults, LeavesWhatWasThereWhenTheDiskIsFullOrCannotBeWritten)
{
    const QString folder = m_sandbox.path(u"volume"_s);
    const auto volume = SmallVolume::mount(folder, 24);
    if (volume == nullptr) {
        GTEST_SKIP() << "Mounting a small volume is not permitted here, so a full disk is not tested.";
    }
    for (const ExportFormat format : allExportFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        ASSERT_TRUE(makeCopy(format, folder)) << "another disk than the take's, with room for it";
        EXPECT_EQ(left().size(), 1);
        Sandbox::writeFile(m_copy, "older");
        QFile ballast(folder + u"/ballast"_s);
        ASSERT_TRUE(ballast.open(QIODevice::WriteOnly) && ballast.write(QByteArray((24 << 20) - (400 << 10), 'x')) > 0);
        ballast.close();
        const auto full = makeCopy(format, folder);
        ASSERT_FALSE(full);
        EXPECT_EQ(full.error().stage, Stage::failed);
        EXPECT_TRUE(errorText(full.error().error).endsWith(u": %1"_s.arg(ENOSPC)))
            << qPrintable(errorText(full.error().error));
        EXPECT_EQ(Sandbox::readFile(m_copy), "older");
        EXPECT_EQ(left().size(), 2);
        ballast.remove();
        QFile::remove(m_copy);
    }
    Sandbox::writeFile(folder + u"/take.m4a"_s, "older");
    ASSERT_TRUE(volume->makeReadOnly());
    const auto readOnly = makeCopy(ExportFormat::aac, folder);
    ASSERT_FALSE(readOnly);
    EXPECT_EQ(std::get<SystemError>(readOnly.error().error).number, EROFS);
    EXPECT_EQ(Sandbox::readFile(m_copy), "older");
    EXPECT_EQ(left(), QStringList{u"take.m4a"_s});
}

TEST_F(CopyFaults, TellsThatATakeWasCutAndReadsOneThatWasDeletedToItsEnd)
{
    const QByteArray whole = Sandbox::readFile(m_take);
    for (const ExportFormat format : allExportFormats) {
        SCOPED_TRACE(rawValue(format).toStdString());
        const QString folder = m_sandbox.path(rawValue(format));
        ASSERT_TRUE(QDir().mkpath(folder));
        const auto cut = makeCopy(format, folder, [this](double) { QFile::resize(m_take, 1'000'000); });
        ASSERT_FALSE(cut);
        EXPECT_EQ(cut.error().stage, Stage::failed);
        EXPECT_EQ(errorText(cut.error().error), u"read error in take.caf"_s);
        EXPECT_EQ(left(), QStringList());

        Sandbox::writeFile(m_take, whole);
        ASSERT_TRUE(makeCopy(format, folder, [this](double) { QFile::remove(m_take); }));
        const auto reader = FfmpegTakeReader::open(m_copy);
        ASSERT_TRUE(reader);
        EXPECT_EQ((*reader)->format().frames, 30 * 48000);
        Sandbox::writeFile(m_take, whole);
    }
}

}  // namespace vantiro::test
