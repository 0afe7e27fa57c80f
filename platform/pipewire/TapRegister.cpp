// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/TapRegister.h"

namespace vantiro {

class TapRegister::Entry final : public AudioTap {
public:
    Entry(std::shared_ptr<TapRegister> owner, QString uid) : m_owner(std::move(owner)), m_uid(std::move(uid)) { }
    ~Entry() override
    {
        const std::scoped_lock lock(m_owner->m_mutex);
        m_owner->m_taps.remove(m_uid);
    }

private:
    std::shared_ptr<TapRegister> m_owner;
    QString m_uid;
};

std::unique_ptr<AudioTap> TapRegister::add(const Tap& tap)
{
    const std::scoped_lock lock(m_mutex);
    m_taps.insert(tap.device.uid, tap);
    return std::make_unique<Entry>(shared_from_this(), tap.device.uid);
}

std::optional<TapRegister::Tap> TapRegister::find(const QString& uid)
{
    const std::scoped_lock lock(m_mutex);
    const auto found = m_taps.constFind(uid);
    return found == m_taps.cend() ? std::nullopt : std::optional(*found);
}

}  // namespace vantiro
