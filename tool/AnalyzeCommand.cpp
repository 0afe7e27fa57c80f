// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/ReviewRequest.h"
#include "tool/AnalysisText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/TakeFiles.h"
#include "tool/Terminal.h"

#include <QFileInfo>

namespace vantiro {

int analyzeCommand(const QStringList& words)
{
    using namespace Qt::StringLiterals;

    /// As many as somebody can judge in one sitting.
    constexpr std::int64_t mostReviewed = 24;

    const auto arguments = Arguments::parse(words, {}, {u"--json"_s, u"--review"_s}, Arguments::Operands::one);
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    if (arguments->has(u"--json"_s) && arguments->has(u"--review"_s)) {
        return Terminal::misuse(u"give one of --json and --review"_s);
    }
    SignalWatch signals;
    const QString path = arguments->path().value_or(QString());
    const auto analysis = TakeFiles::analyse(path, u"Analysing"_s, signals);
    if (!analysis) {
        return Terminal::fail(errorText(analysis.error()));
    }
    if (arguments->has(u"--json"_s)) {
        Terminal::printJson(analysis->toJsonText());
    } else if (arguments->has(u"--review"_s)) {
        Terminal::printJson(ReviewRequest(*analysis, mostReviewed).json());
    } else {
        Terminal::print(analysisText(QFileInfo(path).fileName(), *analysis));
    }
    return Terminal::done;
}

}  // namespace vantiro
