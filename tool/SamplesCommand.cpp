// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/SampleTakes.h"
#include "core/takes/Takes.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

namespace vantiro {

int samplesCommand(const QStringList& words)
{
    using namespace Qt::StringLiterals;

    const auto arguments = Arguments::parse(words, {}, {u"--json"_s}, Arguments::Operands::one);
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    TakesView view{.folder = arguments->path().value_or(QString())};
    const auto paths = SampleTakes::write(SampleTakes::standard(), view.folder, QTimeZone::systemTimeZone());
    if (!paths) {
        return Terminal::fail(errorText(paths.error()));
    }
    for (const QString& path : *paths) {
        if (auto take = Takes::describe(path)) {
            view.takes.push_back(*std::move(take));
        }
    }
    if (arguments->has(u"--json"_s)) {
        Terminal::printJson(takesJson(view));
    } else {
        Terminal::print(takesText(view));
    }
    return Terminal::done;
}

}  // namespace vantiro
