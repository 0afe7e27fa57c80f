// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Links.h"

#include <algorithm>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    const QString scheme = u"vantiro:"_s;
    constexpr qsizetype longestShown = 40;
    constexpr qsizetype longestTraced = 200;

    /// In small letters, as far as they are ASCII: QString makes those of some others too, such as the Kelvin sign.
    QString small(QString text)
    {
        std::ranges::transform(text, text.begin(),
            [](QChar sign) { return sign >= u'A' && sign <= u'Z' ? QChar(sign.unicode() + (u'a' - u'A')) : sign; });
        return text;
    }

    bool isOurs(const QString& url)
    {
        return small(url.left(scheme.size())) == scheme;
    }

    bool belongsToWord(QChar sign)
    {
        return (sign >= u'a' && sign <= u'z') || (sign >= u'0' && sign <= u'9') || u"-._"_s.contains(sign);
    }

    QString cut(const QString& text, qsizetype length)
    {
        return text.size() > length ? text.first(length) + u'…' : text;
    }

    /// One line, whatever the link holds.
    QString traceable(const QString& url)
    {
        QString text = cut(url, longestTraced);
        std::ranges::replace_if(text, [](QChar sign) { return sign < u' ' || sign > u'~'; }, u'?');
        return text;
    }

}  // namespace

Links::Links(AppModel& model, ModelFlows& flows, ShowGuide showGuide)
    : m_model(model)
    , m_flows(flows)
    , m_showGuide(std::move(showGuide))
{ }

QString Links::command(const QString& url)
{
    const QString start = scheme + u"//"_s;
    if (!isOurs(url) || url.size() > longest || url.mid(scheme.size(), 2) != u"//") {
        return {};
    }
    const auto begin = url.begin() + start.size();
    const auto end = std::find_if(begin, url.end(), [](QChar sign) { return u"/?#"_s.contains(sign); });
    const QString word = small(QString(begin, end - begin));
    return std::ranges::all_of(word, belongsToWord) ? word : QString();
}

Links::Outcome Links::open(const QString& url)
{
    if (!isOurs(url)) {
        return Outcome::quiet;
    }
    const QString word = command(url);
    if (word == u"guide") {
        m_showGuide();
        return Outcome::visible;
    }
    const bool isAllowed = m_model.allowsURLControl();
    m_model.trace().line(
        [&] { return u"link: %1, allowed %2"_s.arg(traceable(url), isAllowed ? u"true"_s : u"false"_s); });
    if (isAllowed) {
        const auto before = m_model.errorMessage();
        const Outcome outcome = obey(word);
        const auto& now = m_model.errorMessage();
        return now && now != before ? Outcome::visible : outcome;
    }
    m_model.setError(tr("A link asked Vantiro to %1. Links are ignored until you allow them in Settings.")
            .arg(word.isEmpty() ? tr("act") : cut(word, longestShown)));
    return Outcome::visible;
}

Links::Outcome Links::obey(const QString& command)
{
    const bool takeRuns = m_model.recorder().has_value();
    if (command == u"record") {
        if (!takeRuns) {
            m_flows.takes().startTake();
        }
    } else if (command == u"stop") {
        if (takeRuns) {
            m_flows.takes().stopTake();
        }
    } else if (command == u"toggle") {
        m_flows.takes().toggleTake();
    } else if (command == u"stop-playback") {
        m_flows.playback().stopPlayback();
    } else if (command == u"play") {
        if (const auto newest = m_model.newestTake()) {
            m_flows.playback().play(*newest);
        }
        return Outcome::visible;
    } else if (command == u"takes" || command == u"deck") {
        m_model.setShowsTakes(command == u"takes");
        return Outcome::visible;
    } else if (command == u"simple" || command == u"advanced") {
        m_model.setIsAdvanced(command == u"advanced");
        m_model.setShowsTakes(false);
        return Outcome::visible;
    }
    return Outcome::quiet;
}

}  // namespace vantiro
