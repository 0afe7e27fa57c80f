// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/ReviewQuestions.h"

namespace vantiro::ReviewQuestions {

using namespace Qt::Literals::StringLiterals;

JevQuestion roughness()
{
    return JevQuestion::score(
        u"How rough does `moment` sound to a listener of this recorded DJ mix? Judge from `moment.facts` and the "
        u"levels in `moment`, compared with `take.typicalLevelDB`. Judge how it sounds, not the DJ's taste in music."_s,
        {
            u"Unnoticeable: a listener would hear nothing wrong."_s,
            u"Slight: an attentive listener might notice a small bump in level."_s,
            u"Noticeable: most listeners would hear a jolt, a dip in energy or a harsh edge."_s,
            u"Rough: it clearly sounds like a mistake, such as distortion or a sudden loss of level."_s,
            u"Very rough: it spoils the mix for a listener, with long distortion or the sound falling away."_s,
        });
}

JevQuestion plannedBreak()
{
    return JevQuestion::noul(
        u"Is the silence in `moment` a planned break in the set, rather than a mistake? Use `moment.start`, "
        u"`moment.duration`, `take.seconds` and the levels before and after the silence."_s,
        u"Planned: a deliberate pause, such as a break before a drop, or the quiet at the very start or end of the "
        u"take."_s,
        u"Mistake: a deck ran out, a track ended with nothing next, or the signal was lost."_s);
}

QMap<QString, JevQuestion> all()
{
    return {{u"roughness"_s, roughness()}, {u"plannedBreak"_s, plannedBreak()}};
}

QMap<QString, QList<TakeAnalysis::Moment::Kind>> applies()
{
    using Kind = TakeAnalysis::Moment::Kind;
    return {{u"roughness"_s, {Kind::clip, Kind::drop, Kind::jump}}, {u"plannedBreak"_s, {Kind::silence}}};
}

}  // namespace vantiro::ReviewQuestions
