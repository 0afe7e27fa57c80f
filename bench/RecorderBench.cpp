// SPDX-License-Identifier: GPL-3.0-or-later
// vantiro_bench_recorder PROGRAM SECONDS STARTS: measures the recorder in PROGRAM and prints what it found as JSON.
#include "bench/BenchRig.h"
#include "bench/LoadMeasurement.h"
#include "bench/StartMeasurement.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    double milliseconds(std::chrono::nanoseconds span)
    {
        return std::chrono::duration<double, std::milli>(span).count();
    }

    QJsonObject json(const LoadMeasurement::Cost& cost)
    {
        return {{u"processorMilliseconds"_s, milliseconds(cost.processorTime)},
            {u"wholeLifeMilliseconds"_s, milliseconds(cost.wholeLife)},
            {u"privateBytes"_s, static_cast<double>(cost.privateBytes)}};
    }

    Result<QJsonObject> measure(const QString& recorder, std::chrono::seconds span, int count)
    {
        const auto rig = BenchRig::make();
        if (!rig) {
            return std::unexpected(rig.error());
        }
        QJsonArray starts;
        const auto measuredStarts = StartMeasurement::run(**rig, recorder, count);
        if (!measuredStarts) {
            return std::unexpected(measuredStarts.error());
        }
        for (const auto& start : *measuredStarts) {
            starts.append(QJsonObject{{u"returnedMilliseconds"_s, milliseconds(start.returned)},
                {u"firstFrameMilliseconds"_s, milliseconds(start.firstFrame)}});
        }
        QJsonObject found{{u"starts"_s, starts}};
        using enum LoadMeasurement::Order;
        using enum LoadMeasurement::Source;
        for (const auto& [name, source] : {std::pair{u"device"_s, device}, std::pair{u"program"_s, program}}) {
            QJsonArray rounds;
            for (const auto order : {recorderFirst, peerFirst}) {
                const auto round = LoadMeasurement::run(**rig, recorder, span, source, order);
                if (!round) {
                    return std::unexpected(round.error());
                }
                rounds.append(QJsonObject{{u"recorder"_s, json(round->recorder)}, {u"peer"_s, json(round->peer)}});
            }
            found.insert(name, rounds);
        }
        return found;
    }

}  // namespace

}  // namespace vantiro

int main(int argc, char* argv[])
{
    using namespace vantiro;

    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    const int seconds = words.value(2).toInt();
    const int starts = words.value(3).toInt();
    if (words.size() != 4 || seconds < 1 || starts < 1) {
        std::fputs("usage: vantiro_bench_recorder PROGRAM SECONDS STARTS\n", stderr);
        return 2;
    }
    const auto found = measure(words[1], std::chrono::seconds(seconds), starts);
    if (!found) {
        std::fprintf(stderr, "%s\n", qPrintable(errorText(found.error())));
        return 1;
    }
    std::fputs(QJsonDocument(*found).toJson().constData(), stdout);
    return 0;
}
