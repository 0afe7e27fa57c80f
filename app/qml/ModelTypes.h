// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/AppSettings.h"
#include "app/model/Departure.h"
#include "app/model/Desk.h"

#include <QAbstractListModel>
#include <QQmlEngine>

/// The model's types as the QML module knows them: the model itself knows nothing of QML.
namespace vantiro::qmltypes {

struct ForeignAppSettings {
    Q_GADGET
    QML_FOREIGN(vantiro::AppSettings)
    QML_NAMED_ELEMENT(AppSettings)
    QML_UNCREATABLE("The application makes it.")
};

struct ForeignAppModel {
    Q_GADGET
    QML_FOREIGN(vantiro::AppModel)
    QML_NAMED_ELEMENT(AppModel)
    QML_UNCREATABLE("The application makes it.")
};

struct ForeignDeparture {
    Q_GADGET
    QML_FOREIGN(vantiro::Departure)
    QML_NAMED_ELEMENT(Departure)
    QML_UNCREATABLE("The application makes it.")
};

struct ForeignDesk {
    Q_GADGET
    QML_FOREIGN(vantiro::Desk)
    QML_NAMED_ELEMENT(Desk)
    QML_UNCREATABLE("The application makes it.")
};

/// Qt describes these in a module of its own that nobody needs otherwise; what derives from them wants them known.
struct ForeignItemModel {
    Q_GADGET
    QML_FOREIGN(QAbstractItemModel)
    QML_ANONYMOUS
};

struct ForeignListModel {
    Q_GADGET
    QML_FOREIGN(QAbstractListModel)
    QML_ANONYMOUS
};

}  // namespace vantiro::qmltypes
