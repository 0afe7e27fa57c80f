// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/SettingsStore.h"

#include "core/foundation/Files.h"
#include "core/foundation/Json.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <optional>

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

    /// The settings in the file. What cannot be read as such is set aside; nothing if it cannot be moved either.
    std::optional<QJsonObject> readOrSetAside(const QString& path, const Trace& trace)
    {
        if (!QFileInfo::exists(path)) {
            return QJsonObject();
        }
        const std::optional<QByteArray> bytes = files::read(path);
        const std::optional<QJsonObject> values = bytes ? json::object(*bytes) : std::nullopt;
        if (values) {
            return values;
        }
        const QString aside = freeName(path);
        const bool moved = QFile::rename(path, aside);
        trace.line([&] {
            return moved ? QStringLiteral("settings: not readable, kept as %1").arg(aside)
                         : QStringLiteral("settings: not readable, and %1 cannot be made").arg(aside);
        });
        return moved ? std::optional(QJsonObject()) : std::nullopt;
    }

}  // namespace

SettingsStore::SettingsStore(QString path, Trace trace)
    : m_path(std::move(path))
    , m_trace(std::move(trace))
    , m_values(readOrSetAside(m_path, m_trace).value_or(QJsonObject()))
{
    m_writer.setMaxThreadCount(1);
}

SettingsStore::~SettingsStore()
{
    flush();
}

void SettingsStore::set(const QString& key, const QJsonValue& value)
{
    if (value.isUndefined()) {
        m_values.remove(key);
    } else {
        m_values.insert(key, value);
    }
    if (!m_path.isEmpty()) {
        m_writer.start([this, key, value] {
            m_unwritten.insert(key, value);
            write();
        });
    }
}

void SettingsStore::flush()
{
    m_writer.waitForDone();
    // The writer rests, so what it could not write may be tried again here.
    write();
}

void SettingsStore::write()
{
    if (m_unwritten.isEmpty()) {
        return;
    }
    // Only what changed here is touched: another program may have changed other keys since the file was read.
    std::optional<QJsonObject> values = readOrSetAside(m_path, m_trace);
    if (!values) {
        return;
    }
    for (const auto& [key, value] : m_unwritten.asKeyValueRange()) {
        if (value.isUndefined()) {
            values->remove(key);
        } else {
            values->insert(key, value);
        }
    }
    const auto written = files::replace(m_path, QJsonDocument(*values).toJson(), files::Durability::lasting);
    if (!written) {
        m_trace.line([&] { return QStringLiteral("settings: %1").arg(errorText(written.error())); });
        return;
    }
    m_unwritten.clear();
}

}  // namespace vantiro
