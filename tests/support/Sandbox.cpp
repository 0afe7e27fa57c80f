// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <ranges>
#include <thread>

namespace vantiro::test {

Sandbox::Sandbox() : m_folder(QDir::tempPath() + QStringLiteral("/vantiro-XXXXXX"))
{
    const auto place = [this](const char* variable, const QString& folder) {
        EXPECT_TRUE(QDir().mkpath(folder)) << qPrintable(folder);
        setVariable(variable, QFile::encodeName(folder));
    };
    place("HOME", home());
    place("XDG_DATA_HOME", home() + QStringLiteral("/.local/share"));
    place("XDG_CONFIG_HOME", home() + QStringLiteral("/.config"));
    place("XDG_CACHE_HOME", home() + QStringLiteral("/.cache"));
    place("XDG_STATE_HOME", home() + QStringLiteral("/.local/state"));
    place("XDG_RUNTIME_DIR", runtime());
    EXPECT_TRUE(QFile::setPermissions(runtime(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "PIPEWIRE_REMOTE", "PIPEWIRE_RUNTIME_DIR"}) {
        setVariable(name, std::nullopt);
    }
}

Sandbox::~Sandbox()
{
    // Backwards, since a variable may have been set twice.
    for (const auto& [name, value] : m_before | std::views::reverse) {
        value ? qputenv(name.constData(), *value) : qunsetenv(name.constData());
    }
}

void Sandbox::setVariable(const char* name, const std::optional<QByteArray>& value)
{
    m_before.emplace_back(name, qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt);
    value ? qputenv(name, *value) : qunsetenv(name);
}

void Sandbox::writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    EXPECT_TRUE(
        QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size())
        << qPrintable(path);
}

QByteArray Sandbox::readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool waitFor(const std::function<bool()>& predicate, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!predicate()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace vantiro::test
