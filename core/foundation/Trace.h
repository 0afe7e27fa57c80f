// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <concepts>
#include <utility>

namespace vantiro {

/// A text trace for support: lines for the system's log and for a file, on only while VANTIRO_TRACE stands in the
/// environment. Secrets never get into it. Any thread, a line at a time.
class Trace {
public:
    /// A trace into this file, made with its folder on the first line; off if the environment does not ask for it.
    [[nodiscard]] static Trace fromEnvironment(QString file);
    /// A trace that is off.
    Trace() = default;

    [[nodiscard]] bool isOn() const { return !m_file.isEmpty(); }

    /// Writes "{time} {text}" with what `build` returns, which is not called while the trace is off. A failure to write
    /// is passed over.
    template <std::invocable Build>
    void line(Build build) const
    {
        if (isOn()) {
            append(build());
        }
    }

private:
    explicit Trace(QString file) : m_file(std::move(file)) { }
    void append(const QString& text) const;

    QString m_file;
};

}  // namespace vantiro
