// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/paint/StripPainter.h"
#include "app/qml/PaintTick.h"
#include "app/qml/PictureItem.h"

#include <QPointer>
#include <QQmlEngine>

namespace vantiro {

/// The model's level history, the newest value at the right edge.
class WaveformStrip : public vantiro::PictureItem, private PaintTick::Client {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vantiro::AppModel* model READ model WRITE setModel NOTIFY modelChanged)

public:
    explicit WaveformStrip(QQuickItem* parent = nullptr);
    ~WaveformStrip() override;

    [[nodiscard]] AppModel* model() const { return m_model; }
    void setModel(AppModel* model);

Q_SIGNALS:
    void modelChanged();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void paintTick(PaintTick::Moment now) override;
    void historyChanged();

    QPointer<AppModel> m_model;
    mutable StripPainter m_painter;
};

}  // namespace vantiro
