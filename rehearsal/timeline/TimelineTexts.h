#pragma once

#include "TimelineModel.h"

#include <QCoreApplication>

namespace rehearsal {

/// What the timeline says of a child, in words.
class TimelineTexts
{
    Q_DECLARE_TR_FUNCTIONS(TimelineTexts)

public:
    /// The model is not owned.
    explicit TimelineTexts(const TimelineModel &model) : m_model(model) {}

    /// "Clock: 0:01.500 – 0:41.500 (40 s), starts at ..., lasts ..."
    QString line(int row) const;
    /// The same and more, as rich text of several lines.
    QString toolTip(int row) const;

private:
    QString title(const TimelineRow &row) const;
    QString span(const TimelineRow &row) const;
    QString startRule(const TimelineRow &row) const;
    QString endRule(const TimelineRow &row) const;
    QString linkWords(const TimelineLink &link) const;
    QString faultWords(const TimelineLink &link) const;
    QStringList fades(const TimelineRow &row) const;

    const TimelineModel &m_model;
};

} // namespace rehearsal
