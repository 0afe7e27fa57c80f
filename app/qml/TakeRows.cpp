// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/TakeRows.h"

#include "app/model/ClockWords.h"

#include <QDir>
#include <QFileInfo>

#include <array>
#include <cmath>

namespace vantiro {

namespace {

    QString kindOf(const Take& take)
    {
        const QLocale locale;
        const QString channels = take.channels == 1 ? TakeRows::tr("mono")
            : take.channels == 2                    ? TakeRows::tr("stereo")
                                                    : TakeRows::tr("%1 channels").arg(take.channels);
        return TakeRows::tr("%1, %2 kHz %3, %4")
            .arg(QFileInfo(take.path).suffix().toUpper(), locale.toString(take.sampleRate / 1000, 'g', 5), channels,
                TakeRows::size(take.bytes, locale));
    }

}  // namespace

void TakeRows::setSource(AppModel* source)
{
    if (m_source == source) {
        return;
    }
    if (m_source != nullptr) {
        m_source->disconnect(this);
    }
    m_source = source;
    if (m_source != nullptr) {
        connect(m_source, &AppModel::takesChanged, this, &TakeRows::follow);
        connect(m_source, &AppSettings::takesFolderChanged, this, &TakeRows::folderChanged);
    }
    Q_EMIT sourceChanged();
    Q_EMIT folderChanged();
    follow();
}

QString TakeRows::folder() const
{
    const AppModel* source = m_source;
    const QString folder = source == nullptr ? QString() : source->takesFolder();
    const QString home = QDir::homePath();
    return folder.startsWith(home + u'/') ? u'~' + folder.mid(home.size()) : folder;
}

void TakeRows::follow()
{
    const AppModel* source = m_source;
    beginResetModel();
    m_takes = source == nullptr ? std::vector<Take>() : source->takes();
    endResetModel();
}

int TakeRows::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_takes.size());
}

QVariant TakeRows::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Take& take = m_takes[std::size_t(index.row())];
    const QDateTime created = take.created.toLocalTime();
    const QLocale locale;
    switch (role) {
    case Day:
        return locale.toString(created, QStringLiteral("ddd d MMM"));
    case Time:
        // Seconds, which some locales want even here, tell nobody anything.
        return locale.toString(created.time(), locale.timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss")));
    case Length:
        return ClockWords::time(take.seconds, ClockWords::Form::full);
    case Kind:
        return kindOf(take);
    default:
        return {};
    }
}

QHash<int, QByteArray> TakeRows::roleNames() const
{
    return {{Day, "day"}, {Time, "time"}, {Length, "length"}, {Kind, "kind"}};
}

QString TakeRows::size(std::int64_t bytes, const QLocale& locale)
{
    const std::array<QString, 4> units = {tr("%1 kB"), tr("%1 MB"), tr("%1 GB"), tr("%1 TB")};
    double amount = double(bytes) / 1000;
    std::size_t unit = 0;
    while (amount >= 999.5 && unit + 1 < units.size()) {
        amount /= 1000;
        ++unit;
    }
    return units[unit].arg(locale.toString(amount, 'f', amount < 9.95 && unit > 0 ? 1 : 0));
}

}  // namespace vantiro
