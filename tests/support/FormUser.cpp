#include "FormUser.h"

#include "ChildKeys.h"
#include "EffectColumns.h"
#include "EffectHost.h"
#include "GroupListView.h"
#include "GroupPickerDialog.h"
#include "LogCapture.h"
#include "Offset.h"
#include "RosterBuilder.h"
#include "RuleGroup.h"
#include "TimeResolver.h"

#include <QApplication>
#include <QHeaderView>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>

using meta::EidColumn;
using meta::Millis;
using meta::Offset;
using meta::RuleKeys;
namespace keys = meta::keys;
namespace rule = meta::rule;

QStringList FormUser::column(int column) const
{
    QStringList texts;
    for (int row = 0; row < table().rowCount(); ++row)
        texts.append(table().text(row, column));
    return texts;
}

void FormUser::click(int row, int column, Qt::KeyboardModifiers modifiers,
                     Qt::MouseButton button) const
{
    const QModelIndex index = table().model()->index(row, column);
    table().scrollTo(index);
    QTest::mouseClick(table().viewport(), button, modifiers, table().visualRect(index).center());
}

void FormUser::clickHeader(int column) const
{
    QHeaderView *header = table().horizontalHeader();
    const int x = header->sectionViewportPosition(column) + header->sectionSize(column) / 2;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {x, header->height() / 2});
}

void FormUser::typeIntoCell(int row, int column, const QString &text) const
{
    const QModelIndex index = table().model()->index(row, column);
    click(row, column);
    if (!table().indexWidget(index))
        QTest::keyClick(&table(), Qt::Key_F2);
    auto *line = qobject_cast<QLineEdit *>(table().indexWidget(index));
    if (!line)
        qFatal("the cell has no line editor");
    line->selectAll();
    if (text.isEmpty())
        QTest::keyClick(line, Qt::Key_Delete);
    QTest::keyClicks(line, text);
    QTest::keyClick(line, Qt::Key_Return);
    QCoreApplication::processEvents(); // the view accepts the text from its queue
}

void FormUser::typeInto(QLineEdit &field, const QString &text)
{
    QTest::mouseClick(&field, Qt::LeftButton);
    field.selectAll();
    if (text.isEmpty())
        QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, text);
}

void FormUser::answerPicker(const QString &group)
{
    QTimer::singleShot(0, qApp, [group] {
        auto *dialog = qobject_cast<GroupPickerDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            qFatal("there is no group picker");
        if (group.isEmpty()) {
            QTest::keyClick(dialog, Qt::Key_Escape);
            return;
        }
        const QList<QTreeWidgetItem *> items =
            dialog->m_groupListView->findItems(group, Qt::MatchExactly);
        if (items.isEmpty())
            qFatal("the group is not offered");
        QTest::mouseClick(dialog->m_groupListView->viewport(), Qt::LeftButton, {},
                          dialog->m_groupListView->visualItemRect(items.first()).center());
        QTest::keyClick(dialog, Qt::Key_Return);
    });
}

// --- Sanity ---

namespace {

QString sorted(QStringList texts)
{
    std::sort(texts.begin(), texts.end());
    return texts.join(u' ');
}

// What the panel shows otherwise than the child's rule is; empty if nothing.
QString otherRule(const RuleGroup &shown, const RuleKeys &rule, const Effect &effect)
{
    const quint32 type = rule.type.read(effect);
    if ((type == rule::fixed && !shown.fixedButton->isChecked())
        || (type == rule::linked && !shown.linkedButton->isChecked()))
        return QStringLiteral("another rule is switched on");
    if (shown.linkStart->isChecked() != rule.linkStart.read(effect))
        return QStringLiteral("another link side is switched on");
    const QString seconds = shown.fixedTime->text();
    const Millis time = Millis::fromSecondsText(seconds).value_or(Millis());
    if (time.secondsText() != rule.fixedTime.read(effect).secondsText())
        return QStringLiteral("the fixed time is shown as ") + seconds;
    const QString offsetSeconds = shown.offset->text();
    const Offset offset = Offset::fromSecondsText(offsetSeconds).value_or(Offset());
    if (offset.storedText() != rule.linkOffset.read(effect).storedText())
        return QStringLiteral("the offset is shown as ") + offsetSeconds;
    if (type <= rule::cycles
        && (shown.fixedTime->isEnabledTo(shown.box) != (type == rule::fixed)
            || shown.chooser->isEnabledTo(shown.box) != (type == rule::linked)
            || shown.offset->isEnabledTo(shown.box) != (type == rule::linked)))
        return QStringLiteral("the fields of another rule are enabled");
    return {};
}

QString otherRules(const Effect &effect, const MetaWidget &form)
{
    const QString start = otherRule(group(form, QStringLiteral("start")), keys::startRule, effect);
    if (!start.isEmpty())
        return QStringLiteral("start: ") + start;
    const QString end = otherRule(group(form, QStringLiteral("end")), keys::endRule, effect);
    if (!end.isEmpty())
        return QStringLiteral("end: ") + end;
    if (keys::endRule.type.read(effect) == rule::cycles
        && !form.m_endCyclesRadioButton->isChecked())
        return QStringLiteral("end: another rule than cycles is switched on");
    const quint32 count = std::clamp(keys::endCycleCount.read(effect), 1u, 1000u);
    if (form.m_endCyclesSpinBox->value() != static_cast<int>(count))
        return QStringLiteral("another number of cycles is shown");
    return {};
}

} // namespace

QStringList FormUser::selectedEids() const
{
    static const QRegularExpression eid(QStringLiteral("<property key=\"eid\">([^<]*)<"));
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    m_effect->copyEffect(stream);
    QStringList found;
    const QStringList pieces = text.split(QStringLiteral("<EFFECT-ENTRY>"), Qt::SkipEmptyParts);
    for (const QString &piece : pieces)
        found.append(eid.match(piece).captured(1));
    return found;
}

QString FormUser::insanity() const
{
    const QString rows = sorted(column(EidColumn));
    QStringList eids;
    const EffectList children = m_effect->getEffects();
    for (const Effect *child : children)
        eids.append(keys::eid.readText(*child));
    if (rows != sorted(eids))
        return QStringLiteral("rows %1, children %2").arg(rows, sorted(eids));

    QStringList highlighted;
    for (const int row : table().selectedRows())
        highlighted.append(table().text(row, EidColumn));
    const bool hasChild = highlighted.size() == 1;
    const QStringList selected = selectedEids();
    if (selected != (hasChild ? highlighted : QStringList()))
        return QStringLiteral("highlighted %1, selected %2")
            .arg(highlighted.join(u' '), selected.join(u' '));

    const MetaWidget &editor = *m_form;
    if (editor.m_startButtonGroup->isEnabled() != hasChild
        || editor.m_endButtonGroup->isEnabled() != hasChild)
        return QStringLiteral(
            "the panel is enabled without a selected child, or disabled with one");
    if (hasChild) {
        const QString shown = otherRules(*m_effect->getEffect(selected.first().toULong()), editor);
        if (!shown.isEmpty())
            return QStringLiteral("the panel does not show %1: %2").arg(highlighted.first(), shown);
    }
    return {};
}

QString FormUser::staleTimes(bool *isLoop) const
{
    const LogCapture warnings(QtWarningMsg);
    RosterBuilder copies;
    const EffectList children = m_effect->getEffects();
    for (const Effect *child : children) {
        StubEffect &copy = copies.add(keys::eid.read(*child));
        for (const auto &property : EffectHost::properties(*child)) {
            if (property.key != keys::priority.name()) // the copies are in the right order already
                copy.setProperty(property.key, property.text);
        }
        copy.cycleTime = static_cast<quint32>(const_cast<Effect *>(child)->getCycleTime());
    }
    meta::TimeResolver(copies.roster, copies.dictionary).resolveAll();
    *isLoop = !warnings.lines().isEmpty();
    if (*isLoop)
        return {};
    for (int i = 0; i < children.count(); ++i) {
        const Effect &child = *children.at(i);
        const StubEffect &copy = copies.at(i);
        if (child.beginTime() != copy.beginTime() || child.endTime() != copy.endTime())
            return QStringLiteral("%1 plays %2 - %3, by its rules %4 - %5")
                .arg(keys::name.readText(child))
                .arg(child.beginTime())
                .arg(child.endTime())
                .arg(copy.beginTime())
                .arg(copy.endTime());
    }
    return {};
}
