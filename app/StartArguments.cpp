// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StartArguments.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace vantiro {

namespace {

    /// The word behind the flag, if both are there.
    std::optional<QString> valueOf(const QString& flag, const QStringList& words)
    {
        const qsizetype index = words.indexOf(flag);
        return index >= 0 && index + 1 < words.size() ? std::optional(words[index + 1]) : std::nullopt;
    }

    std::expected<StartArguments, QString> readGallery(const QStringList& words)
    {
        static const QStringList scales{QStringLiteral("1"), QStringLiteral("1.5"), QStringLiteral("2")};
        StartArguments arguments{.task = StartArguments::Task::gallery};
        bool scaled = false;
        for (qsizetype index = 0; index < words.size(); ++index) {
            const QString& word = words[index];
            const QString value = words.value(index + 1);
            if (word == QStringLiteral("--grab") && !value.isEmpty()) {
                arguments.picture = value;
                ++index;
            } else if (word == QStringLiteral("--scale") && scales.contains(value)) {
                arguments.scale = value.toDouble();
                scaled = true;
                ++index;
            } else if (word != QStringLiteral("--gallery")) {
                return std::unexpected(QStringLiteral("%1 is not understood here. The gallery's arguments are "
                                                      "--grab FILE.png and --scale 1, 1.5 or 2.")
                        .arg(word));
            }
        }
        if (scaled && arguments.picture.isEmpty()) {
            return std::unexpected(QStringLiteral("--scale is for a picture and needs --grab."));
        }
        return arguments;
    }

}  // namespace

std::expected<StartArguments, QString> StartArguments::read(const QStringList& words)
{
    if (const auto folder = valueOf(QStringLiteral("--snapshot"), words)) {
        return StartArguments{.task = Task::snapshot, .folder = *folder};
    }
    if (const auto folder = valueOf(QStringLiteral("--write-sample-takes"), words)) {
        return StartArguments{.task = Task::sampleTakes, .folder = *folder};
    }
    if (words.contains(QStringLiteral("--gallery"))) {
        return readGallery(words);
    }
    // What is behind the scheme is looked at by whoever opens the link.
    StartArguments arguments;
    std::ranges::copy_if(words, std::back_inserter(arguments.links),
        [](const QString& word) { return word.startsWith(QStringLiteral("vantiro:"), Qt::CaseInsensitive); });
    return arguments;
}

}  // namespace vantiro
