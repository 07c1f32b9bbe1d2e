// The editor's side of MetaEffect: everything here goes on to the open editor, if there is one.

#include "Editor.h"
#include "MetaEffect.h"
#include "MetaWidget.h"
#include "TypeChange.h"

QWidget *MetaEffect::internalGetEffectWidget()
{
    if (m_editor)
        return m_editorWidget;
    m_editor = std::make_unique<meta::Editor>(editorContext());
    m_editorWidget = &m_editor->form();
    connect(m_editorWidget, &QObject::destroyed, this, &MetaEffect::forgetEditor);
    m_editor->build();
    return m_editorWidget;
}

// What was selected was so in the table that is gone.
void MetaEffect::forgetEditor()
{
    m_roster.selection().clear();
    m_editor.reset();
    m_editorWidget = nullptr;
}

meta::EditorContext MetaEffect::editorContext()
{
    return {*this, m_roster, m_legality, m_mapModel, m_effectLib, *this};
}

void MetaEffect::setDirty(bool dirty)
{
    m_dirty = dirty;
}

// --- The table ---

void MetaEffect::addToWidget(Effect *child, int row)
{
    if (m_editor)
        m_editor->table().addToWidget(child, row);
}

int MetaEffect::getRow(unsigned long eid)
{
    const auto known = asEid(eid);
    return m_editor && known ? m_editor->table().getRow(*known) : -1;
}

void MetaEffect::removeFromTable(unsigned long eid)
{
    const auto known = asEid(eid);
    if (m_editor && known)
        m_editor->table().removeFromTable(*known);
}

void MetaEffect::resizeTable()
{
    if (m_editor)
        m_editor->table().resizeTable();
}

void MetaEffect::refreshMetaWidget()
{
    if (m_editor)
        m_editor->refreshMetaWidget();
}

void MetaEffect::refreshWidgets()
{
    if (m_editor)
        m_editor->refreshWidgets();
}

void MetaEffect::handleValueChanged(int row, int column)
{
    if (m_editor)
        m_editor->handleValueChanged(row, column);
}

void MetaEffect::handleCurrentChanged(int row, int)
{
    if (m_editor)
        m_editor->handleCurrentChanged(row);
}

void MetaEffect::handleSelectionChanged()
{
    if (m_editor)
        m_editor->handleSelectionChanged();
}

void MetaEffect::handleSharedPropertyChanged(int, int) {}

void MetaEffect::handleClicked(int row, int column, int button, const QPoint &)
{
    if (m_editor)
        m_editor->edits().handleClicked(row, column, button);
}

void MetaEffect::handleHeaderClicked(int column)
{
    if (m_editor)
        m_editor->table().handleHeaderClicked(column);
}

void MetaEffect::handleContextMenuRequested(int, int, const QPoint &pos)
{
    if (m_editor)
        m_editor->handleContextMenuRequested(pos);
}

void MetaEffect::handleNewEffectClicked()
{
    if (m_editor)
        m_editor->edits().handleNewEffectClicked();
}

// Works without an editor, too.
void MetaEffect::changeEffectType(Effect *child, const QString &newType)
{
    if (child)
        meta::TypeChange(m_editor ? &m_editor->form() : nullptr, editorContext())
            .change(*child, newType);
}

// --- The time panel ---

void MetaEffect::refreshStartTimeEditor(Effect *child)
{
    if (m_editor)
        m_editor->panel().refreshStartTimeEditor(child);
}

void MetaEffect::refreshEndTimeEditor(Effect *child)
{
    if (m_editor)
        m_editor->panel().refreshEndTimeEditor(child);
}

void MetaEffect::refreshStartFixed()
{
    if (m_editor)
        m_editor->panel().refreshStartFixed();
}

void MetaEffect::refreshStartLinked()
{
    if (m_editor)
        m_editor->panel().refreshStartLinked();
}

void MetaEffect::refreshEndFixed()
{
    if (m_editor)
        m_editor->panel().refreshEndFixed();
}

void MetaEffect::refreshEndLinked()
{
    if (m_editor)
        m_editor->panel().refreshEndLinked();
}

void MetaEffect::refreshEndCycles()
{
    if (m_editor)
        m_editor->panel().refreshEndCycles();
}

void MetaEffect::startFixedToggled(bool on)
{
    if (m_editor)
        m_editor->panel().startFixedToggled(on);
}

void MetaEffect::startLinkedToggled(bool on)
{
    if (m_editor)
        m_editor->panel().startLinkedToggled(on);
}

void MetaEffect::startFixedTimeChanged(const QString &text)
{
    if (m_editor)
        m_editor->panel().startFixedTimeChanged(text);
}

void MetaEffect::startLinkStartToggled(bool on)
{
    if (m_editor)
        m_editor->panel().startLinkStartToggled(on);
}

void MetaEffect::startLinkEndToggled(bool on)
{
    if (m_editor)
        m_editor->panel().startLinkEndToggled(on);
}

void MetaEffect::startLinkEffectActivated(int index)
{
    if (m_editor)
        m_editor->panel().startLinkEffectActivated(index);
}

void MetaEffect::startLinkOffsetChanged(const QString &text)
{
    if (m_editor)
        m_editor->panel().startLinkOffsetChanged(text);
}

void MetaEffect::endFixedToggled(bool on)
{
    if (m_editor)
        m_editor->panel().endFixedToggled(on);
}

void MetaEffect::endLinkedToggled(bool on)
{
    if (m_editor)
        m_editor->panel().endLinkedToggled(on);
}

void MetaEffect::endCyclesToggled(bool on)
{
    if (m_editor)
        m_editor->panel().endCyclesToggled(on);
}

void MetaEffect::endFixedTimeChanged(const QString &text)
{
    if (m_editor)
        m_editor->panel().endFixedTimeChanged(text);
}

void MetaEffect::endLinkStartToggled(bool on)
{
    if (m_editor)
        m_editor->panel().endLinkStartToggled(on);
}

void MetaEffect::endLinkEndToggled(bool on)
{
    if (m_editor)
        m_editor->panel().endLinkEndToggled(on);
}

void MetaEffect::endLinkEffectActivated(int index)
{
    if (m_editor)
        m_editor->panel().endLinkEffectActivated(index);
}

void MetaEffect::endLinkOffsetChanged(const QString &text)
{
    if (m_editor)
        m_editor->panel().endLinkOffsetChanged(text);
}

void MetaEffect::endCyclesChanged(int value)
{
    if (m_editor)
        m_editor->panel().endCyclesChanged(value);
}
