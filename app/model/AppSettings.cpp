// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/AppSettings.h"

#include "core/copies/MusicInbox.h"
#include "core/foundation/Json.h"
#include "core/recorder/TakesFolder.h"
#include "core/recorder/VantiroPaths.h"

#include <QDir>
#include <QJsonObject>

namespace vantiro {

namespace {

    constexpr auto noCopy = "off";

    bool boolean(const SettingsStore& store, const char* key, bool whenAbsent)
    {
        return store.value(QLatin1StringView(key)).toBool(whenAbsent);
    }

    std::optional<ExportFormat> copyFormat(const QJsonValue& stored)
    {
        return stored.isString() ? exportFormat(stored.toString()) : std::optional(ExportFormat::aac);
    }

    AppSettings::Pages pages(const QJsonObject& stored)
    {
        AppSettings::Pages pages;
        for (auto entry = stored.begin(); entry != stored.end(); ++entry) {
            if (!entry->isString()) {
                return {};
            }
            pages.insert(entry.key(), entry->toString());
        }
        return pages;
    }

    AppSettings::Channels channels(const QJsonObject& stored)
    {
        AppSettings::Channels channels;
        for (auto entry = stored.begin(); entry != stored.end(); ++entry) {
            const auto number = json::integer(*entry);
            if (!number) {
                return {};
            }
            channels.insert(entry.key(), *number);
        }
        return channels;
    }

    template <class Map>
    QJsonObject objectOf(const Map& map)
    {
        QJsonObject object;
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            if constexpr (std::is_same_v<typename Map::mapped_type, std::int64_t>) {
                object.insert(entry.key(), static_cast<qint64>(*entry));
            } else {
                object.insert(entry.key(), *entry);
            }
        }
        return object;
    }

}  // namespace

AppSettings::AppSettings(std::unique_ptr<SettingsStore> store) : m_store(std::move(store))
{
    const SettingsStore& read = *m_store;
    m_format = takeFormat(read.value(QStringLiteral("format")).toString()).value_or(TakeFormat::caf);
    m_takeCopy = copyFormat(read.value(QStringLiteral("takeCopy")));
    m_addToMusic = boolean(read, "addToMusic", true);
    m_musicInboxChoice = MusicInbox::chosen(read);
    m_djName = read.value(QStringLiteral("djName")).toString();
    m_mixcloudPrivate = boolean(read, "mixcloudPrivate", true);
    m_mixcloudPages = pages(read.value(QStringLiteral("mixcloudPages")).toObject());
    m_takesFolder = TakesFolder::in(read);
    m_isAdvanced = boolean(read, "isAdvanced", false);
    m_didSetup = boolean(read, "didSetup", false);
    m_autoPick = boolean(read, "autoPick", true);
    m_revealAfterTake = boolean(read, "revealAfterTake", false);
    m_confirmStop = boolean(read, "confirmStop", false);
    m_hotkeyEnabled = boolean(read, "hotkeyEnabled", true);
    m_showsMenuBarItem = boolean(read, "showsMenuBarItem", true);
    m_deckMotion = boolean(read, "deckMotion", true);
    m_checksForUpdates = boolean(read, "checksForUpdates", true);
    m_allowsURLControl = boolean(read, "allowsURLControl", false);
    m_firstChannel = channels(read.value(QStringLiteral("firstChannel")).toObject());
    m_playbackOutput = read.value(QStringLiteral("playbackOutput")).toString();
    m_playbackOutputName = read.value(QStringLiteral("playbackOutputName")).toString();
}

AppSettings::~AppSettings() = default;

template <class Property, class Value>
void AppSettings::store(Property& property, const Value& value, const char* key, const QJsonValue& stored)
{
    if (property.value() == value) {
        return;
    }
    m_store->set(QLatin1StringView(key), stored);
    property = value;
}

void AppSettings::setFormat(TakeFormat format)
{
    store(m_format, format, "format", rawValue(format));
}

void AppSettings::setTakeCopy(std::optional<ExportFormat> copy)
{
    store(m_takeCopy, copy, "takeCopy", copy ? rawValue(*copy) : QString(QLatin1StringView(noCopy)));
}

void AppSettings::setAddToMusic(bool value)
{
    store(m_addToMusic, value, "addToMusic", value);
}

void AppSettings::setMusicInboxChoice(const std::optional<QString>& inbox)
{
    if (m_musicInboxChoice.value() != inbox) {
        MusicInbox::save(inbox, *m_store);
        m_musicInboxChoice = inbox;
    }
}

void AppSettings::setDjName(const QString& name)
{
    store(m_djName, name, "djName", name);
}

void AppSettings::setMixcloudPrivate(bool value)
{
    store(m_mixcloudPrivate, value, "mixcloudPrivate", value);
}

void AppSettings::setMixcloudPages(const Pages& pages)
{
    store(m_mixcloudPages, pages, "mixcloudPages", objectOf(pages));
}

void AppSettings::setTakesFolder(const QString& folder)
{
    // The default is not stored, so that it goes on following the music folder.
    const QString clean = QDir::cleanPath(folder);
    const bool isDefault = clean == QDir::cleanPath(VantiroPaths::takes());
    store(m_takesFolder, clean, "takesFolder", isDefault ? QJsonValue(QJsonValue::Undefined) : QJsonValue(clean));
}

void AppSettings::setIsAdvanced(bool value)
{
    store(m_isAdvanced, value, "isAdvanced", value);
}

void AppSettings::setDidSetup(bool value)
{
    store(m_didSetup, value, "didSetup", value);
}

void AppSettings::setAutoPick(bool value)
{
    store(m_autoPick, value, "autoPick", value);
}

void AppSettings::setRevealAfterTake(bool value)
{
    store(m_revealAfterTake, value, "revealAfterTake", value);
}

void AppSettings::setConfirmStop(bool value)
{
    store(m_confirmStop, value, "confirmStop", value);
}

void AppSettings::setHotkeyEnabled(bool value)
{
    store(m_hotkeyEnabled, value, "hotkeyEnabled", value);
}

void AppSettings::assumeHotkeyEnabled(bool value)
{
    if (!m_store->value(QStringLiteral("hotkeyEnabled")).isBool()) {
        m_hotkeyEnabled = value;
    }
}

void AppSettings::setShowsMenuBarItem(bool value)
{
    store(m_showsMenuBarItem, value, "showsMenuBarItem", value);
}

void AppSettings::setDeckMotion(bool value)
{
    store(m_deckMotion, value, "deckMotion", value);
}

void AppSettings::setChecksForUpdates(bool value)
{
    store(m_checksForUpdates, value, "checksForUpdates", value);
}

void AppSettings::setAllowsURLControl(bool value)
{
    store(m_allowsURLControl, value, "allowsURLControl", value);
}

void AppSettings::setFirstChannel(const Channels& channels)
{
    store(m_firstChannel, channels, "firstChannel", objectOf(channels));
}

void AppSettings::setPlaybackOutput(const QString& uid, const QString& name)
{
    store(m_playbackOutputName, name, "playbackOutputName", name);
    store(m_playbackOutput, uid, "playbackOutput", uid);
}

}  // namespace vantiro
