// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakeOverview.h"
#include "core/takes/Takes.h"
#include "platform/media/MediaLoader.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/ShapePicture.h"
#include "tool/ShapeText.h"
#include "tool/TakeFiles.h"
#include "tool/Terminal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr int usualWidth = 1200;
    constexpr int usualHeight = 240;

    struct Shape {
        TakeOverview overview;
        double seconds = 0;
    };

    Result<Shape> load(const QString& path)
    {
        if (const auto take = Takes::describe(path)) {
            auto overview = TakeFiles::isKept(*take) ? TakeOverview::load(*take) : TakeOverview::compute(path);
            return overview ? Result<Shape>(Shape{*std::move(overview), take->seconds})
                            : std::unexpected(overview.error());
        }
        // How long other files are is certain only once they are decoded to their end.
        SignalWatch signals;
        auto both = TakeFiles::analyseAnew(path, u"Reading"_s, signals);
        return both ? Result<Shape>(Shape{std::move(both->overview), both->analysis.seconds})
                    : std::unexpected(both.error());
    }

    /// Nothing stands at the path that somebody could miss: no file, an empty one, or a picture.
    bool isFree(const QString& path)
    {
        if (!QFileInfo::exists(path)) {
            return true;
        }
        static constexpr QByteArrayView signature("\x89PNG\r\n\x1A\n");
        QFile file(path);
        if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
            return false;
        }
        const QByteArray start = file.read(signature.size());
        return file.size() == 0 || start == signature;
    }

    /// Puts the picture at a path, at once or not at all.
    Result<void> writePicture(const Picture& picture, const QString& path)
    {
        const auto bytes = MediaLoader::encodePng(picture.width, picture.height, picture.pixels);
        if (!bytes) {
            return std::unexpected(bytes.error());
        }
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() || !file.commit()) {
            return captureFailure(u"%1 cannot be written: %2"_s.arg(path, file.errorString()));
        }
        return {};
    }

    int print(const Arguments& arguments, const QString& path)
    {
        const auto shape = load(path);
        if (!shape) {
            return Terminal::fail(errorText(shape.error()));
        }
        if (arguments.has(u"--json"_s)) {
            Terminal::printJson(shape->overview.toJsonText());
            return Terminal::done;
        }
        Terminal::print(
            u"%1  %2"_s.arg(Terminal::safeName(QFileInfo(path).fileName()), Terminal::clockText(shape->seconds)));
        Terminal::print(shapeText(shape->overview, shape->seconds, Terminal::columns(),
            Terminal::hasColours() ? ClipMarks::colour : ClipMarks::row));
        return Terminal::done;
    }

}  // namespace

int shapeCommand(const QStringList& words)
{
    const auto arguments =
        Arguments::parse(words, {u"--png"_s, u"--width"_s, u"--height"_s}, {u"--json"_s}, Arguments::Operands::one);
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const QString path = arguments->path().value_or(QString());
    const auto width = arguments->number(u"--width"_s, usualWidth, leastPictureWidth, mostPictureSide);
    const auto height = arguments->number(u"--height"_s, usualHeight, leastPictureHeight, mostPictureSide);
    for (const auto& side : {width, height}) {
        if (!side) {
            return Terminal::misuse(errorText(side.error()));
        }
    }
    const auto png = arguments->value(u"--png"_s);
    if (!png) {
        return arguments->has(u"--width"_s) || arguments->has(u"--height"_s)
            ? Terminal::misuse(u"--width and --height are those of --png"_s)
            : print(*arguments, path);
    }
    if (arguments->has(u"--json"_s)) {
        return Terminal::misuse(u"give one of --json and --png"_s);
    }
    const QString output = QDir::cleanPath(QDir::current().absoluteFilePath(*png));
    if (!isFree(output)) {
        return Terminal::misuse(u"%1 is there already, and it is no picture in PNG"_s.arg(output));
    }
    const auto shape = load(path);
    if (!shape) {
        return Terminal::fail(errorText(shape.error()));
    }
    if (const auto written = writePicture(shapePicture(shape->overview, shape->seconds, *width, *height), output);
        !written) {
        return Terminal::fail(errorText(written.error()));
    }
    Terminal::print(output);
    return Terminal::done;
}

}  // namespace vantiro
