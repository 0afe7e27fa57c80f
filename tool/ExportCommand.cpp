// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyJournal.h"
#include "core/copies/MusicInbox.h"
#include "core/copies/TakeCopies.h"
#include "core/copies/TakeTagging.h"
#include "core/foundation/Files.h"
#include "core/foundation/Json.h"
#include "core/foundation/ThreadPriority.h"
#include "core/recorder/TakesFolder.h"
#include "core/recorder/VantiroPaths.h"
#include "core/takes/Takes.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/ProgressBar.h"
#include "tool/TakeFiles.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    enum class Existing {
        refuse,
        replace,
    };

    struct Wanted {
        QString take;
        std::optional<ExportFormat> format = std::nullopt;  ///< Of the copy that stays; absent if there is none.
        std::optional<QString> out = std::nullopt;          ///< Absolute.
        Existing existing = Existing::refuse;
        bool toMusic = false;
        std::optional<QString> inbox = std::nullopt;  ///< Absolute.
        bool asJson = false;
    };

    /// What has come of it.
    struct Made {
        std::optional<QString> copy = std::nullopt;  ///< Its path.
        std::optional<QString> addedTo = std::nullopt;
    };

    std::optional<QString> pathOption(const Arguments& arguments, const QString& name)
    {
        const auto value = arguments.value(name);
        return value ? std::optional(QDir::current().absoluteFilePath(*value)) : std::nullopt;
    }

    /// What the name of the copy's file says that it is; nothing if there is no such name, or it says nothing.
    std::optional<QString> ending(const Wanted& wanted)
    {
        if (!wanted.out || QFileInfo(*wanted.out).isDir()) {
            return std::nullopt;
        }
        const QString found = QFileInfo(*wanted.out).suffix().toLower();
        const auto has = [&found](ExportFormat format) { return fileExtension(format) == found; };
        return std::ranges::any_of(allExportFormats, has) ? std::optional(found) : std::nullopt;
    }

    /// The format that was asked for in either way; nothing if none was.
    Result<std::optional<ExportFormat>> format(const Wanted& wanted, const std::optional<QString>& word)
    {
        const auto named = word ? exportFormat(*word) : std::nullopt;
        if (word && !named) {
            return captureFailure(u"--format takes wav, flac, alac or aac"_s);
        }
        const auto end = ending(wanted);
        if (!end) {
            return named;
        }
        if (named) {
            return fileExtension(*named) == *end
                ? Result<std::optional<ExportFormat>>(named)
                : captureFailure(u"--format %1 makes a file that ends in .%2, but --out ends in .%3"_s.arg(
                      *word, fileExtension(*named), *end));
        }
        if (*end == fileExtension(ExportFormat::aac)) {
            return captureFailure(u"a file that ends in .%1 is of two kinds: give --format alac or aac"_s.arg(*end));
        }
        return exportFormat(*end);
    }

    Result<Wanted> parse(const QStringList& words)
    {
        const auto arguments = Arguments::parse(words, {u"--format"_s, u"--out"_s, u"--inbox"_s},
            {u"--force"_s, u"--to-music"_s, u"--json"_s}, Arguments::Operands::one);
        if (!arguments) {
            return std::unexpected(arguments.error());
        }
        Wanted wanted{.take = arguments->path().value_or(QString()),
            .out = pathOption(*arguments, u"--out"_s),
            .existing = arguments->has(u"--force"_s) ? Existing::replace : Existing::refuse,
            .toMusic = arguments->has(u"--to-music"_s),
            .inbox = pathOption(*arguments, u"--inbox"_s),
            .asJson = arguments->has(u"--json"_s)};
        const auto found = format(wanted, arguments->value(u"--format"_s));
        if (!found) {
            return std::unexpected(found.error());
        }
        wanted.format = *found;
        if (!wanted.format && !wanted.toMusic) {
            return captureFailure(u"tell what to make: --format wav, flac, alac or aac, or --to-music, or both"_s);
        }
        if (!wanted.format && (wanted.out || wanted.existing == Existing::replace)) {
            return captureFailure(u"--out and --force are about a copy: give --format, too"_s);
        }
        if (wanted.inbox && !wanted.toMusic) {
            return captureFailure(u"--inbox is that of --to-music"_s);
        }
        return wanted;
    }

    Result<void> checkTake(const QString& path)
    {
        const QFileInfo info(path);
        if (!info.exists()) {
            return captureFailure(u"There is no file %1."_s.arg(path));
        }
        return info.isDir() ? captureFailure(u"%1 is a folder, not a take."_s.arg(path)) : Result<void>();
    }

    Result<std::optional<QString>> findInbox(const Wanted& wanted, const SettingsStore& settings)
    {
        if (!wanted.toMusic) {
            return std::nullopt;
        }
        if (wanted.inbox) {
            auto named = TakeFiles::folder(wanted.inbox);
            if (named) {
                named = MusicInbox::inboxFor(*named);
            }
            return named ? Result<std::optional<QString>>(*std::move(named)) : std::unexpected(named.error());
        }
        auto inbox = MusicInbox::locateInbox(MusicInbox::chosen(settings));
        return inbox ? Result<std::optional<QString>>(std::move(inbox))
                     : captureFailure(u"no folder of a music library is known; name it with --inbox FOLDER"_s);
    }

    /// Where the copy goes.
    Result<QString> destination(const Wanted& wanted, const SettingsStore& settings)
    {
        const QString name = TakeExporter::suggestedName(wanted.take, *wanted.format);
        QString folder = QFileInfo(wanted.take).path();
        QString path = QDir(folder).filePath(name);
        if (wanted.out) {
            // What ends in a slash has no name, and names a folder.
            path = QFileInfo(*wanted.out).isDir() ? QDir(*wanted.out).filePath(name) : *wanted.out;
            folder = QFileInfo(path).path();
            if (auto there = TakeFiles::folder(folder); !there) {
                return there;
            }
        } else if (files::isSame(folder, TakesFolder::in(settings))) {
            folder = TakeCopies::folder(folder);
            path = QDir(folder).filePath(name);
        }
        path = QDir::cleanPath(path);
        const QFileInfo info(path);
        // That it is the take itself is worth words of its own, which the exporter has.
        if (info.exists() && !files::isSame(wanted.take, path)) {
            if (!info.isFile()) {
                return captureFailure(u"%1 is there already, and it is no file"_s.arg(path));
            }
            if (wanted.existing == Existing::refuse) {
                return captureFailure(u"%1 is there already; give --force to replace it"_s.arg(path));
            }
        }
        return path;
    }

    TakeTags tagsOf(const QString& path, const SettingsStore& settings)
    {
        const auto take = Takes::describe(path);
        return TakeCopies::tags(take ? take->created : QFileInfo(path).lastModified(),
            settings.value(TakeTagging::djNameKey).toString(), QTimeZone::systemTimeZone());
    }

    /// The folder of copies comes with the first.
    CopyOutcome makeCopy(const Wanted& wanted, const QString& path, const TakeTags& tags, SignalWatch& signals)
    {
        const QString folder = QFileInfo(path).path();
        const bool isThere = QFileInfo::exists(folder);
        if (auto there = files::makeFolder(folder); !there) {
            return std::unexpected(CopyFailure{.error = std::move(there.error())});
        }
        ProgressBar bar(u"Copying"_s);
        auto made = TakeExporter::exportTake({.source = wanted.take,
            .destination = path,
            .format = *wanted.format,
            .tags = tags,
            .progress = [&bar](double part) { bar.advance(part); },
            .cancelled = [&signals] { return signals.stopRequested(); }});
        if (!made && !isThere) {
            QDir().rmdir(folder);
        }
        return made;
    }

    CopyOutcome handOver(const Wanted& wanted, const std::optional<QString>& copy, const QString& inbox,
        const TakeTags& tags, SignalWatch& signals)
    {
        const bool isForMusic = wanted.format && TakeCopies::servesMusic(*wanted.format, wanted.take);
        ProgressBar bar(u"Adding"_s);
        return TakeCopies::addToMusic({.take = wanted.take,
            .copies = TakeCopies::folder(QFileInfo(wanted.take).path()),
            .tags = tags,
            .inbox = inbox,
            .copy = isForMusic ? copy : std::nullopt,
            .progress = [&bar](double part) { bar.advance(part); },
            .cancelled = [&signals] { return signals.stopRequested(); }});
    }

    /// All that was asked for. What came before a failure stays in `made`.
    Result<void> run(const Wanted& wanted, SignalWatch& signals, Made& made)
    {
        if (auto checked = checkTake(wanted.take); !checked) {
            return checked;
        }
        const SettingsStore settings(VantiroPaths::settingsFile(), {}, SettingsStore::BrokenFile::leave);
        // Nobody should wait for a copy that then cannot be handed over.
        const auto inbox = findInbox(wanted, settings);
        if (!inbox) {
            return std::unexpected(inbox.error());
        }
        const TakeTags tags = tagsOf(wanted.take, settings);
        if (wanted.format) {
            const auto path = destination(wanted, settings);
            if (!path) {
                return std::unexpected(path.error());
            }
            if (const auto copied = makeCopy(wanted, *path, tags, signals); !copied) {
                return std::unexpected(copied.error().error);
            }
            made.copy = *path;
        }
        if (*inbox) {
            if (const auto added = handOver(wanted, made.copy, **inbox, tags, signals); !added) {
                return std::unexpected(added.error().error);
            }
            made.addedTo = *inbox;
        }
        return {};
    }

    /// Nothing if the file cannot be read.
    std::optional<double> secondsOf(const QString& path)
    {
        if (const auto take = Takes::describe(path)) {
            return take->seconds;
        }
        const auto reader = TakeReader::open(path);
        return reader ? std::optional(static_cast<double>((*reader)->format().frames) / (*reader)->format().sampleRate)
                      : std::nullopt;
    }

    void print(const Wanted& wanted, const Made& made)
    {
        if (made.copy) {
            Terminal::print(*made.copy);
            QStringList facts{label(*wanted.format)};
            if (const auto seconds = secondsOf(*made.copy)) {
                facts << Terminal::clockText(*seconds);
            }
            facts << sizeText(QFileInfo(*made.copy).size());
            Terminal::print(facts.join(u", "_s));
        }
        if (made.addedTo) {
            Terminal::print(u"Handed to the music library, in %1"_s.arg(*made.addedTo));
        }
    }

    void printAsJson(const Wanted& wanted, const Made& made)
    {
        const auto seconds = secondsOf(made.copy.value_or(wanted.take));
        const auto ofCopy = [&made](const QJsonValue& value) { return made.copy ? value : QJsonValue(); };
        const QJsonObject object{{u"path"_s, ofCopy(made.copy.value_or(QString()))},
            {u"format"_s, ofCopy(wanted.format ? rawValue(*wanted.format) : QString())},
            {u"bytes"_s, ofCopy(QFileInfo(made.copy.value_or(QString())).size())},
            {u"seconds"_s, seconds ? QJsonValue(json::number(*seconds)) : QJsonValue()},
            {u"addedToMusic"_s, made.addedTo.has_value()}};
        Terminal::printJson(QJsonDocument(object).toJson());
    }

}  // namespace

int exportCommand(const QStringList& words)
{
    const auto wanted = parse(words);
    if (!wanted) {
        return Terminal::misuse(errorText(wanted.error()));
    }
    SignalWatch signals;
    // A take that is being recorded goes before.
    standBackForGood();
    Made made;
    const auto result = run(*wanted, signals, made);
    if (result || made.copy) {
        wanted->asJson ? printAsJson(*wanted, made) : print(*wanted, made);
    }
    const int status = result
        ? Terminal::done
        : Terminal::fail(made.copy
                  ? u"The copy is made, but it did not reach the music library: %1"_s.arg(errorText(result.error()))
                  : errorText(result.error()));
    // It may wait for a disk that hangs, so nothing else waits for it.
    CopyJournal::sweep();
    return status;
}

}  // namespace vantiro
