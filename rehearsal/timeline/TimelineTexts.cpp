#include "TimelineTexts.h"

#include "TimeText.h"

#include <cmath>

namespace rehearsal {

namespace {

enum RuleCode : unsigned long { FixedRule = 0, CyclesRule = 2 };

} // namespace

QString TimelineTexts::line(int row) const
{
    const TimelineRow &child = m_model.row(row);
    return tr("%1: %2; %3; %4").arg(title(child), span(child), startRule(child), endRule(child));
}

QString TimelineTexts::toolTip(int row) const
{
    const TimelineRow &child = m_model.row(row);
    QStringList lines{tr("%1, EID %2").arg(child.type).arg(child.eid), span(child),
                      startRule(child), endRule(child)};
    lines += fades(child);
    for (QString &text : lines)
        text = text.toHtmlEscaped();
    return QStringLiteral("<p style='white-space:pre'><b>%1</b><br>%2</p>")
        .arg(title(child).toHtmlEscaped(), lines.join(QStringLiteral("<br>")));
}

QString TimelineTexts::title(const TimelineRow &row) const
{
    return row.name.isEmpty() ? tr("(no name)") : row.name;
}

QString TimelineTexts::span(const TimelineRow &row) const
{
    const QString length =
        row.duration() > 0 ? secondsText(double(row.duration())) : tr("no length");
    return tr("%1 – %2 (%3)").arg(timeText(row.begin), timeText(row.end), length);
}

QString TimelineTexts::startRule(const TimelineRow &row) const
{
    if (row.startLink.kind != LinkKind::None)
        return tr("starts %1").arg(linkWords(row.startLink)) + faultWords(row.startLink);
    if (row.effect && row.effect->getPropertyULong(QStringLiteral("starttype")) == FixedRule) {
        const auto ms = double(row.effect->getPropertyULong(QStringLiteral("startfixedtime")));
        return tr("starts at %1").arg(secondsText(ms));
    }
    return tr("keeps its start");
}

QString TimelineTexts::endRule(const TimelineRow &row) const
{
    if (row.endLink.kind != LinkKind::None)
        return tr("ends %1").arg(linkWords(row.endLink)) + faultWords(row.endLink);
    if (row.endFollowsBegin && row.effect) {
        if (row.effect->getPropertyULong(QStringLiteral("endtype")) == CyclesRule) {
            const auto cycles = int(row.effect->getPropertyULong(QStringLiteral("endcyclecount")));
            return tr("lasts %n cycle(s)", nullptr, cycles);
        }
        const auto ms = double(row.effect->getPropertyULong(QStringLiteral("endfixedtime")));
        return tr("lasts %1").arg(secondsText(ms));
    }
    return tr("keeps its end");
}

QString TimelineTexts::linkWords(const TimelineLink &link) const
{
    QString target = tr("EID %1").arg(link.targetEid);
    if (link.target >= 0 && !m_model.row(link.target).name.isEmpty())
        target = tr("“%1”").arg(m_model.row(link.target).name);
    const bool toBegin = link.targetEdge == Edge::Begin;
    if (link.offsetMs == 0)
        return toBegin ? tr("with the start of %1").arg(target)
                       : tr("with the end of %1").arg(target);
    const QString distance = secondsText(std::abs(link.offsetMs));
    if (link.offsetMs > 0)
        return toBegin ? tr("%1 after the start of %2").arg(distance, target)
                       : tr("%1 after the end of %2").arg(distance, target);
    return toBegin ? tr("%1 before the start of %2").arg(distance, target)
                   : tr("%1 before the end of %2").arg(distance, target);
}

QString TimelineTexts::faultWords(const TimelineLink &link) const
{
    if (link.kind == LinkKind::Broken)
        return tr(" – there is no such effect");
    if (link.kind == LinkKind::Looping)
        return tr(" – the links form a loop");
    return {};
}

QStringList TimelineTexts::fades(const TimelineRow &row) const
{
    QStringList lines;
    if (row.fadeIn > 0)
        lines += tr("fades in for %1").arg(secondsText(row.fadeIn));
    if (row.fadeOut > 0)
        lines += tr("fades out for %1").arg(secondsText(row.fadeOut));
    return lines;
}

} // namespace rehearsal
