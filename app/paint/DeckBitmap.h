// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPainter>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

namespace vantiro {

/// One painted picture that is kept until something else is asked for: what is costly to paint is painted once and then
/// only copied or turned.
class DeckBitmap {
public:
    /// What a picture depends on.
    struct Subject {
        QString key = {};  ///< What is on it.
        QRectF area = {};  ///< What it covers, in points.
        double ratio = 1;  ///< Device pixels a point.

        bool operator==(const Subject&) const = default;
    };
    using Paint = std::function<void(QPainter&)>;

    /// The picture of `subject`, painted by `paint` in points if it is not the one kept. Null if it cannot be made (too
    /// large, no memory): then the next call tries again. Valid until the next call.
    const QImage* picture(const Subject& subject, const Paint& paint);
    /// Draws that picture at its place, whole device pixels onto whole device pixels unless the painter is turned.
    /// Nothing is drawn if it cannot be made.
    void draw(QPainter& painter, const Subject& subject, const Paint& paint);

    /// `area` grown to the next whole device pixels.
    [[nodiscard]] static QRectF snapped(const QRectF& area, double ratio);

private:
    Subject m_subject;
    std::optional<QImage> m_image;
};

}  // namespace vantiro
