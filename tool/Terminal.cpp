// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/Terminal.h"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vantiro::Terminal {

void print(const QString& line)
{
    std::fputs((line + u'\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

void print(const QStringList& lines)
{
    print(lines.join(u'\n'));
}

void printParagraph(const QString& text, int indent)
{
    constexpr qsizetype columns = 80;
    const QString margin(indent, u' ');
    QString line = margin;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (line.size() > indent && line.size() + word.size() >= columns) {
            print(line);
            line = margin;
        }
        line += line.size() > indent ? u' ' + word : word;
    }
    print(line);
}

void printJson(const QByteArray& text)
{
    std::fputs(text.constData(), stdout);
    if (!text.endsWith('\n')) {
        std::fputc('\n', stdout);
    }
    std::fflush(stdout);
}

int fail(const QString& sentence)
{
    std::fputs((QStringLiteral("vantiro: ") + safeName(sentence) + u'\n').toUtf8().constData(), stderr);
    return failed;
}

int misuse(const QString& sentence)
{
    fail(sentence);
    std::fputs("Try 'vantiro --help'.\n", stderr);
    return wrongUsage;
}

bool isInteractive()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool isErrorInteractive()
{
    return ::isatty(STDERR_FILENO) == 1;
}

bool hasColours()
{
    return isInteractive() && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

int columns()
{
    constexpr int usual = 80;
    constexpr int least = 20;
    struct winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return usual;
    }
    return std::max<int>(size.ws_col, least);
}

void rewriteLine(const QString& line)
{
    // Back to the first column, and clear what a longer line left behind.
    std::fputs(("\r" + line.toUtf8() + "\033[K").constData(), stdout);
    std::fflush(stdout);
}

void endLine()
{
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

QString safeName(QString name)
{
    for (QChar& letter : name) {
        if (letter.category() == QChar::Other_Control) {
            letter = QChar::ReplacementCharacter;
        }
    }
    return name;
}

QString clockText(double seconds)
{
    const auto whole = static_cast<qint64>(seconds);
    return QString::asprintf("%lld:%02lld:%02lld", static_cast<long long>(whole / 3600),
        static_cast<long long>(whole / 60 % 60), static_cast<long long>(whole % 60));
}

}  // namespace vantiro::Terminal
