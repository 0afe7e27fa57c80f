// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/qml/PaintTick.h"
#include "app/qml/PictureItem.h"

#include <QPointer>
#include <QQmlEngine>

namespace vantiro {

/// A picture of what is heard: it follows one signal of the model, in the beat that all of them share.
class LevelPicture : public vantiro::PictureItem, protected PaintTick::Client {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(vantiro::AppModel* model READ model WRITE setModel NOTIFY modelChanged)

public:
    ~LevelPicture() override;

    [[nodiscard]] AppModel* model() const { return m_model; }
    void setModel(AppModel* model);

Q_SIGNALS:
    void modelChanged();

protected:
    using ModelSignal = void (AppModel::*)();

    LevelPicture(ModelSignal news, QQuickItem* parent);

    /// Paints anew.
    void paintTick(PaintTick::Moment now) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    void hearNews();

    ModelSignal m_news;
    QPointer<AppModel> m_model;
};

}  // namespace vantiro
