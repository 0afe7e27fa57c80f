// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/TakeTagging.h"

#include <array>

namespace vantiro::TakeTagging {

namespace {

    std::optional<QString> trimmedName(const std::optional<QString>& name)
    {
        const QString trimmed = name.value_or(QString()).trimmed();
        return trimmed.isEmpty() ? std::nullopt : std::optional(trimmed);
    }

}  // namespace

std::optional<QString> artist(const std::optional<QString>& djName, const std::optional<QString>& mixcloudUsername)
{
    const std::optional<QString> account = trimmedName(mixcloudUsername);
    return account ? account : trimmedName(djName);
}

QString nowPlayingArtist(const std::optional<QString>& djName)
{
    return trimmedName(djName).value_or(fallbackArtist);
}

// asprintf() writes plain digits, whatever digits and calendar the user's locale has.

QString title(const QDateTime& recorded, const QTimeZone& timeZone)
{
    const QTime time = recorded.toTimeZone(timeZone).time();
    return dayTitle(recorded, timeZone) + QString::asprintf(", %02d:%02d", time.hour(), time.minute());
}

QString dayTitle(const QDateTime& recorded, const QTimeZone& timeZone)
{
    static constexpr std::array months{
        "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const QDate date = recorded.toTimeZone(timeZone).date();
    if (!date.isValid()) {
        return QStringLiteral("Mix");
    }
    const char* month = months.at(static_cast<std::size_t>(date.month() - 1));
    return QString::asprintf("Mix, %d %s %d", date.day(), month, date.year());
}

QString releaseDate(const QDateTime& recorded, const QTimeZone& timeZone)
{
    const QDate date = recorded.toTimeZone(timeZone).date();
    return QString::asprintf("%d-%02d-%02d", date.year(), date.month(), date.day());
}

}  // namespace vantiro::TakeTagging
