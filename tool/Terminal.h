// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace vantiro::Terminal {

/// What a command ends with.
enum ExitCode {
    done = 0,
    failed = 1,
    wrongUsage = 2,
};

/// One line on standard output.
void print(const QString& line);
/// Lines on standard output.
void print(const QStringList& lines);
/// Running text on standard output, in lines of at most 80 columns that begin so many columns in.
void printParagraph(const QString& text, int indent);
/// JSON text on standard output, with its line end.
void printJson(const QByteArray& text);
/// One plain sentence on standard error, whatever names it holds; returns ExitCode::failed.
int fail(const QString& sentence);
/// What was wrong with the call, on standard error; returns ExitCode::wrongUsage.
int misuse(const QString& sentence);

/// Standard output is a terminal that a person looks at.
[[nodiscard]] bool isInteractive();
/// Standard error is a terminal that a person looks at.
[[nodiscard]] bool isErrorInteractive();
/// Standard output understands colours, and the user has nothing against them (NO_COLOR in the environment).
[[nodiscard]] bool hasColours();
/// Width of the terminal behind standard output, 80 if there is none.
[[nodiscard]] int columns();
/// Replaces the terminal's current line, which has no line end yet.
void rewriteLine(const QString& line);
/// Ends the line that rewriteLine() wrote.
void endLine();

/// A line as a terminal may see it, with whatever names of files: without characters that would steer it.
[[nodiscard]] QString safeName(QString name);
/// "1:02:03" from seconds.
[[nodiscard]] QString clockText(double seconds);

}  // namespace vantiro::Terminal
