#include "Editor.h"

#include "ChildKeys.h"
#include "ChildRoster.h"
#include "EffectColumns.h"
#include "FormConnections.h"
#include "MetaWidget.h"
#include "OfferedTypes.h"

#include <QComboBox>
#include <QGroupBox>

namespace meta {

Editor::Editor(const EditorContext &context)
    : m_context(context),
      m_form(*new MetaWidget),
      m_table(*m_form.m_effectTable, m_context),
      m_parameters(*m_form.m_effectParameterFrame),
      m_panel(m_form, m_context),
      m_edits(m_form, m_context)
{
}

Editor::~Editor() = default;

void Editor::build()
{
    m_form.m_effectTable->hideColumn(EidColumn);
    fillTable();
    m_form.m_effectComboBox->addItems(offeredTypes(hostTypes(m_context.effectLib)));
    m_table.setInitialWidths();
    connectForm(m_form, m_context.effect);
    fillMenu();
}

// With rows the new end is announced while the old begin still stands.
void Editor::fillTable()
{
    m_table.appendChildren();
    if (!m_context.roster.children().isEmpty())
        m_context.port.updateEndTime();
    keys::begin.write(m_context.effect, Millis());
    m_context.port.updateEndTime();
    m_context.port.setDirty(false);
}

void Editor::fillMenu()
{
    QMenu &menu = m_form.m_popupMenu;
    const QObject *effect = &m_context.effect;
    menu.clear();
    menu.addAction(QStringLiteral("Cut Selected Effects"), effect, SLOT(handleCutEffect()));
    menu.addAction(QStringLiteral("Copy Selected Effects"), effect, SLOT(handleCopyEffect()));
    menu.addAction(QStringLiteral("Paste Selected Effects"), effect, SLOT(handlePasteEffect()));
    menu.addSeparator();
    menu.addAction(QStringLiteral("Delete Selected Effects"), effect, SLOT(handleDeleteEffect()));
}

void Editor::refreshMetaWidget()
{
    m_table.clear();
    fillTable();
    m_form.m_effectComboBox->addItems(typesOfferedAnew(hostTypes(m_context.effectLib)));
}

void Editor::select(Effect &child)
{
    m_panel.finishTyping(); // while it still means the child that was selected
    m_table.selectOnly(child);
    m_context.roster.selection().clear();
    m_context.roster.selection().append(&child);
    refreshWidgets();
}

// The selection is emptied before the widgets are blanked, or the blanks would be written into it.
void Editor::refreshWidgets()
{
    m_panel.finishTyping();
    EffectList &selection = m_context.roster.selection();
    if (selection.count() > 1)
        selection.clear();
    if (selection.isEmpty()) {
        m_parameters.hide();
        m_panel.clear();
        m_form.m_effectGroupBox->setTitle(QStringLiteral("Effect Parameters"));
        return;
    }
    Effect &child = *selection.at(0);
    m_parameters.show(child);
    m_form.m_effectGroupBox->setTitle(keys::name.readText(child) + QStringLiteral(" Parameters"));
    m_panel.show(child);
}

void Editor::handleValueChanged(int row, int column)
{
    m_edits.handleValueChanged(row, column);
    if (column != StartColumn && column != EndColumn)
        return; // a question about the type may have outlived this editor
    const EffectList &selection = m_context.roster.selection();
    if (selection.count() == 1)
        m_panel.follow(*selection.at(0));
}

void Editor::handleCurrentChanged(int row)
{
    m_form.m_effectTable->selectRow(row);
}

void Editor::handleSelectionChanged()
{
    m_panel.finishTyping(); // while it still means the child that was selected
    m_context.roster.selection() = m_table.selectedChildren();
    refreshWidgets();
}

void Editor::handleContextMenuRequested(const QPoint &position)
{
    m_form.m_popupMenu.exec(position); // the host may delete all this meanwhile
}

void Editor::showPlayState(quint32 eid, bool running)
{
    m_table.showPlayState(eid, running);
}

} // namespace meta
