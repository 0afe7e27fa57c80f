// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakesFolder.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/DesktopPlatform.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Listening.h"
#include "tool/SignalWatch.h"
#include "tool/Terminal.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Severity = PreflightFinding::Severity;

    struct Checked {
        std::optional<SourceRef> source = std::nullopt;
        QString name = {};
        std::vector<PreflightFinding> findings = {};
    };

    Checked nothingToCheck(const FoundSources& found)
    {
        return {.findings = Preflight::noSource(SourceRanker::deviceNames(found.sources))};
    }

    /// What is known of the source after all were listened to, and what only a closer look at it tells.
    Result<PreflightFacts::Measured> measured(
        const FoundSources& found, AudioPlatform& audio, SignalWatch& signals, const SourceRef& source)
    {
        const auto ranked = std::ranges::find_if(
            found.sources, [&source](const RankedSource& candidate) { return candidate.observation.ref == source; });
        if (ranked == found.sources.end() || source.kind == SourceRef::Kind::app) {
            return Listening::measure(audio, signals, source);
        }
        return PreflightFacts::Measured{.sourceName = ranked->observation.name, .peakDB = ranked->observation.peakDB};
    }

    Result<Checked> check(std::optional<SourceRef> source, AudioPlatform& audio, SignalWatch& signals)
    {
        FoundSources found;
        if (!source) {
            auto heard = Listening::find(audio, signals);
            if (!heard) {
                return std::unexpected(heard.error());
            }
            found = *std::move(heard);
            source = found.pick();
            if (!source) {
                return nothingToCheck(found);
            }
        }
        const auto measure = measured(found, audio, signals, *source);
        if (!measure) {
            return std::unexpected(measure.error());
        }
        const PreflightInput input = PreflightFacts::input(audio, SourceMemory::load(VantiroPaths::sourcesFile()),
            *source, *measure, PreflightFacts::volume(TakesFolder::current()));
        return Checked{.source = source, .name = input.sourceName, .findings = Preflight::run(input)};
    }

    QString severityWord(Severity severity)
    {
        switch (severity) {
        case Severity::ok:
            return u"ok"_s;
        case Severity::warning:
            return u"warning"_s;
        case Severity::blocker:
            break;
        }
        return u"blocker"_s;
    }

    QString mark(Severity severity)
    {
        return severity == Severity::ok ? u"✓"_s : severity == Severity::warning ? u"!"_s : u"✗"_s;
    }

    QByteArray asJson(const Checked& checked)
    {
        QJsonArray findings;
        for (const PreflightFinding& finding : checked.findings) {
            findings.append(QJsonObject{{u"id"_s, finding.id()}, {u"severity"_s, severityWord(finding.severity)},
                {u"title"_s, finding.title}, {u"advice"_s, finding.advice}});
        }
        return QJsonDocument(
            QJsonObject{
                {u"source"_s, checked.source ? QJsonValue(checked.source->descriptor()) : QJsonValue(QJsonValue::Null)},
                {u"name"_s, checked.name}, {u"canRecord"_s, Preflight::canRecord(checked.findings)},
                {u"findings"_s, findings}})
            .toJson();
    }

    void show(const Checked& checked)
    {
        for (const PreflightFinding& finding : checked.findings) {
            Terminal::print(u"%1 %2"_s.arg(mark(finding.severity), finding.title));
            if (!finding.advice.isEmpty()) {
                Terminal::printParagraph(finding.advice, 4);
            }
        }
    }

}  // namespace

int checkCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {u"--device"_s, u"--app"_s}, {u"--json"_s});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const auto source = arguments->source();
    if (!source) {
        return Terminal::misuse(errorText(source.error()));
    }
    SignalWatch signals;
    const Platform platform = makeDesktopPlatform();
    const auto checked = check(*source, *platform.audio, signals);
    if (!checked) {
        return Terminal::fail(errorText(checked.error()));
    }
    if (arguments->has(u"--json"_s)) {
        Terminal::printJson(asJson(*checked));
    } else {
        show(*checked);
    }
    return Preflight::canRecord(checked->findings) ? Terminal::done : Terminal::failed;
}

}  // namespace vantiro
