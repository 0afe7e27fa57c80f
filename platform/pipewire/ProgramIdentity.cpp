// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/ProgramIdentity.h"

#include "core/foundation/CleanText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString lastPart(const QString& path)
    {
        // Programs under Wine name their files as their own system does.
        return path.section(QRegularExpression(u"[/\\\\]"_s), -1);
    }

    /// What the client says under a key, or else what its node says.
    QString claim(const GraphProperties& client, const GraphProperties& node, const QString& key)
    {
        const QString own = client.value(key);
        return cleanText(own.isEmpty() ? node.value(key) : own);
    }

    /// A unit's name keeps `-` for itself and writes it, as each byte outside of ASCII, as `\x2d` in an application's
    /// id.
    QString unescaped(const QString& text)
    {
        const QByteArray escaped = text.toUtf8();
        QByteArray bytes;
        for (qsizetype place = 0; place < escaped.size(); ++place) {
            bool isByte = false;
            const int byte = escaped.mid(place, 2) == "\\x" ? escaped.mid(place + 2, 2).toInt(&isByte, 16) : 0;
            bytes += isByte ? static_cast<char>(byte) : escaped[place];
            place += isByte ? 3 : 0;
        }
        return QString::fromUtf8(bytes);
    }

    /// The application's id in `app[-LAUNCHER]-ID[@RANDOM].service` or `app[-LAUNCHER]-ID-RANDOM.scope`, the names that
    /// desktops give to what they start.
    QString idInUnit(QString unit)
    {
        if (!unit.startsWith("app-"_L1)) {
            return {};
        }
        if (unit.endsWith(".scope"_L1)) {
            unit.chop(6);
            unit = unit.section(u'-', 0, -2);
        } else if (unit.endsWith(".service"_L1)) {
            unit.chop(8);
            unit = unit.section(u'@', 0, 0);
        } else {
            return {};
        }
        return unit.count(u'-') < 1 ? QString() : unescaped(unit.section(u'-', -1));
    }

    bool isInterpreter(const QString& program)
    {
        static const QRegularExpression names(u"^(python|perl|ruby|node|nodejs|bash|sh|dash|java|lua|mono)[0-9.]*$"_s);
        return names.match(program).hasMatch();
    }

    QStringList applicationFolders()
    {
        return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    }

}  // namespace

ProgramLookup::ProgramLookup() : m_places{.applications = applicationFolders()} { }

ProgramLookup::ProgramLookup(Places places) : m_places(std::move(places)) { }

std::optional<ProgramIdentity> ProgramLookup::identify(const GraphProperties& client, const GraphProperties& node) const
{
    ProgramIdentity program;
    program.pid = verifiedPid(client, node);
    program.pidIsVerified = program.pid > 0;
    if (!program.pidIsVerified) {
        program.pid = claim(client, node, u"application.process.id"_s).toInt();
    }
    const QString binary = lastPart(claim(client, node, u"application.process.binary"_s));
    const QString claimedId = claim(client, node, u"application.id"_s);
    QString saidName = claim(client, node, u"application.name"_s);
    // The ALSA plug-in hides the program's name in brackets behind its own.
    static const QRegularExpression alsaPlugin(u"^(?:PipeWire )?ALSA(?: plug-in)? \\[(.*)\\]$"_s);
    if (const auto match = alsaPlugin.match(saidName); match.hasMatch()) {
        saidName = match.captured(1);
    }
    const QString ownName = program.pidIsVerified ? programName(program.pid) : QString();

    for (const QString& candidate : {claim(client, node, u"pipewire.access.portal.app_id"_s),
             program.pidIsVerified ? desktopIdFromCgroup(program.pid) : QString(),
             isApplicationId(claimedId) ? claimedId : QString(), ownName, binary, saidName}) {
        if (!candidate.isEmpty()) {
            program.identifier = candidate;
            break;
        }
    }
    for (const QString& candidate : {desktopEntryName(program.identifier), saidName, binary, ownName}) {
        if (!candidate.isEmpty()) {
            program.name = candidate;
            break;
        }
    }
    return program.identifier.isEmpty() || program.pid < 1 ? std::nullopt : std::optional(program);
}

std::int32_t ProgramLookup::verifiedPid(const GraphProperties& client, const GraphProperties& node) const
{
    // Behind the PulseAudio door the socket belongs to the server in between, so its pid says nothing of the program.
    const bool throughServer = client.value(u"client.api"_s) == "pipewire-pulse"_L1;
    if (!throughServer) {
        return client.value(u"pipewire.sec.pid"_s).toInt();
    }
    const std::int32_t claimed = claim(client, node, u"application.process.id"_s).toInt();
    const QString binary = lastPart(claim(client, node, u"application.process.binary"_s));
    return claimed > 0 && !binary.isEmpty() && lastPart(executable(claimed)) == binary ? claimed : 0;
}

QString ProgramLookup::executable(std::int32_t pid) const
{
    QString path = QFile::symLinkTarget(u"%1/%2/exe"_s.arg(m_places.processes).arg(pid));
    // So the kernel marks a program that was updated while it runs.
    if (path.endsWith(" (deleted)"_L1)) {
        path.chop(10);
    }
    return path;
}

QString ProgramLookup::desktopIdFromCgroup(std::int32_t pid) const
{
    for (const QByteArray& line : contents(u"%1/%2/cgroup"_s.arg(m_places.processes).arg(pid)).split('\n')) {
        const QString id = idInUnit(QString::fromUtf8(line.mid(line.lastIndexOf('/') + 1)));
        if (!id.isEmpty()) {
            return cleanText(id);
        }
    }
    return {};
}

QString ProgramLookup::programName(std::int32_t pid) const
{
    const QString program = lastPart(executable(pid));
    QStringList words;
    for (const QByteArray& word : contents(u"%1/%2/cmdline"_s.arg(m_places.processes).arg(pid)).split('\0')) {
        words << QString::fromUtf8(word);
    }
    if (program.startsWith("wine"_L1)) {
        for (const QString& word : words) {
            if (word.endsWith(".exe"_L1, Qt::CaseInsensitive)) {
                return cleanText(lastPart(word).chopped(4));
            }
        }
    }
    if (isInterpreter(program)) {
        for (const QString& word : words.mid(1)) {
            if (!word.startsWith(u'-') && !word.isEmpty()) {
                return cleanText(lastPart(word));
            }
        }
    }
    if (program.isEmpty()) {
        // The link of another user's process cannot be read; its short name can.
        return cleanText(QString::fromUtf8(contents(u"%1/%2/comm"_s.arg(m_places.processes).arg(pid))).trimmed());
    }
    return cleanText(program);
}

QString ProgramLookup::desktopEntryName(const QString& id) const
{
    if (id.contains(u'/')) {
        return {};
    }
    for (const QString& folder : m_places.applications) {
        bool inEntry = false;
        for (const QByteArray& line : contents(u"%1/%2.desktop"_s.arg(folder, id)).split('\n')) {
            if (line.startsWith('[')) {
                inEntry = line.trimmed() == "[Desktop Entry]";
            } else if (inEntry && line.startsWith("Name=")) {
                return cleanText(QString::fromUtf8(line.mid(5)));
            }
        }
    }
    return {};
}

bool ProgramLookup::isApplicationId(const QString& id) const
{
    static const QRegularExpression reverseDns(u"^[A-Za-z_][A-Za-z0-9_-]*(\\.[A-Za-z_][A-Za-z0-9_-]*){2,}$"_s);
    return !id.isEmpty() && (reverseDns.match(id).hasMatch() || !desktopEntryName(id).isEmpty());
}

}  // namespace vantiro
