#pragma once

#include "MetaEffect.h"
#include "MetaWidget.h"
#include "TableWidget.h"

#include <QLineEdit>
#include <QStringList>

/// A user at the open form of a meta effect; neither is owned.
class FormUser
{
public:
    FormUser(MetaEffect &effect, MetaWidget &form) : m_effect(&effect), m_form(&form) {}

    MetaEffect &effect() const { return *m_effect; }
    MetaWidget &form() const { return *m_form; }
    meta::TableWidget &table() const { return *m_form->m_effectTable; }

    /// The texts of a column, as the table holds them.
    QStringList column(int column) const;

    void click(int row, int column, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton) const;
    void clickHeader(int column) const;
    /// Opens the cell's editor, types over its text and presses Return.
    void typeIntoCell(int row, int column, const QString &text) const;
    /// Marks all the text of the field and types over it, key by key.
    static void typeInto(QLineEdit &field, const QString &text);
    /// The next group picker that opens gets the group of that name picked, or is cancelled when
    /// the name is empty.
    static void answerPicker(const QString &group);

    /// The eids of the selected children, in order, as copying tells them.
    QStringList selectedEids() const;
    /// Empty when table, selection and panel agree; otherwise what does not.
    QString insanity() const;
    /// Empty when every child plays when its rules say; otherwise one that does not.
    /// @param isLoop whether links form a loop, which has no right times
    QString staleTimes(bool *isLoop) const;

private:
    MetaEffect *m_effect;
    MetaWidget *m_form;
};
