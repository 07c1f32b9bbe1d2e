#pragma once

#include <QPointer>
#include <QWidget>

class Effect;

namespace meta {

/// The place in the editor where the selected child's own parameter widget stands.
class ParameterArea
{
public:
    /// @param frame lent; the widgets become its children
    explicit ParameterArea(QWidget &frame) : m_frame(frame) {}
    Q_DISABLE_COPY_MOVE(ParameterArea)

    /// Shows the child's widget, if it has one, in the place of the former one.
    void show(Effect &child);
    /// Hides the widget. It is never destroyed here: it is its effect's.
    void hide();

private:
    void placeInTabOrder();

    QWidget &m_frame;
    QPointer<QWidget> m_widget; ///< its effect may delete it
};

} // namespace meta
