#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

namespace rehearsal {

/// The timeline's colours, made from a palette, light or dark.
class TimelineColours
{
public:
    explicit TimelineColours(const QPalette &palette);

    /// The bar of a type: always the same for one type, told apart by colour-blind people too, and
    /// of a lightness on which text() is read.
    QColor bar(const QString &type, bool running) const;
    /// The same type where the bar is faded out.
    QColor fadedBar(const QString &type) const;
    QColor outline(const QString &type) const;
    /// A lane of children nested this deep.
    QColor lane(int depth, bool odd) const;

    QColor base() const { return m_base; }
    QColor text() const { return m_text; }
    QColor faintText() const { return mixed(m_text, m_base, 0.4); }
    QColor line() const { return mixed(m_text, m_base, 0.86); }
    QColor strongLine() const { return mixed(m_text, m_base, 0.7); }
    QColor ruler() const { return m_ruler; }
    QColor accent() const { return m_accent; }
    QColor link() const { return mixed(m_text, m_base, 0.45); }
    QColor warning() const { return m_warning; }

private:
    /// @param part of `other`, 0 ... 1
    static QColor mixed(const QColor &colour, const QColor &other, double part);

    QColor m_base;
    QColor m_text;
    QColor m_ruler;
    QColor m_accent;
    QColor m_warning;
    bool m_isDark;
};

} // namespace rehearsal
