// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Trace.h"

#include <QJsonObject>
#include <QMap>
#include <QString>

#include <mutex>
#include <thread>

namespace vantiro {

/// The user's settings in one JSON file. Values are read once and then kept; each change is written at once, on a
/// thread of its own, and lasting. Keys that nobody here knows stay in the file. A file that is no JSON object is set
/// aside under another name, never overwritten, and everything reads as absent.
class SettingsStore {
public:
    /// What to do with a file that holds something else. Whoever only reads leaves it.
    enum class BrokenFile {
        setAside,
        leave,
    };

    /// Reads the file; one that is missing is empty.
    explicit SettingsStore(QString path, Trace trace = {}, BrokenFile brokenFile = BrokenFile::setAside);
    /// A store that keeps nothing.
    SettingsStore() = default;
    /// Waits until everything is written.
    ~SettingsStore();

    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    /// The value under the key, undefined if there is none.
    [[nodiscard]] QJsonValue value(const QString& key) const { return m_values.value(key); }
    /// Stores the value, or removes the key if it is undefined.
    void set(const QString& key, const QJsonValue& value);
    /// Waits until every change so far is on disk, or cannot be written. What could not be written is tried again with
    /// the next change and the next flush.
    void flush();

private:
    void writeChanges();
    [[nodiscard]] bool write(const QMap<QString, QJsonValue>& changes);

    QString m_path;
    Trace m_trace;
    std::mutex m_mutex;
    QJsonObject m_values;                   ///< Changed by the main thread alone, under the mutex.
    QMap<QString, QJsonValue> m_unwritten;  ///< Changes that are not in the file yet. Under the mutex.
    bool m_isWriting = false;               ///< The writer will look at them again. Under the mutex.
    std::jthread m_writer;                  ///< Ends when there is nothing to write; one at a time.
};

}  // namespace vantiro
