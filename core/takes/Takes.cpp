// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/Takes.h"

#include "core/takes/PcmFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <cmath>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace vantiro::Takes {

namespace {

    /// A folder of so many files is read by two threads.
    constexpr std::size_t worthAThread = 100;

    /// The moment in "mix-2026-09-19_21-04-33", whatever a user or a second take of that name has put behind it.
    std::optional<QDateTime> momentInName(QStringView name, const QTimeZone& zone)
    {
        constexpr QStringView pattern = u"mix-0000-00-00_00-00-00";
        if (name.size() < pattern.size() || (name.size() > pattern.size() && name[pattern.size()].isDigit())) {
            return std::nullopt;
        }
        std::array<int, 7> numbers{};
        std::size_t number = 0;
        for (qsizetype index = 0; index < pattern.size(); ++index) {
            const char16_t letter = name[index].unicode();
            if (pattern[index] != u'0') {
                if (letter != pattern[index]) {
                    return std::nullopt;
                }
                number += pattern[index].isLetter() ? 0U : 1U;
                continue;
            }
            if (letter < u'0' || letter > u'9') {
                return std::nullopt;
            }
            numbers[number] = 10 * numbers[number] + (letter - u'0');
        }
        const QDate date(numbers[1], numbers[2], numbers[3]);
        const QTime time(numbers[4], numbers[5], numbers[6]);
        const QDateTime moment(date, time, zone);
        return date.isValid() && time.isValid() && moment.isValid() ? std::optional(moment.toUTC()) : std::nullopt;
    }

    QDateTime utcMoment(std::int64_t seconds, std::int64_t nanoseconds)
    {
        return QDateTime::fromMSecsSinceEpoch(seconds * 1000 + nanoseconds / 1'000'000, Qt::UTC);
    }

    /// When the file was last written, less its length. Nothing where a volume keeps no times, or where that would be
    /// before there were any.
    std::optional<QDateTime> momentBeforeEnd(const struct stat& status, double seconds)
    {
        if (status.st_mtim.tv_sec <= 0 || seconds >= static_cast<double>(status.st_mtim.tv_sec)) {
            return std::nullopt;
        }
        return utcMoment(status.st_mtim.tv_sec, status.st_mtim.tv_nsec).addMSecs(-std::llround(seconds * 1000));
    }

    std::optional<QDateTime> birthOf(int descriptor)
    {
        struct statx status = {};
        if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_BTIME, &status) != 0 || (status.stx_mask & STATX_BTIME) == 0) {
            return std::nullopt;
        }
        return utcMoment(status.stx_btime.tv_sec, status.stx_btime.tv_nsec);
    }

    QDateTime createdOf(const PcmFile& file, QStringView name, const QTimeZone& zone)
    {
        if (const auto moment = momentInName(name, zone)) {
            return *moment;
        }
        if (const auto moment = momentBeforeEnd(file.status, file.layout->seconds())) {
            return *moment;
        }
        return birthOf(file.descriptor.get()).value_or(QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC));
    }

    std::optional<Take> takeIn(const Result<PcmFile>& file, const QString& path, const QTimeZone& zone)
    {
        if (!file || !file->layout) {
            return std::nullopt;
        }
        const PcmLayout& layout = *file->layout;
        return Take{.path = path,
            .created = createdOf(*file, QStringView(path).mid(path.lastIndexOf(u'/') + 1), zone),
            .bytes = file->status.st_size,
            .seconds = layout.seconds(),
            .sampleRate = layout.sampleRate,
            .channels = layout.channels};
    }

    QString absolute(const QString& path)
    {
        return QDir::cleanPath(QDir::current().absoluteFilePath(path));
    }

}  // namespace

std::vector<Take> list(const QString& folder, const std::optional<QString>& excluding)
{
    // Paths that differ in their spelling or lead through links still name one file.
    struct stat excluded = {};
    const bool hasExcluded = excluding && ::stat(QFile::encodeName(*excluding).constData(), &excluded) == 0;

    // Qt::LocalTime would look at the system's settings twice a file.
    const QTimeZone zone = QTimeZone::systemTimeZone();
    const QString parent = absolute(folder);
    // Filters match extensions in any case.
    const QStringList names = QDir(parent).entryList(
        {QStringLiteral("*.caf"), QStringLiteral("*.wav")}, QDir::Files | QDir::Hidden, QDir::Name);
    std::vector<std::optional<Take>> found(static_cast<std::size_t>(names.size()));
    const auto look = [&](std::size_t from, std::size_t to) {
        for (std::size_t index = from; index < to; ++index) {
            const QString path = parent + u'/' + names[static_cast<qsizetype>(index)];
            const Result<PcmFile> file = PcmFile::open(path);
            if (!file || !hasExcluded || file->status.st_ino != excluded.st_ino
                || file->status.st_dev != excluded.st_dev) {
                found[index] = takeIn(file, path, zone);
            }
        }
    };
    {
        // The time goes into waiting for the system, file by file.
        const std::size_t half = found.size() < worthAThread ? 0 : found.size() / 2;
        const std::jthread helper(look, std::size_t{0}, half);
        look(half, found.size());
    }
    std::vector<Take> takes;
    for (std::optional<Take>& take : found) {
        if (take) {
            takes.push_back(std::move(*take));
        }
    }
    std::ranges::stable_sort(takes, std::ranges::greater(), &Take::created);
    return takes;
}

std::optional<Take> describe(const QString& path)
{
    // What is opened is what the take is called, whatever links lead through the path.
    const QString whole = absolute(path);
    return takeIn(PcmFile::open(whole), whole, QTimeZone::systemTimeZone());
}

}  // namespace vantiro::Takes
