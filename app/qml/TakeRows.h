// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"

#include <QAbstractListModel>
#include <QLocale>
#include <QPointer>
#include <QQmlEngine>

#include <cstdint>
#include <vector>

namespace vantiro {

/// The takes as a list of words for the takes page, newest first.
class TakeRows : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vantiro::AppModel* source READ source WRITE setSource NOTIFY sourceChanged REQUIRED)
    Q_PROPERTY(QString folder READ folder NOTIFY folderChanged)

public:
    enum Role {
        Day = Qt::UserRole,  ///< The weekday, the day and the month.
        Time,
        Length,  ///< H:MM:SS
        Kind,    ///< Container, rate, channels, size.
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] AppModel* source() const { return m_source; }
    void setSource(AppModel* source);
    /// The takes folder, the home folder as a tilde.
    [[nodiscard]] QString folder() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] static QString size(std::int64_t bytes, const QLocale& locale);

Q_SIGNALS:
    void sourceChanged();
    void folderChanged();

private:
    void follow();

    QPointer<AppModel> m_source;
    std::vector<Take> m_takes;
};

}  // namespace vantiro
