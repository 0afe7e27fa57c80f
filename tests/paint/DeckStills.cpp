// SPDX-License-Identifier: GPL-3.0-or-later
// Paints the deck in the states that its look was designed in, to be laid beside the designs:
// vantiro_deck_stills FOLDER [RATIO]

#include "app/model/ClockWords.h"
#include "app/paint/DeckPainter.h"

#include <QDir>
#include <QGuiApplication>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

using namespace vantiro;
using namespace Qt::Literals::StringLiterals;

/// A loud moment of a made set.
struct Peak {
    int age;  ///< Values before the newest.
    double levelDB;
    int width;
};

double nextChance(std::uint32_t& state)
{
    state = state * 1'664'525U + 1'013'904'223U;
    return state / 4'294'967'296.0;
}

/// Beat, phrase and break, oldest first.
std::vector<float> madeHistory(int count, double topDB, std::uint32_t seed, const std::vector<Peak>& peaks)
{
    std::uint32_t state = seed;
    std::vector<float> history;
    for (int age = 0; age < count; ++age) {
        const double beat = std::exp(-std::fmod(age, 14.3) / 14.3 * 3.2);
        const double phrase = std::sin(age / 41.0 + seed) * 2.2 + std::sin(age / 17.0) * 1.2;
        double level = topDB - 10 * (1 - beat) + phrase * 0.8 - 2 + nextChance(state) * 2.4;
        for (const auto& peak : peaks) {
            const int distance = std::abs(age - peak.age);
            if (distance >= peak.width || (beat <= 0.42 && nextChance(state) >= 0.12)) {
                continue;
            }
            const bool clips = peak.levelDB > -1;
            const double away = double(distance) / peak.width;
            const double near =
                peak.levelDB - (1 - beat) * (clips ? 1.5 : 5.0) - away * away * 2 + nextChance(state) * 0.4;
            level = clips && away < 0.6 ? peak.levelDB : std::max(level, near);
        }
        history.push_back(static_cast<float>(std::min(0.0, level)));
    }
    std::ranges::reverse(history);
    return history;
}

struct Still {
    QString name;
    DeckState state;
    MeterLevels levels;
    double seconds = 0;  ///< On the clock.
    double turns = 0;
    double pose = 0;
    std::vector<float> history = {};
    std::optional<double> sweep = {};
    bool isHovered = false;
};

bool paint(const Still& still, const QString& folder, double ratio)
{
    constexpr QRectF plate(0, 0, 440, 366);
    QImage image((plate.size() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    DeckMotion motion = DeckMotion::posed(still.pose);
    motion.turns = still.turns;
    DeckPainter deck;
    deck.draw(painter,
        {.plate = plate,
            .geometry = DeckGeometry::fitted(plate.adjusted(7, 7, -7, -7)).snapped(ratio),
            .ratio = ratio,
            .readout = {.state = still.state,
                .levels = still.levels,
                .clock = ClockWords::time(still.seconds, ClockWords::Form::deck),
                .isHovered = still.isHovered},
            .history = still.history,
            .takeNumber = 8,
            .sweepSeconds = still.sweep,
            .pose = still.pose},
        motion);
    painter.end();
    return image.save(QDir(folder).filePath(u"deck-%1.png"_s.arg(still.name)));
}

std::vector<Still> stills()
{
    using Kind = DeckState::Kind;
    const DeckState recording{.kind = Kind::recording};
    return {
        {.name = u"ready"_s,
            .state = {.kind = Kind::ready},
            .levels = {.left = -14.2F, .right = -15.1F, .holdLeft = -9.4F, .holdRight = -10.2F},
            .turns = 0.07},
        {.name = u"recording"_s,
            .state = recording,
            .levels = {.left = -8, .right = -8.7F, .holdLeft = -6.3F, .holdRight = -6.9F},
            .seconds = 3767,
            .turns = 0.31,
            .pose = 1,
            .history = madeHistory(100, -7.5, 3, {{34, -5.8, 3}})},
        {.name = u"clipped"_s,
            .state = recording,
            .levels = {.left = -0.9F, .right = -1.6F, .holdLeft = 0, .holdRight = -0.4F, .clipped = true},
            .seconds = 3852,
            .turns = 0.62,
            .pose = 1,
            .history = madeHistory(300, -5.6, 5,
                {{4, -0.1, 9}, {31, -1.6, 5}, {88, -0.3, 6}, {120, -2.2, 8}, {171, -1.5, 6}, {236, -0.2, 5}})},
        {.name = u"listening"_s, .state = {.kind = Kind::listening}, .levels = {}, .sweep = 1.1},
        {.name = u"setup"_s, .state = {.kind = Kind::noSource}, .levels = {}},
        {.name = u"hovered"_s,
            .state = {.kind = Kind::ready},
            .levels = {.left = -4, .right = -5, .holdLeft = -2.1F, .holdRight = -2.4F},
            .isHovered = true},
        {.name = u"paused"_s,
            .state = {.kind = Kind::playing, .paused = true},
            .levels = {},
            .seconds = 36'754,
            .turns = 0.8,
            .pose = 1,
            .history = madeHistory(300, -3.5, 9, {})},
    };
}

}  // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 2 || !QDir().mkpath(arguments[1])) {
        std::fputs("usage: vantiro_deck_stills FOLDER [RATIO]\n", stderr);
        return 2;
    }
    const double ratio = arguments.size() > 2 ? std::clamp(arguments[2].toDouble(), 1.0, 4.0) : 2;
    return std::ranges::all_of(stills(), [&](const Still& still) { return paint(still, arguments[1], ratio); }) ? 0 : 1;
}
