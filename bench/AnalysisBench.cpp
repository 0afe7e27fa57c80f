// SPDX-License-Identifier: GPL-3.0-or-later
// vantiro_bench_analysis [MINUTES [ROUNDS]]: measures what looking into a take costs, with whole runs of the tool
// beside it that have the take in memory and nothing kept of it, beside what other people's code needs for the same,
// and prints a table. Sixty minutes and five rounds unless told otherwise; with VANTIRO_BENCH_SHORT in the environment
// six minutes and three rounds.
#include "bench/MadeTakes.h"
#include "bench/MeasuredRun.h"
#include "core/analysis/TakeAnalysis.h"
#include "core/foundation/Files.h"
#include "core/takes/Takes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

#include <sys/stat.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Clock = std::chrono::steady_clock;

    constexpr std::int64_t sampleRate = 48'000;
    constexpr int listedTakes = 1000;

    double milliseconds(std::chrono::nanoseconds span)
    {
        return std::chrono::duration<double, std::milli>(span).count();
    }

    double median(std::vector<double> values)
    {
        const auto middle = values.begin() + std::ssize(values) / 2;
        std::ranges::nth_element(values, middle);
        return *middle;
    }

    /// The most memory that this process ever held, in bytes.
    double memory()
    {
        QFile file(u"/proc/self/status"_s);
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        static const QRegularExpression line(u"VmHWM:\\s+(\\d+)"_s);
        return line.match(QString::fromLatin1(text)).captured(1).toDouble() * 1024;
    }

    int say(std::initializer_list<double> values)
    {
        for (const double value : values) {
            std::printf("%.12f ", value);
        }
        return 0;
    }

    int fail(const Error& error)
    {
        std::fprintf(stderr, "%s\n", qPrintable(errorText(error)));
        return 1;
    }

    /// The milliseconds that listing a folder takes, and those of one stat() of each of its files.
    int listFolder(const QString& folder)
    {
        std::vector<QByteArray> paths;
        std::vector<double> lists;
        std::vector<double> stats;
        for (int round = 0; round < 9; ++round) {
            const auto start = Clock::now();
            const std::vector<Take> takes = Takes::list(folder);
            const auto listed = Clock::now();
            paths.clear();
            for (const Take& take : takes) {
                paths.push_back(QFile::encodeName(take.path));
            }
            const auto before = Clock::now();
            for (const QByteArray& path : paths) {
                struct stat status = {};
                ::stat(path.constData(), &status);
            }
            stats.push_back(milliseconds(Clock::now() - before));
            lists.push_back(milliseconds(listed - start));
        }
        return paths.size() == listedTakes ? say({median(lists), median(stats)}) : 1;
    }

    /// What only a process itself can tell: how much memory it held, and how long a call took.
    int beMeasured(const QString& word, const QString& path)
    {
        if (word == u"--analyze"_s) {
            const auto found = TakeAnalysis::analyze(path, {}, TakeOverview::usualSlices, {});
            return found ? say({memory()}) : fail(found.error());
        }
        return word == u"--list"_s ? listFolder(path) : say({memory()});
    }

    /// All runs of one command.
    struct Contender {
        QString program;
        QStringList arguments;
        QStringList variables = {};
        std::vector<double> processor = {};  ///< Milliseconds.
        std::vector<double> wall = {};       ///< Milliseconds.
        std::vector<double> said = {};       ///< What it printed last; of an analysis in JSON the loudness.

        [[nodiscard]] Result<void> run()
        {
            // Nothing is kept from one run to the next.
            const QTemporaryDir support;
            const auto done =
                MeasuredRun::of(program, arguments, variables + QStringList{u"XDG_DATA_HOME="_s + support.path()});
            if (!done) {
                return std::unexpected(done.error());
            }
            processor.push_back(milliseconds(done->processor));
            wall.push_back(milliseconds(done->wall));
            said.clear();
            if (done->output.startsWith('{')) {
                const QJsonObject told = QJsonDocument::fromJson(done->output).object();
                said.push_back(told.value(u"loudness"_s).toDouble(-INFINITY));
                return {};
            }
            for (const QString& word : QString::fromLatin1(done->output).split(u' ', Qt::SkipEmptyParts)) {
                said.push_back(word.toDouble());
            }
            return {};
        }
    };

    class Table {
    public:
        Table() { std::printf("%-58s %16s %16s %8s  %s\n", "median of the rounds", "vantiro", "peer", "ratio", "aim"); }
        /// How many times less than the peer, and at least how many that should be.
        void less(const char* title, const char* unit, double ours, double peer, double aim)
        {
            print(title, unit, ours, peer, peer / ours, ">=", aim);
        }
        /// How many times as much as the peer, and at most how many that should be.
        void more(const char* title, const char* unit, double ours, double peer, double aim)
        {
            print(title, unit, ours, peer, ours / peer, "<=", aim);
        }
        void most(const char* title, const char* unit, double ours, double aim)
        {
            std::printf("%-58s %13.4g %2s %16s %8s  <= %g %s%s\n", title, ours, unit, "-", "-", aim, unit,
                ours <= aim ? "" : "  MISSED");
        }

    private:
        static void print(
            const char* title, const char* unit, double ours, double peer, double ratio, const char* sign, double aim)
        {
            const bool isMissed = *sign == '>' ? ratio < aim : ratio > aim;
            std::printf("%-58s %13.4g %2s %13.4g %2s %8.2f  %s %g%s\n", title, ours, unit, peer, unit, ratio, sign, aim,
                isMissed ? "  MISSED" : "");
        }
    };

    Result<void> prepare(const QTemporaryDir& folder, std::int64_t seconds)
    {
        QDir().mkpath(folder.filePath(u"takes"_s));
        // The folder is the takes folder of the tool, which writes what it finds there.
        QJsonObject settings;
        settings.insert(u"takesFolder"_s, folder.path());
        Result<void> done = files::replace(folder.filePath(u"config/Vantiro/settings.json"_s),
            QJsonDocument(settings).toJson(), files::Durability::passing);
        done = done ? madeTakes::write(folder.filePath(u"music.wav"_s), seconds, seconds) : done;
        done = done ? madeTakes::write(folder.filePath(u"silence.wav"_s), seconds, 16) : done;
        done = done ? madeTakes::writeSparse(folder.filePath(u"short.wav"_s), 600) : done;
        done = done ? madeTakes::writeSparse(folder.filePath(u"long.wav"_s), 4 * 3600) : done;
        return done ? madeTakes::writeMany(folder.filePath(u"takes"_s), listedTakes) : done;
    }

    Result<void> measure(std::int64_t seconds, int rounds)
    {
        const QTemporaryDir folder;
        if (const auto prepared = prepare(folder, seconds); !prepared) {
            return prepared;
        }
        const QString self = QCoreApplication::applicationFilePath();
        const QString peers = QCoreApplication::applicationDirPath() + u"/vantiro_bench_peers"_s;
        const QString music = folder.filePath(u"music.wav"_s);
        const auto once = [&](const QString& word, const QString& file) {
            return Contender{.program = self, .arguments = {word, folder.filePath(file)}};
        };
        const auto tool = [&](const QString& command, const QString& file, const QStringList& variables = {}) {
            return Contender{.program = QCoreApplication::applicationDirPath() + u"/vantiro"_s,
                .arguments = {command, folder.filePath(file), u"--json"_s},
                .variables = variables + QStringList{u"XDG_CONFIG_HOME="_s + folder.filePath(u"config"_s)}};
        };
        const QStringList baseline{u"VANTIRO_KERNEL=baseline"_s};
        std::map<std::string, Contender> all{
            {"ours", tool(u"analyze"_s, u"music.wav"_s)},
            {"baseline", tool(u"analyze"_s, u"music.wav"_s, baseline)},
            {"ebur128", {.program = peers, .arguments = {u"loudness"_s, music}}},
            {"ffmpeg",
                {.program = u"ffmpeg"_s,
                    .arguments = {u"-nostdin"_s, u"-nostats"_s, u"-i"_s, music, u"-af"_s, u"ebur128"_s, u"-f"_s,
                        u"null"_s, u"-"_s}}},
            {"shape", tool(u"shape"_s, u"music.wav"_s)},
            {"peaks", {.program = peers, .arguments = {u"peaks"_s, music}}},
            {"silence", tool(u"analyze"_s, u"silence.wav"_s)},
            {"silenceBaseline", tool(u"analyze"_s, u"silence.wav"_s, baseline)},
            {"list", once(u"--list"_s, u"takes"_s)},
        };
        for (int round = 0; round < rounds; ++round) {
            for (auto& [name, contender] : all) {
                if (const auto done = contender.run(); !done) {
                    return done;
                }
            }
        }
        std::map<std::string, Contender> memories{{"idle", once(u"--idle"_s, u"-"_s)},
            {"short", once(u"--analyze"_s, u"short.wav"_s)}, {"long", once(u"--analyze"_s, u"long.wav"_s)}};
        for (auto& [name, contender] : memories) {
            if (const auto done = contender.run(); !done) {
                return done;
            }
        }

        const auto processor = [&](const char* name) {
            return median(all.at(name).processor) * 1e6 / static_cast<double>(seconds * sampleRate);
        };
        const auto wall = [&](const char* name) {
            return median(all.at(name).wall) * 1e6 / static_cast<double>(seconds * sampleRate);
        };
        std::printf("A take of %lld minutes; ns are for one stereo frame of the whole process.\n\n",
            static_cast<long long>(seconds / 60));
        Table table;
        const char* const ns = "ns";
        table.less("analysis, processor, beside libebur128", ns, processor("ours"), processor("ebur128"), 7.5);
        table.less("  the same, baseline kernel", ns, processor("baseline"), processor("ebur128"), 4);
        table.less("analysis, wall, beside libebur128", ns, wall("ours"), wall("ebur128"), 14);
        table.less("  the same, baseline kernel", ns, wall("baseline"), wall("ebur128"), 7.5);
        table.less("analysis, processor, beside ffmpeg -af ebur128", ns, processor("ours"), processor("ffmpeg"), 12);
        table.less("  the same, baseline kernel", ns, processor("baseline"), processor("ffmpeg"), 6.5);
        table.less("analysis, wall, beside ffmpeg -af ebur128", ns, wall("ours"), wall("ffmpeg"), 24);
        table.less("  the same, baseline kernel", ns, wall("baseline"), wall("ffmpeg"), 12);
        table.less("shape, processor, beside a libsndfile peak scan", ns, processor("shape"), processor("peaks"), 4);
        table.more("silence after sound, processor, beside music", ns, processor("silence"), processor("ours"), 1.2);
        table.more("  the same, baseline kernel", ns, processor("silenceBaseline"), processor("baseline"), 1.2);
        const double idle = memories.at("idle").said.at(0);
        constexpr double megabyte = 1e6;
        table.most("analysis of 10 minutes, memory over an empty process", "MB",
            (memories.at("short").said.at(0) - idle) / megabyte, 12);
        table.most("analysis of 4 hours, memory over an empty process", "MB",
            (memories.at("long").said.at(0) - idle) / megabyte, 58);
        table.most("listing 1000 takes", "ms", all.at("list").said.at(0), 10);
        std::printf("\none stat of each of the 1000 takes: %.2f ms\n", all.at("list").said.at(1));
        const double ours = all.at("ours").said.at(0);
        std::printf("loudness: %.9f LUFS, less libebur128 %.2e, less our baseline kernel %.2e (aim 1e-6)\n", ours,
            ours - all.at("ebur128").said.at(0), ours - all.at("baseline").said.at(0));
        return {};
    }

}  // namespace

}  // namespace vantiro

int main(int argc, char* argv[])
{
    using namespace vantiro;

    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() == 3 && words[1].startsWith(u"--"_s)) {
        return beMeasured(words[1], words[2]);
    }
    const bool isShort = qEnvironmentVariableIsSet("VANTIRO_BENCH_SHORT");
    const int minutes = words.size() > 1 ? words[1].toInt() : isShort ? 6 : 60;
    const int rounds = words.size() > 2 ? words[2].toInt() : isShort ? 3 : 5;
    if (words.size() > 3 || minutes < 1 || rounds < 1) {
        std::fputs("usage: vantiro_bench_analysis [MINUTES [ROUNDS]]\n", stderr);
        return 2;
    }
    const auto done = measure(60 * std::int64_t{minutes}, rounds);
    return done ? 0 : fail(done.error());
}
