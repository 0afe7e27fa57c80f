// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakeOverview.h"
#include "core/takes/TakeReader.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/PngFile.h"
#include "tool/ShapePicture.h"
#include "tool/ShapeText.h"
#include "tool/TakeFiles.h"
#include "tool/Terminal.h"

#include <QDir>
#include <QFileInfo>

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
        if (QFileInfo(path).isDir()) {
            return captureFailure(u"%1 is a folder, not a take."_s.arg(path));
        }
        if (const auto take = TakeFiles::finishedTake(path)) {
            auto overview = TakeOverview::load(*take);
            return overview ? Result<Shape>(Shape{*std::move(overview), take->seconds})
                            : std::unexpected(overview.error());
        }
        const auto reader = TakeReader::open(path);
        if (!reader) {
            return std::unexpected(reader.error());
        }
        const TakeReader::Format& format = (*reader)->format();
        auto overview = TakeOverview::compute(path);
        return overview
            ? Result<Shape>(Shape{*std::move(overview), static_cast<double>(format.frames) / format.sampleRate})
            : std::unexpected(overview.error());
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
    if (TakeFiles::isSame(output, path)) {
        return Terminal::misuse(u"the picture would replace the take"_s);
    }
    const auto shape = load(path);
    if (!shape) {
        return Terminal::fail(errorText(shape.error()));
    }
    if (const auto written = PngFile::write(shapePicture(shape->overview, shape->seconds, *width, *height), output);
        !written) {
        return Terminal::fail(errorText(written.error()));
    }
    Terminal::print(output);
    return Terminal::done;
}

}  // namespace vantiro
