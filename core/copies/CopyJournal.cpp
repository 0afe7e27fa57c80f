// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyJournal.h"

#include "core/copies/SharedRecords.h"
#include "core/foundation/Log.h"
#include "core/recorder/VantiroPaths.h"
#include "core/sources/PreflightFacts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QUuid>

#include <cerrno>
#include <functional>
#include <optional>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace vantiro::CopyJournal {

namespace {

    using namespace Qt::StringLiterals;

    constexpr auto folderKey = "folder"_L1;
    constexpr auto fileKey = "file"_L1;

    enum class Kind {
        folder,
        file,
    };

    bool isUuid(QStringView text)
    {
        constexpr qsizetype plainLength = 36;
        return text.size() == plainLength && !QUuid::fromString(text).isNull();
    }

    /// What a path with such a name leads to, if it is one of ours.
    std::optional<Kind> kindOf(const QString& path)
    {
        const QFileInfo info(path);
        const QString name = info.fileName();
        if (!info.isAbsolute()) {
            return std::nullopt;
        }
        if (name.startsWith(folderPrefix)) {
            return Kind::folder;
        }
        const qsizetype ending = name.lastIndexOf(u'.');
        for (const QLatin1StringView prefix : {taggingPrefix, stagingPrefix}) {
            const bool isEnding =
                name.mid(ending) == ".m4a"_L1 || (name.mid(ending) == ".part"_L1 && prefix == stagingPrefix);
            if (isEnding && name.startsWith(prefix)
                && isUuid(QStringView(name).sliced(prefix.size(), ending - prefix.size()))) {
                return Kind::file;
            }
        }
        return std::nullopt;
    }

    QString pathIn(const QJsonObject& record)
    {
        return record.value(record.contains(fileKey) ? fileKey : folderKey).toString();
    }

    void change(const std::function<void(std::vector<QJsonObject>&)>& edit)
    {
        if (const auto changed = SharedRecords::change(VantiroPaths::exportsFile(), edit); !changed) {
            logLine(QStringLiteral("The list of unfinished copies: %1").arg(errorText(changed.error())));
        }
    }

}  // namespace

void note(const QString& path)
{
    const auto key = kindOf(path) == Kind::file ? fileKey : folderKey;
    change(
        [&](std::vector<QJsonObject>& records) { records.push_back(SharedRecords::ours(QJsonObject{{key, path}})); });
}

void strike(const QString& path)
{
    change([&](std::vector<QJsonObject>& records) {
        std::erase_if(records, [&](const QJsonObject& record) { return pathIn(record) == path; });
    });
}

bool remove(const QString& path)
{
    const auto kind = kindOf(path);
    if (!kind) {
        return false;
    }
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (::lstat(name.constData(), &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR;
    }
    if (status.st_uid != ::geteuid()) {
        return false;
    }
    return *kind == Kind::file ? S_ISREG(status.st_mode) && ::unlink(name.constData()) == 0
                               : S_ISDIR(status.st_mode) && QDir(path).removeRecursively();
}

void sweep()
{
    // Looked at under the lock, removed without it: a disk may be slow, and names are never used again.
    QStringList abandoned;
    change([&](std::vector<QJsonObject>& records) {
        for (const QJsonObject& record : records) {
            if (SharedRecords::isAbandoned(record)) {
                abandoned.push_back(pathIn(record));
            }
        }
    });
    abandoned.removeIf([](const QString& path) {
        return kindOf(path) && (PreflightFacts::volume(path).missingVolume || !remove(path));
    });
    if (!abandoned.isEmpty()) {
        change([&](std::vector<QJsonObject>& records) {
            std::erase_if(records, [&](const QJsonObject& record) { return abandoned.contains(pathIn(record)); });
        });
    }
}

}  // namespace vantiro::CopyJournal
