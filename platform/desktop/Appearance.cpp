// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Appearance.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr const char* portalService = "org.freedesktop.portal.Desktop";
    constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
    constexpr const char* portalInterface = "org.freedesktop.portal.Settings";

    /// A setting of the portal, and the value that asks for less motion.
    struct Setting {
        const char* group;
        const char* key;
        bool lessWhen;
    };
    constexpr Setting reducedMotionSetting{"org.freedesktop.appearance", "reduced-motion", true};
    constexpr Setting animationsSetting{"org.gnome.desktop.interface", "enable-animations", false};

    /// A boolean or a number, in as many variants as the other side thought fit.
    std::optional<bool> readFlag(sd_bus_message* message)
    {
        char type = 0;
        const char* contents = nullptr;
        while (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == SD_BUS_TYPE_VARIANT) {
            if (sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents) < 0) {
                return std::nullopt;
            }
        }
        if (type == SD_BUS_TYPE_BOOLEAN) {
            int value = 0;
            return sd_bus_message_read(message, "b", &value) > 0 ? std::optional(value != 0) : std::nullopt;
        }
        if (type == SD_BUS_TYPE_UINT32) {
            std::uint32_t value = 0;
            return sd_bus_message_read(message, "u", &value) > 0 ? std::optional(value == 1) : std::nullopt;
        }
        return std::nullopt;
    }

    std::optional<bool> forced()
    {
        const QByteArray value = qgetenv("VANTIRO_REDUCE_MOTION");
        return value == "1" || value == "0" ? std::optional(value == "1") : std::nullopt;
    }

    QString kdeFile()
    {
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/kdeglobals"_s;
    }

}  // namespace

Appearance::Appearance(BusLink* session) : m_session(session)
{
    if (forced()) {
        return;
    }
    if (m_session != nullptr) {
        askPortal();
        askSettingsService();
    }
    // The file may lie about on a desktop that does not read it.
    if (qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(u"KDE"_s)) {
        connect(&m_files, &QFileSystemWatcher::fileChanged, this, &Appearance::readKdeFile);
        connect(&m_files, &QFileSystemWatcher::directoryChanged, this, &Appearance::readKdeFile);
        m_files.addPath(QFileInfo(kdeFile()).path());
        readKdeFile();
    }
}

bool Appearance::reducedMotion() const
{
    return forced().value_or(std::ranges::any_of(m_wants, [](const auto& want) { return want.second; }));
}

void Appearance::askPortal()
{
    for (const auto& [asker, setting] : {std::pair{Asker::portalReducedMotion, reducedMotionSetting},
             std::pair{Asker::portalAnimations, animationsSetting}}) {
        const BusMessage call = m_session->newRequest({portalService, portalPath, portalInterface, "Read"});
        if (call && sd_bus_message_append(call.get(), "ss", setting.group, setting.key) >= 0) {
            m_session->ask(call, [this, asker, lessWhen = setting.lessWhen](sd_bus_message* answer) {
                if (const auto flag = answer != nullptr ? readFlag(answer) : std::nullopt) {
                    note(asker, *flag == lessWhen);
                }
            });
        }
        m_session->follow(u"type='signal',path='%1',interface='%2',member='SettingChanged',arg0='%3',arg1='%4'"_s.arg(
                              QLatin1StringView(portalPath), QLatin1StringView(portalInterface),
                              QLatin1StringView(setting.group), QLatin1StringView(setting.key)),
            [this, asker, lessWhen = setting.lessWhen](sd_bus_message* message) {
                if (message == nullptr || sd_bus_message_skip(message, "ss") < 0) {
                    return;
                }
                if (const auto flag = readFlag(message)) {
                    note(asker, *flag == lessWhen);
                }
            });
    }
}

void Appearance::askSettingsService()
{
    constexpr const char* service = "org.gtk.Settings";
    constexpr const char* path = "/org/gtk/Settings";
    const BusMessage call = m_session->newQuestion({service, path, "org.freedesktop.DBus.Properties", "Get"});
    if (call && sd_bus_message_append(call.get(), "ss", service, "EnableAnimations") >= 0) {
        m_session->ask(call, [this](sd_bus_message* answer) {
            if (const auto flag = answer != nullptr ? readFlag(answer) : std::nullopt) {
                note(Asker::settingsService, !*flag);
            }
        });
    }
    m_session->follow(u"type='signal',path='%1',interface='org.freedesktop.DBus.Properties',"
                      "member='PropertiesChanged',arg0='%2'"_s.arg(QLatin1StringView(path), QLatin1StringView(service)),
        [this](sd_bus_message* message) {
            if (message == nullptr || sd_bus_message_skip(message, "s") < 0
                || sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0) {
                return;
            }
            const char* name = nullptr;
            while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0
                && sd_bus_message_read(message, "s", &name) > 0) {
                if (std::strcmp(name, "EnableAnimations") == 0) {
                    if (const auto flag = readFlag(message)) {
                        note(Asker::settingsService, !*flag);
                    }
                    return;
                }
                sd_bus_message_skip(message, "v");
                sd_bus_message_exit_container(message);
            }
        });
}

void Appearance::readKdeFile()
{
    const QString file = kdeFile();
    // A program that replaces the file leaves nothing to watch behind.
    if (QFile::exists(file) && !m_files.files().contains(file)) {
        m_files.addPath(file);
    }
    const QString factor =
        QSettings(file, QSettings::IniFormat).value(u"KDE/AnimationDurationFactor"_s, u"1"_s).toString();
    bool isNumber = false;
    const double duration = factor.toDouble(&isNumber);
    note(Asker::kde, isNumber && duration <= 0);
}

void Appearance::note(Asker asker, bool wantsLess)
{
    const bool before = reducedMotion();
    m_wants[asker] = wantsLess;
    if (reducedMotion() != before) {
        Q_EMIT reducedMotionChanged();
    }
}

}  // namespace vantiro
