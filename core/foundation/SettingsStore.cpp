// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/SettingsStore.h"

#include "core/foundation/Files.h"
#include "core/foundation/Json.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <optional>
#include <utility>

namespace vantiro {

namespace {

    /// "settings.broken.json", then "settings.broken-2.json" and so on: the first that is free.
    QString freeName(const QString& path)
    {
        const QFileInfo file(path);
        const QString stem = file.path() + u'/' + file.completeBaseName() + QStringLiteral(".broken");
        const QString ending = u'.' + file.suffix();
        QString name = stem + ending;
        for (int number = 2; QFileInfo::exists(name); ++number) {
            name = stem + u'-' + QString::number(number) + ending;
        }
        return name;
    }

    /// What a settings file holds.
    struct Content {
        enum class State {
            good,
            broken,      ///< Something else than settings.
            unreadable,  ///< Nobody knows.
        };

        State state = State::good;
        QJsonObject values = {};
    };

    Content read(const QString& path)
    {
        if (!QFileInfo::exists(path)) {
            return {};
        }
        const std::optional<QByteArray> bytes = files::read(path);
        if (!bytes) {
            return {.state = Content::State::unreadable};
        }
        const std::optional<QJsonObject> values = json::object(*bytes);
        return values ? Content{.values = *values} : Content{.state = Content::State::broken};
    }

    /// Whether nothing stands at the path any more.
    bool setAside(const QString& path, const Trace& trace)
    {
        const QString aside = freeName(path);
        const bool moved = QFile::rename(path, aside);
        trace.line([&] {
            return moved ? QStringLiteral("settings: not readable, kept as %1").arg(aside)
                         : QStringLiteral("settings: not readable, and %1 cannot be made").arg(aside);
        });
        return moved;
    }

}  // namespace

SettingsStore::SettingsStore(QString path, Trace trace, BrokenFile brokenFile)
    : m_path(std::move(path))
    , m_trace(std::move(trace))
{
    Content content = read(m_path);
    m_values = std::move(content.values);
    if (content.state == Content::State::broken && brokenFile == BrokenFile::setAside) {
        setAside(m_path, m_trace);
    }
}

SettingsStore::~SettingsStore()
{
    flush();
}

void SettingsStore::set(const QString& key, const QJsonValue& value)
{
    {
        const std::lock_guard lock(m_mutex);
        if (value.isUndefined()) {
            m_values.remove(key);
        } else {
            m_values.insert(key, value);
        }
        if (m_path.isEmpty()) {
            return;
        }
        m_unwritten.insert(key, value);
        if (std::exchange(m_isWriting, true)) {
            return;
        }
    }
    // The one before has nothing left to do, so that joining it takes no time.
    m_writer = std::jthread([this] { writeChanges(); });
}

void SettingsStore::flush()
{
    if (m_writer.joinable()) {
        m_writer.join();
    }
    // The writer rests, so what it could not write may be tried again here.
    writeChanges();
}

void SettingsStore::writeChanges()
{
    std::unique_lock lock(m_mutex);
    while (!m_unwritten.isEmpty()) {
        const QMap<QString, QJsonValue> changes = std::exchange(m_unwritten, {});
        lock.unlock();
        const bool written = write(changes);
        lock.lock();
        if (!written) {
            // Later changes of the same keys stand.
            QMap<QString, QJsonValue> unwritten = changes;
            unwritten.insert(m_unwritten);
            m_unwritten = unwritten;
            break;
        }
    }
    m_isWriting = false;
}

bool SettingsStore::write(const QMap<QString, QJsonValue>& changes)
{
    // Only what changed here is touched: another program may have changed other keys since the file was read.
    Content content = read(m_path);
    if (content.state == Content::State::unreadable) {
        return false;
    }
    if (content.state == Content::State::broken) {
        if (!setAside(m_path, m_trace)) {
            return false;
        }
        // What was known before the file broke is not lost.
        const std::lock_guard lock(m_mutex);
        content.values = m_values;
    }
    QJsonObject& values = content.values;
    for (const auto& [key, value] : changes.asKeyValueRange()) {
        if (value.isUndefined()) {
            values.remove(key);
        } else {
            values.insert(key, value);
        }
    }
    const auto written = files::replace(m_path, QJsonDocument(values).toJson(), files::Durability::lasting);
    if (!written) {
        m_trace.line([&] { return QStringLiteral("settings: %1").arg(errorText(written.error())); });
    }
    return written.has_value();
}

}  // namespace vantiro
