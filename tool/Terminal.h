// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace vantiro::Terminal {

/// What a command ends with.
enum ExitCode {
    done = 0,
    failed = 1,
    wrongUsage = 2,
};

/// One line on standard output.
void print(const QString& line);
/// Running text on standard output, in lines of at most 80 columns that begin so many columns in.
void printParagraph(const QString& text, int indent);
/// JSON text on standard output, with its line end.
void printJson(const QByteArray& text);
/// One plain sentence on standard error; returns ExitCode::failed.
int fail(const QString& sentence);
/// What was wrong with the call, on standard error; returns ExitCode::wrongUsage.
int misuse(const QString& sentence);

/// Standard output is a terminal that a person looks at.
[[nodiscard]] bool isInteractive();
/// Replaces the terminal's current line, which has no line end yet.
void rewriteLine(const QString& line);
/// Ends the line that rewriteLine() wrote.
void endLine();

/// "1:02:03" from seconds.
[[nodiscard]] QString clockText(double seconds);

}  // namespace vantiro::Terminal
