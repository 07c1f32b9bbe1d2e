#include "TableEdits.h"

#include "ChildKeys.h"
#include "ChildRoster.h"
#include "EffectColumns.h"
#include "EffectLib.h"
#include "Group.h"
#include "GroupPickerDialog.h"
#include "MapModel.h"
#include "MetaWidget.h"

#include <QComboBox>
#include <QGroupBox>
#include <QPointer>

namespace meta {

namespace {

constexpr int leftButton = 1;

void storeFade(const TimeKey &key, Effect &child, const QString &seconds)
{
    key.write(child, Millis::fromSecondsText(seconds).value_or(Millis()));
}

} // namespace

Effect *TableEdits::childOfRow(int row) const
{
    const std::optional<quint32> eid = eidOfRow(*m_form.m_effectTable, row);
    Effect *last = nullptr;
    if (eid) {
        const EffectList children = m_context.roster.children();
        for (Effect *child : children) {
            if (keys::eid.read(*child) == *eid)
                last = child;
        }
    }
    return last;
}

void TableEdits::handleValueChanged(int row, int column)
{
    Effect *child = childOfRow(row);
    if (!child)
        return;
    const QString text = m_form.m_effectTable->text(row, column);
    switch (column) {
    case NameColumn:
        keys::name.writeText(*child, text);
        // Even when another child's parameters are shown.
        m_form.m_effectGroupBox->setTitle(text + QStringLiteral(" Parameters"));
        break;
    case TypeColumn: m_context.port.changeEffectType(child, text); break;
    case GroupColumn:
        keys::gid.write(*child, static_cast<quint32>(m_context.port.getGID(text)));
        break;
    case PriorityColumn:
        keys::priority.writeText(*child, text);
        m_context.roster.sort();
        break;
    case StartColumn: storeStart(*child, text); break;
    case EndColumn: storeEnd(*child, text); break;
    case FadeInColumn: storeFade(keys::fadeIn, *child, text); break;
    case FadeOutColumn: storeFade(keys::fadeOut, *child, text); break;
    default: break;
    }
}

void TableEdits::storeStart(Effect &child, const QString &seconds)
{
    keys::startRule.type.write(child, rule::fixed);
    keys::startRule.fixedTime.write(child, Millis::fromSecondsText(seconds).value_or(Millis()));
    m_context.port.updateEffectTimes();
    m_context.port.updateEndTime();
}

// The cell shows when the child ends; what is stored is how long it lasts from its present begin.
void TableEdits::storeEnd(Effect &child, const QString &seconds)
{
    keys::endRule.type.write(child, rule::fixed);
    const Millis begin = keys::begin.read(child);
    const Millis end = Millis::fromSecondsText(seconds).value_or(Millis());
    keys::endRule.fixedTime.write(child, end > begin ? end.minusWrapping(begin) : Millis());
    m_context.port.updateEffectTimes();
    m_context.port.updateEndTime();
}

// --- Groups and new children ---

void TableEdits::handleClicked(int row, int column, int button)
{
    if (button != leftButton || column != GroupColumn)
        return;
    if (Effect *child = childOfRow(row))
        pickGroup(*child, m_form.m_effectTable->model()->index(row, column), false);
}

void TableEdits::handleNewEffectClicked()
{
    EffectLib *effectLib = m_context.effectLib;
    Effect *child =
        effectLib ? effectLib->effectMaker(m_form.m_effectComboBox->currentText()) : nullptr;
    if (!child) {
        qWarning("In file %s, line %d: Out of memory", "MetaEffect", __LINE__);
        return;
    }
    child->init();
    keys::eid.write(*child, m_context.roster.nextEid());
    keys::startRule.type.write(*child, rule::fixed);
    keys::startRule.fixedTime.write(*child, Millis());
    keys::endRule.type.write(*child, rule::cycles);
    keys::endCycleCount.write(*child, 1);
    keys::name.writeText(*child, QStringLiteral("Effect ")
                                     + QString::number(m_context.roster.takeNameNumber()));
    m_context.port.addChild(child);
    m_context.port.updateEffectTimes();
    pickGroup(*child, {}, true);
}

void TableEdits::pickGroup(Effect &child, const QPersistentModelIndex &cell, bool isNew)
{
    EditorPort &port = m_context.port;
    const QPointer<Effect> effect(&m_context.effect);
    const QPointer<MetaWidget> form(&m_form);
    const QPointer<Effect> picked(&child);
    const quint32 formerGid = keys::gid.read(child);
    const QPointer<GroupPickerDialog> dialog(new GroupPickerDialog(
        m_context.map, &child, &m_form, QStringLiteral("Group Picker"), true, Qt::WindowFlags()));
    bool isAccepted = false; // a dialog that goes with its form returns no answer
    QObject::connect(dialog, &QDialog::accepted, dialog, [&isAccepted] { isAccepted = true; });
    dialog->exec();
    // Meanwhile the host may have deleted each of them, and with the form this object.
    if (picked && !isAccepted)
        keys::gid.write(*picked, formerGid);
    if (picked && isAccepted && form) {
        const Group *group =
            m_context.map ? m_context.map->getGroup(keys::gid.read(*picked)) : nullptr;
        const int row = cell.isValid() ? cell.row() : port.getRow(keys::eid.read(*picked));
        if (group && row >= 0)
            m_form.m_effectTable->setText(row, GroupColumn, group->name());
    }
    if (effect && isNew)
        port.setDirty(true);
    delete dialog;
}

} // namespace meta
