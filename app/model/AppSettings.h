// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeFormat.h"
#include "core/foundation/SettingsStore.h"
#include "core/takes/ExportFormat.h"

#include <QMap>
#include <QObject>
#include <QProperty>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace vantiro {

/// The settings as the screens see them. Each one is read at the start, tells when it changes, and writes itself then.
/// A stored value of another type than the key's reads as the default.
class AppSettings : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool addToMusic READ addToMusic WRITE setAddToMusic NOTIFY addToMusicChanged)
    Q_PROPERTY(QString djName READ djName WRITE setDjName NOTIFY djNameChanged)
    Q_PROPERTY(bool mixcloudPrivate READ mixcloudPrivate WRITE setMixcloudPrivate NOTIFY mixcloudPrivateChanged)
    Q_PROPERTY(QString takesFolder READ takesFolder WRITE setTakesFolder NOTIFY takesFolderChanged)
    Q_PROPERTY(bool isAdvanced READ isAdvanced WRITE setIsAdvanced NOTIFY isAdvancedChanged)
    Q_PROPERTY(bool didSetup READ didSetup WRITE setDidSetup NOTIFY didSetupChanged)
    Q_PROPERTY(bool autoPick READ autoPick WRITE setAutoPick NOTIFY autoPickChanged)
    Q_PROPERTY(bool revealAfterTake READ revealAfterTake WRITE setRevealAfterTake NOTIFY revealAfterTakeChanged)
    Q_PROPERTY(bool confirmStop READ confirmStop WRITE setConfirmStop NOTIFY confirmStopChanged)
    Q_PROPERTY(bool hotkeyEnabled READ hotkeyEnabled WRITE setHotkeyEnabled NOTIFY hotkeyEnabledChanged)
    Q_PROPERTY(bool showsMenuBarItem READ showsMenuBarItem WRITE setShowsMenuBarItem NOTIFY showsMenuBarItemChanged)
    Q_PROPERTY(bool deckMotion READ deckMotion WRITE setDeckMotion NOTIFY deckMotionChanged)
    Q_PROPERTY(bool checksForUpdates READ checksForUpdates WRITE setChecksForUpdates NOTIFY checksForUpdatesChanged)
    Q_PROPERTY(bool allowsURLControl READ allowsURLControl WRITE setAllowsURLControl NOTIFY allowsURLControlChanged)

public:
    using Pages = QMap<QString, QString>;
    using Channels = QMap<QString, std::int64_t>;

    /// A store that keeps nothing makes a picture of the settings: nothing is saved.
    explicit AppSettings(std::unique_ptr<SettingsStore> store);
    ~AppSettings() override;

    /// The container of new takes.
    [[nodiscard]] TakeFormat format() const { return m_format; }
    void setFormat(TakeFormat format);
    /// The copy that is made of each take; absent means none.
    [[nodiscard]] std::optional<ExportFormat> takeCopy() const { return m_takeCopy; }
    void setTakeCopy(std::optional<ExportFormat> copy);
    /// Each take is handed to the music library as well.
    [[nodiscard]] bool addToMusic() const { return m_addToMusic; }
    void setAddToMusic(bool value);
    /// The folder that the user chose for the music library's import, absolute; absent means none.
    [[nodiscard]] const std::optional<QString>& musicInboxChoice() const { return m_musicInboxChoice.value(); }
    void setMusicInboxChoice(const std::optional<QString>& inbox);
    /// The artist's name in tags.
    [[nodiscard]] const QString& djName() const { return m_djName.value(); }
    void setDjName(const QString& name);
    /// Takes are posted as private.
    [[nodiscard]] bool mixcloudPrivate() const { return m_mixcloudPrivate; }
    void setMixcloudPrivate(bool value);
    /// Takes that were posted, and their pages.
    [[nodiscard]] const Pages& mixcloudPages() const { return m_mixcloudPages.value(); }
    void setMixcloudPages(const Pages& pages);
    /// Where takes go; absolute.
    [[nodiscard]] const QString& takesFolder() const { return m_takesFolder.value(); }
    void setTakesFolder(const QString& folder);
    /// The window's larger form, with the check list and the figures.
    [[nodiscard]] bool isAdvanced() const { return m_isAdvanced; }
    void setIsAdvanced(bool value);
    /// The setup guide has been passed.
    [[nodiscard]] bool didSetup() const { return m_didSetup; }
    void setDidSetup(bool value);
    /// A source is picked without asking.
    [[nodiscard]] bool autoPick() const { return m_autoPick; }
    void setAutoPick(bool value);
    /// A new take is shown in the file manager.
    [[nodiscard]] bool revealAfterTake() const { return m_revealAfterTake; }
    void setRevealAfterTake(bool value);
    /// The deck asks before it stops a take.
    [[nodiscard]] bool confirmStop() const { return m_confirmStop; }
    void setConfirmStop(bool value);
    [[nodiscard]] bool hotkeyEnabled() const { return m_hotkeyEnabled; }
    void setHotkeyEnabled(bool value);
    /// What it is as long as the user has not set it; not stored.
    void assumeHotkeyEnabled(bool value);
    [[nodiscard]] bool showsMenuBarItem() const { return m_showsMenuBarItem; }
    void setShowsMenuBarItem(bool value);
    [[nodiscard]] bool deckMotion() const { return m_deckMotion; }
    void setDeckMotion(bool value);
    [[nodiscard]] bool checksForUpdates() const { return m_checksForUpdates; }
    void setChecksForUpdates(bool value);
    /// Links may control the application.
    [[nodiscard]] bool allowsURLControl() const { return m_allowsURLControl; }
    void setAllowsURLControl(bool value);
    /// For each source's id, the first of the pair of channels to record, counted from 1.
    [[nodiscard]] const Channels& firstChannel() const { return m_firstChannel.value(); }
    void setFirstChannel(const Channels& channels);

    /// The UID of the device that takes are heard on, empty for the system's default, and its name for when it is not
    /// connected.
    [[nodiscard]] const QString& playbackOutput() const { return m_playbackOutput.value(); }
    [[nodiscard]] const QString& playbackOutputName() const { return m_playbackOutputName.value(); }
    void setPlaybackOutput(const QString& uid, const QString& name);

    /// Waits until every change is on disk.
    void flush() { m_store->flush(); }

Q_SIGNALS:
    void formatChanged();
    void takeCopyChanged();
    void addToMusicChanged();
    void musicInboxChoiceChanged();
    void djNameChanged();
    void mixcloudPrivateChanged();
    void mixcloudPagesChanged();
    void takesFolderChanged();
    void isAdvancedChanged();
    void didSetupChanged();
    void autoPickChanged();
    void revealAfterTakeChanged();
    void confirmStopChanged();
    void hotkeyEnabledChanged();
    void showsMenuBarItemChanged();
    void deckMotionChanged();
    void checksForUpdatesChanged();
    void allowsURLControlChanged();
    void firstChannelChanged();
    void playbackOutputChanged();
    void playbackOutputNameChanged();

private:
    template <class Property, class Value>
    void store(Property& property, const Value& value, const char* key, const QJsonValue& stored);

    std::unique_ptr<SettingsStore> m_store;

    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, TakeFormat, m_format, &AppSettings::formatChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, std::optional<ExportFormat>, m_takeCopy, &AppSettings::takeCopyChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_addToMusic, &AppSettings::addToMusicChanged)
    Q_OBJECT_BINDABLE_PROPERTY(
        AppSettings, std::optional<QString>, m_musicInboxChoice, &AppSettings::musicInboxChoiceChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_djName, &AppSettings::djNameChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_mixcloudPrivate, &AppSettings::mixcloudPrivateChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, Pages, m_mixcloudPages, &AppSettings::mixcloudPagesChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_takesFolder, &AppSettings::takesFolderChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_isAdvanced, &AppSettings::isAdvancedChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_didSetup, &AppSettings::didSetupChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_autoPick, &AppSettings::autoPickChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_revealAfterTake, &AppSettings::revealAfterTakeChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_confirmStop, &AppSettings::confirmStopChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_hotkeyEnabled, &AppSettings::hotkeyEnabledChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_showsMenuBarItem, &AppSettings::showsMenuBarItemChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_deckMotion, &AppSettings::deckMotionChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_checksForUpdates, &AppSettings::checksForUpdatesChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, bool, m_allowsURLControl, &AppSettings::allowsURLControlChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, Channels, m_firstChannel, &AppSettings::firstChannelChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_playbackOutput, &AppSettings::playbackOutputChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_playbackOutputName, &AppSettings::playbackOutputNameChanged)
};

}  // namespace vantiro
