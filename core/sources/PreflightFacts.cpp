// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/PreflightFacts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>

#include <pwd.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vantiro::PreflightFacts {

namespace {

    /// What a program's sound runs at as long as nobody has opened it.
    constexpr double usualRate = 48'000;
    constexpr std::size_t longestUserRecord = 4096;

    QString loginName()
    {
        passwd record{};
        passwd* found = nullptr;
        std::array<char, longestUserRecord> buffer{};
        ::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found);
        return found == nullptr ? QString() : QString::fromLocal8Bit(found->pw_name);
    }

    std::optional<std::int64_t> freeBytesAt(const QString& folder)
    {
        QString path = QDir::cleanPath(folder);
        while (path != QLatin1StringView("/") && !QFileInfo::exists(path)) {
            path = QFileInfo(path).path();
        }
        struct statvfs volume{};
        if (::statvfs(QFile::encodeName(path).constData(), &volume) != 0) {
            return std::nullopt;
        }
        return static_cast<std::int64_t>(volume.f_bavail) * static_cast<std::int64_t>(volume.f_frsize);
    }

}  // namespace

VolumeFacts volume(const QString& folder)
{
    VolumeFacts facts{.freeBytes = freeBytesAt(folder)};
    if (const auto mountPoint = removableMountPoint(folder, loginName());
        mountPoint && !QFileInfo::exists(*mountPoint)) {
        facts.missingVolume = QFileInfo(*mountPoint).fileName();
    }
    return facts;
}

std::optional<QString> removableMountPoint(const QString& folder, const QString& user)
{
    const QString path = QDir::cleanPath(folder);
    for (const QString& parent : {QStringLiteral("/Volumes/"), QStringLiteral("/media/%1/").arg(user),
             QStringLiteral("/run/media/%1/").arg(user)}) {
        const QString name = path.startsWith(parent) ? path.sliced(parent.size()).section(u'/', 0, 0) : QString();
        if (!name.isEmpty()) {
            return parent + name;
        }
    }
    return std::nullopt;
}

bool isConnected(AudioPlatform& audio, const SourceRef& source)
{
    return source.kind == SourceRef::Kind::device ? audio.device(source.id).has_value()
                                                  : AudioProcesses::withID(audio.processes(), source.id).has_value();
}

PreflightInput input(AudioPlatform& audio, const SourceMemory& memory, const SourceRef& source,
    const Measured& measured, const VolumeFacts& volume)
{
    PreflightInput input{.sourceName = measured.sourceName,
        .sourcePresent = isConnected(audio, source),
        .sourceIsApp = source.kind == SourceRef::Kind::app,
        .peakDB = measured.peakDB,
        .freeBytes = volume.freeBytes,
        .missingVolume = volume.missingVolume};
    if (input.sourceIsApp) {
        input.sampleRate = measured.tapRate.value_or(usualRate);
    } else if (const auto rate = audio.takeRate(source.id)) {
        input.sampleRate = rate->hertz;
        input.lastSampleRate = rate->setByOthers ? memory.lastRate(source) : std::nullopt;
    }
    input.bytesPerSecond = Preflight::bytesPerSecond(input.sampleRate);
    return input;
}

}  // namespace vantiro::PreflightFacts
