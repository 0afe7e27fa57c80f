// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RecordHotKey.h"

#include "platform/desktop/PortalHotKey.h"
#include "platform/desktop/X11HotKey.h"

#include <QGuiApplication>

#include <chrono>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// A key that bounces, or is pressed twice in haste, must not end the take that it began.
    constexpr std::chrono::milliseconds haste{300};

}  // namespace

RecordHotKey::RecordHotKey(AppModel& model, Make make, std::function<void()> action)
    : m_model(model)
    , m_make(std::move(make))
    , m_action(std::move(action))
{
    connect(&m_model, &AppModel::hotkeyEnabledChanged, this, &RecordHotKey::follow);
    follow();
}

RecordHotKey::~RecordHotKey() = default;

RecordHotKey::Make RecordHotKey::forPlatform(AppModel& model)
{
    const QString platform = QGuiApplication::platformName();
    if (platform == u"xcb"_s) {
        return [] { return X11HotKey::make(); };
    }
    if (platform.startsWith(u"wayland"_s)) {
        model.assumeHotkeyEnabled(false);
        return [] { return PortalHotKey::make(); };
    }
    return [] { return nullptr; };
}

void RecordHotKey::follow()
{
    if (!m_model.hotkeyEnabled()) {
        m_key.reset();
    } else if (!m_key) {
        m_key = m_make();
        if (m_key) {
            connect(m_key.get(), &HotKey::pressed, this, &RecordHotKey::press);
        }
    }
}

void RecordHotKey::press()
{
    const bool isHasty = m_sincePress.isValid() && m_sincePress.elapsed() < haste.count();
    m_sincePress.start();
    if (!isHasty) {
        m_action();
    }
}

}  // namespace vantiro
