// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/ProgressBar.h"

#include "tool/Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    /// Work that is done sooner needs no bar.
    constexpr auto patience = 300ms;
    constexpr auto showEvery = 100ms;
    constexpr int progressWidth = 30;

    void write(const QByteArray& text)
    {
        std::fputs(text.constData(), stderr);
        std::fflush(stderr);
    }

}  // namespace

ProgressBar::ProgressBar(QString title)
    : m_title(std::move(title))
    , m_next(Clock::now() + patience)
    , m_isInteractive(Terminal::isErrorInteractive())
{ }

ProgressBar::~ProgressBar()
{
    if (m_isShown) {
        write("\r\033[K");
    }
}

void ProgressBar::advance(double part)
{
    const auto now = Clock::now();
    if (!m_isInteractive || now < m_next) {
        return;
    }
    m_next = now + showEvery;
    m_isShown = true;
    const double done = std::clamp(part, 0.0, 1.0);
    const int lit = static_cast<int>(std::lround(done * progressWidth));
    const QString bar = QString(lit, QChar(0x2588)) + QString(progressWidth - lit, QChar(0x00B7));
    write("\r" + u"%1  %2 %3 %"_s.arg(m_title, bar).arg(static_cast<int>(done * 100), 3).toUtf8() + "\033[K");
}

}  // namespace vantiro
