#pragma once

#include "EditorContext.h"

#include <QPersistentModelIndex>
#include <QString>

class MetaWidget;

namespace meta {

/// What the user changes in the effect table, and new children.
///
/// A row means the child with the eid in its hidden column; where several have it, the last one in
/// list order. A row that means no child changes nothing.
class TableEdits
{
public:
    /// @param form lent; outlives this object
    TableEdits(MetaWidget &form, const EditorContext &context) : m_form(form), m_context(context) {}
    Q_DISABLE_COPY_MOVE(TableEdits)

    /// Stores the text of an edited cell. Times that are no numbers are stored as 0.
    void handleValueChanged(int row, int column);
    /// A left click on a group lets the user pick another. The host may delete the form, the meta
    /// effect and this object while the picker is up.
    void handleClicked(int row, int column, int button);
    /// Makes a child of the type shown in the form's chooser, then lets the user pick its group;
    /// the same holds.
    void handleNewEffectClicked();

private:
    Effect *childOfRow(int row) const;
    void storeStart(Effect &child, const QString &seconds);
    void storeEnd(Effect &child, const QString &seconds);
    /// @param cell the group's cell; an invalid one means that of the child's row
    /// @param isNew whether the child counts as a change of the meta effect, whatever the answer
    void pickGroup(Effect &child, const QPersistentModelIndex &cell, bool isNew);

    MetaWidget &m_form;
    const EditorContext &m_context;
};

} // namespace meta
