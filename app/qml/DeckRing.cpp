// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/DeckRing.h"

#include "app/model/ClockWords.h"
#include "app/paint/Groove.h"

#include <QDateTime>
#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <cmath>
#include <memory>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    // Between the plinth's edge and the deck: as much as leaves the arm's rest clear of it.
    constexpr double plinthPadding = 7;
    /// What nobody saw is stepped through afterwards as far back as the groove reaches, so that it is whole again.
    constexpr auto longestCatchUp = 12s;

    /// The layers of the deck in one node, lowest first.
    struct DeckNode : QSGNode {
        std::array<QSGImageNode*, 3> pictures{};
        std::array<qint64, 3> keys{};
    };

}  // namespace

DeckRing::DeckRing(QQuickItem* parent) : QQuickItem(parent), m_heard(AppModel::historyLength, meterFloorDB)
{
    setFlag(ItemHasContents);
    m_seconds.setSingleShot(true);
    m_seconds.callOnTimeout(this, &DeckRing::wake);
}

DeckRing::~DeckRing()
{
    PaintTick::shared().leave(*this);
}

void DeckRing::setModel(AppModel* model)
{
    if (m_model == model) {
        return;
    }
    if (m_model) {
        disconnect(m_model, nullptr, this, nullptr);
    }
    m_model = model;
    if (model != nullptr) {
        connect(model, &AppModel::deckStateChanged, this, &DeckRing::stateChanged);
        connect(model, &AppModel::shownLevelsChanged, this, &DeckRing::levelsChanged);
        stateChanged();
    }
    Q_EMIT modelChanged();
}

void DeckRing::setTakeNumber(int number)
{
    if (m_takeNumber != number) {
        m_takeNumber = number;
        wake();
        Q_EMIT takeNumberChanged();
    }
}

void DeckRing::setMoving(bool moving)
{
    if (m_moving != moving) {
        m_moving = moving;
        wake();
        Q_EMIT movingChanged();
    }
}

void DeckRing::setReducedMotion(bool reduced)
{
    if (m_reducedMotion != reduced) {
        m_reducedMotion = reduced;
        wake();
        Q_EMIT reducedMotionChanged();
    }
}

void DeckRing::setHovered(bool hovered)
{
    if (m_hovered != hovered) {
        m_hovered = hovered;
        wake();
        Q_EMIT hoveredChanged();
    }
}

void DeckRing::setPressScale(double scale)
{
    if (m_pressScale != scale) {
        m_pressScale = scale;
        wake();
        Q_EMIT pressScaleChanged();
    }
}

double DeckRing::ratio() const
{
    return window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
}

DeckGeometry DeckRing::geometry() const
{
    const QRectF plate(0, 0, width(), height());
    return DeckGeometry::fitted(plate.adjusted(plinthPadding, plinthPadding, -plinthPadding, -plinthPadding))
        .snapped(ratio());
}

QRectF DeckRing::glass() const
{
    const DeckGeometry deck = geometry();
    const QPointF reach(deck.glassRadius(), deck.glassRadius());
    return {deck.centre() - reach, deck.centre() + reach};
}

bool DeckRing::isSeen() const
{
    return isVisible() && m_watched && m_watched->isExposed();
}

bool DeckRing::moves() const
{
    if (!m_moving) {
        return false;
    }
    // An arc that is not drawn needs no frames.
    DeckState state = m_state;
    if (m_reducedMotion && state.kind == DeckState::Kind::listening) {
        state.kind = DeckState::Kind::ready;
    }
    return !m_motion.isSettled(state);
}

void DeckRing::wake()
{
    if (isSeen()) {
        PaintTick::shared().ask(*this);
    }
}

void DeckRing::stateChanged()
{
    const AppModel* model = m_model;
    if (model == nullptr) {
        return;
    }
    const DeckState state = model->deckState();
    if (state.kind == m_state.kind && state.paused == m_state.paused && state.kind == DeckState::Kind::playing) {
        // The needle goes on where it is, and only the clock tells of it.
        m_state = state;
        if (ClockWords::ofDeck(state, {}) != m_clock) {
            wake();
        }
        return;
    }
    // Up to now the old state moved the deck, whether anybody saw it or not. What is heard may be another's already.
    const Moment now = std::chrono::steady_clock::now();
    move(now);
    if (state.kind == DeckState::Kind::listening && m_state.kind != state.kind) {
        m_listeningSince = now;
    }
    m_state = state;
    advance(now);
    wake();
}

void DeckRing::levelsChanged()
{
    const AppModel* model = m_model;
    if (model == nullptr) {
        return;
    }
    Readout readout = m_shown;
    readout.levels = model->shownLevels();
    if (!readout.looksLike(m_shown)) {
        wake();
    }
}

void DeckRing::paintTick(Moment now)
{
    if (!m_model || !isSeen()) {
        return;
    }
    m_now = now;
    advance(now);
    readClock();
    paint();
    if (moves()) {
        wake();
    }
}

void DeckRing::advance(Moment now)
{
    move(now);
    keepHeard();
}

void DeckRing::move(Moment now)
{
    const DeckMotion::Drive drive{
        .spinning = m_state.spins(), .armDown = m_state.armDown(), .reduceMotion = m_reducedMotion};
    if (m_wasUnseen && m_moving && m_motion.last) {
        Moment missed = std::max(*m_motion.last, now - longestCatchUp);
        for (; missed < now; missed += DeckMotion::frameTime) {
            m_motion.step(missed, drive);
        }
    }
    m_wasUnseen = !isSeen();
    if (m_moving) {
        m_motion.step(now, drive);
    }
}

// What the record carries while the platter runs down or waits is what was heard before. Where nothing may move it
// grows with the clock, from the start of the take.
void DeckRing::keepHeard()
{
    const AppModel* model = m_model;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (model == nullptr || !m_state.spins() || (!m_moving && ClockWords::ofDeck(m_state, now) == m_clock)) {
        return;
    }
    const auto history = model->shownHistory();
    m_heard.assign(history.begin(), history.end());
    if (!m_moving && m_state.kind == DeckState::Kind::recording) {
        const double seconds = std::max(0.0, double(m_state.since.msecsTo(now)) / 1000);
        const auto heard = std::min(double(m_heard.size()), std::floor(seconds * Groove::valuesPerSecond));
        std::fill(m_heard.begin(), m_heard.end() - static_cast<std::ptrdiff_t>(heard), meterFloorDB);
    }
}

void DeckRing::readClock()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    m_clock = ClockWords::ofDeck(m_state, now);
    if (m_state.kind == DeckState::Kind::recording && !m_moving) {
        const qint64 elapsed = m_state.since.msecsTo(now) % 1000;
        m_seconds.start(static_cast<int>(1000 - elapsed));
    } else {
        m_seconds.stop();
    }
}

DeckScene DeckRing::scene() const
{
    const AppModel* model = m_model;
    DeckScene scene{.plate = QRectF(0, 0, width(), height()),
        .geometry = geometry(),
        .ratio = ratio(),
        .readout = {.state = m_state,
            .levels = model != nullptr ? model->shownLevels() : MeterLevels{},
            .clock = m_clock,
            .isHovered = m_hovered,
            .scale = m_pressScale},
        .history = m_heard,
        .takeNumber = m_takeNumber};
    if (!m_moving) {
        scene.pose = m_state.armDown() ? 1 : 0;
    } else if (m_state.kind == DeckState::Kind::listening && !m_reducedMotion) {
        scene.sweepSeconds = std::chrono::duration<double>(m_now - m_listeningSince).count();
    }
    return scene;
}

void DeckRing::updatePolish()
{
    if (!isVisible()) {
        return;
    }
    readClock();
    paint();
}

void DeckRing::paint()
{
    if (!m_model || width() <= 0 || height() <= 0) {
        return;
    }
    const DeckScene shown = scene();
    m_shown = shown.readout;
    m_layers = {m_painter.plinth(shown), m_painter.disc(shown, m_motion),
        m_painter.arm(shown, shown.pose.value_or(m_motion.arm))};
    update();
}

QPointF DeckRing::snap() const
{
    const QPointF place = mapToScene(QPointF(0, 0)) * ratio();
    return QPointF(std::round(place.x()) - place.x(), std::round(place.y()) - place.y()) / ratio();
}

// A parent that moves tells its children nothing, so each frame asks; a window at rest draws none.
void DeckRing::followPlace()
{
    if (isVisible() && snap() != m_snap) {
        update();
    }
}

QSGNode* DeckRing::updatePaintNode(QSGNode* old, UpdatePaintNodeData* /*data*/)
{
    std::unique_ptr<DeckNode> node(static_cast<DeckNode*>(old));
    m_snap = snap();
    if (m_layers.front().image.isNull()) {
        return nullptr;
    }
    if (node == nullptr) {
        node = std::make_unique<DeckNode>();
        for (QSGImageNode*& picture : node->pictures) {
            picture = window()->createImageNode();
            picture->setOwnsTexture(true);
            picture->setFiltering(QSGTexture::Nearest);
            node->appendChildNode(picture);
        }
    }
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        const DeckPainter::Layer& layer = m_layers.at(i);
        QSGImageNode* picture = node->pictures.at(i);
        if (node->keys.at(i) != layer.image.cacheKey()) {
            node->keys.at(i) = layer.image.cacheKey();
            picture->setTexture(window()->createTextureFromImage(layer.image));
            picture->setSourceRect(QRectF(QPointF(0, 0), layer.image.size()));
        }
        picture->setRect(QRectF(m_snap + layer.place, layer.image.size() / layer.image.devicePixelRatio()));
    }
    return node.release();
}

void DeckRing::watch(QQuickWindow* window)
{
    disconnect(m_frames);
    if (m_watched) {
        m_watched->removeEventFilter(this);
    }
    m_watched = window;
    if (window != nullptr) {
        window->installEventFilter(this);
        m_frames = connect(window, &QQuickWindow::afterAnimating, this, &DeckRing::followPlace);
    }
}

bool DeckRing::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Expose) {
        m_wasUnseen = m_wasUnseen || !isSeen();
        // What changed meanwhile was shown to nobody.
        wake();
    }
    return QQuickItem::eventFilter(watched, event);
}

void DeckRing::itemChange(ItemChange change, const ItemChangeData& data)
{
    switch (change) {
    case ItemSceneChange:
        watch(data.window);
        polish();
        break;
    case ItemVisibleHasChanged:
        m_wasUnseen = m_wasUnseen || !isVisible();
        polish();
        wake();
        break;
    case ItemDevicePixelRatioHasChanged:
        polish();
        Q_EMIT glassChanged();
        break;
    default:
        break;
    }
    QQuickItem::itemChange(change, data);
}

void DeckRing::geometryChange(const QRectF& now, const QRectF& before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        polish();
        Q_EMIT glassChanged();
    } else {
        update();
    }
}

}  // namespace vantiro
