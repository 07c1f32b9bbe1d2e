#pragma once

#include "EditorContext.h"
#include "EditorView.h"
#include "EffectTable.h"
#include "ParameterArea.h"
#include "TableEdits.h"
#include "TimePanel.h"

class MetaWidget;
class QPoint;

namespace meta {

/// The open editor of one meta effect: its form and what gives the form life.
class Editor final : public EditorView
{
public:
    explicit Editor(const EditorContext &context);
    /// Leaves the form, which the host may have deleted already, alone.
    ~Editor();
    Q_DISABLE_COPY_MOVE(Editor)

    MetaWidget &form() const { return m_form; }
    EffectTable &table() { return m_table; }
    TimePanel &panel() { return m_panel; }
    TableEdits &edits() { return m_edits; }

    /// Fills the new form and connects it to the slots of the meta effect, which finds this editor
    /// open by then.
    void build();
    /// Makes all rows anew. The chooser of new effects gets a second copy of the types' names,
    /// "White Fade" and "Text" included.
    void refreshMetaWidget();
    /// Appends a row for a new child.
    void append(Effect &child) { m_table.append(child); }
    /// Selects the child, and no other, and shows it.
    void select(Effect &child);
    /// Shows the parameters and the times of the selected child. With several selected the
    /// selection is emptied, so that nothing is done to children of which the user sees but one.
    void refreshWidgets();

    void handleValueChanged(int row, int column);
    void handleCurrentChanged(int row);
    void handleSelectionChanged();
    void handleContextMenuRequested(const QPoint &position);

    void showPlayState(quint32 eid, bool running) override;

private:
    void fillTable();
    void fillMenu();

    const EditorContext m_context;
    MetaWidget &m_form;
    EffectTable m_table;
    ParameterArea m_parameters;
    TimePanel m_panel;
    TableEdits m_edits;
};

} // namespace meta
