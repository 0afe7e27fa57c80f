// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace vantiro::test {

/// A folder of its own with a home and a runtime directory in it, and an environment in which HOME and the XDG folders
/// lie there and no session bus or audio daemon of the user's is named. Its end removes the folder and puts the
/// environment back.
class Sandbox {
public:
    Sandbox();
    ~Sandbox();

    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    [[nodiscard]] QString folder() const { return m_folder.path(); }
    [[nodiscard]] QString home() const { return path(QStringLiteral("home")); }
    [[nodiscard]] QString runtime() const { return path(QStringLiteral("run")); }
    /// A path inside folder(); nothing is made.
    [[nodiscard]] QString path(const QString& relative) const { return m_folder.filePath(relative); }

    /// Sets a variable, or removes it, until the sandbox ends.
    void setVariable(const char* name, const std::optional<QByteArray>& value);

    /// Writes a file, making the folders above it. A failure fails the test.
    static void writeFile(const QString& path, const QByteArray& bytes);
    /// The bytes of a file, empty if it cannot be read.
    [[nodiscard]] static QByteArray readFile(const QString& path);

private:
    QTemporaryDir m_folder;
    std::vector<std::pair<QByteArray, std::optional<QByteArray>>> m_before;
};

/// A test in a sandbox.
class SandboxTest : public ::testing::Test {
protected:
    Sandbox m_sandbox;
};

/// Asks again and again, every 5 ms, until the predicate holds or the limit has passed; whether it held.
[[nodiscard]] bool waitFor(
    const std::function<bool()>& predicate, std::chrono::milliseconds limit = std::chrono::seconds(10));

}  // namespace vantiro::test
