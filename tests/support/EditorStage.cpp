#include "EditorStage.h"

#include "ChildKeys.h"
#include "EffectHost.h"
#include "GroupListView.h"
#include "GroupPickerDialog.h"
#include "LogCapture.h"
#include "Offset.h"
#include "RosterBuilder.h"
#include "TimeResolver.h"

#include <QApplication>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

using meta::Millis;
using meta::Offset;
using meta::RuleKeys;
namespace keys = meta::keys;
namespace rule = meta::rule;

WidgetStub::WidgetStub(MapModel *map, const QString &type, quint32 eid) : StubEffect(map, eid)
{
    setProperty(QStringLiteral("type"), type);
    m_dirty = false;
    changes.clear();
}

WidgetStub::~WidgetStub()
{
    delete m_widget;
}

QWidget *WidgetStub::internalGetEffectWidget()
{
    ++widgetRequests;
    if (!m_widget) {
        m_widget = new QWidget;
        m_widget->setObjectName(QStringLiteral("parameters of ") + text("eid"));
        auto *layout = new QVBoxLayout(m_widget);
        layout->addWidget(new QLabel(QStringLiteral("Level")));
        layout->addWidget(new QLineEdit);
    }
    return m_widget;
}

EditorStage::EditorStage()
{
    for (const char *name : {"Chase", "Selection", "Stub", "Text", "White Fade"}) {
        const QString type = QString::fromLatin1(name);
        factory.addType(type, [type](MapModel *made) { return new WidgetStub(made, type); });
    }
    rehearsal::StageLight *light = map.addLight(1, QStringLiteral("Lamp"), {0.5, 0.5});
    map.addGroup(10, QStringLiteral("Roof"), ChasingGroup, {light});
    map.addGroup(11, QStringLiteral("Windows"), ChasingGroup, {light});
    map.addGroup(12, QStringLiteral("Door"), SynchronizedGroup, {light});
    map.addGroup(13, QStringLiteral("Lamp"), LeafGroup, {light});
}

WidgetStub *EditorStage::add(quint32 eid)
{
    auto *child = new WidgetStub(&map, QStringLiteral("Stub"), eid);
    child->with("name", QStringLiteral("Child %1").arg(eid));
    effect.addChild(child);
    return child;
}

MetaWidget &EditorStage::open()
{
    effect.internalGetEffectWidget();
    form().show();
    if (!QTest::qWaitForWindowActive(&form()))
        qFatal("the editor's window did not become active");
    return form();
}

MetaWidget &EditorStage::form() const
{
    auto *form = qobject_cast<MetaWidget *>(effect.editorWidget());
    if (!form)
        qFatal("the editor is not open");
    return *form;
}

QStringList EditorStage::row(int row) const
{
    QStringList texts;
    for (int column = 0; column < table().columnCount(); ++column)
        texts.append(table().text(row, column));
    return texts;
}

QStringList EditorStage::column(int column) const
{
    QStringList texts;
    for (int row = 0; row < table().rowCount(); ++row)
        texts.append(table().text(row, column));
    return texts;
}

QStringList EditorStage::items(const QComboBox *chooser)
{
    QStringList texts;
    for (int i = 0; i < chooser->count(); ++i)
        texts.append(chooser->itemText(i));
    return texts;
}

// --- What a user does ---

void EditorStage::click(int row, int column, Qt::KeyboardModifiers modifiers,
                        Qt::MouseButton button)
{
    const QModelIndex index = table().model()->index(row, column);
    table().scrollTo(index);
    QTest::mouseClick(table().viewport(), button, modifiers, table().visualRect(index).center());
}

void EditorStage::clickHeader(int column)
{
    QHeaderView *header = table().horizontalHeader();
    const int x = header->sectionViewportPosition(column) + header->sectionSize(column) / 2;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {x, header->height() / 2});
}

void EditorStage::typeIntoCell(int row, int column, const QString &text)
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

void EditorStage::typeInto(QLineEdit &field, const QString &text)
{
    QTest::mouseClick(&field, Qt::LeftButton);
    field.selectAll();
    if (text.isEmpty())
        QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, text);
}

void EditorStage::answerPicker(const QString &name)
{
    QTimer::singleShot(0, qApp, [name] {
        auto *dialog = qobject_cast<GroupPickerDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            qFatal("there is no group picker");
        if (name.isEmpty()) {
            QTest::keyClick(dialog, Qt::Key_Escape);
            return;
        }
        const QList<QTreeWidgetItem *> items =
            dialog->m_groupListView->findItems(name, Qt::MatchExactly);
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
QString otherRule(const char *side, const RuleKeys &rule, const Effect &effect,
                  const MetaWidget &form)
{
    const auto name = [side](const char *role) {
        return QByteArray("m_").append(side).append(role);
    };
    const auto isOn = [&](const char *role) {
        return child<QRadioButton>(form, name(role))->isChecked();
    };
    const quint32 type = rule.type.read(effect);
    if ((type == rule::fixed && !isOn("FixedRadioButton"))
        || (type == rule::linked && !isOn("LinkedRadioButton")))
        return QStringLiteral("another rule is switched on");
    if (isOn("LinkStartRadioButton") != rule.linkStart.read(effect))
        return QStringLiteral("another link side is switched on");
    const QString seconds = child<QLineEdit>(form, name("FixedLineEdit"))->text();
    const Millis time = Millis::fromSecondsText(seconds).value_or(Millis());
    if (time.secondsText() != rule.fixedTime.read(effect).secondsText())
        return QStringLiteral("the fixed time is shown as ") + seconds;
    const QString offsetSeconds = child<QLineEdit>(form, name("LinkOffsetLineEdit"))->text();
    const Offset offset = Offset::fromSecondsText(offsetSeconds).value_or(Offset());
    if (offset.storedText() != rule.linkOffset.read(effect).storedText())
        return QStringLiteral("the offset is shown as ") + offsetSeconds;
    const auto isEnabled = [&](const char *role) {
        return child<QWidget>(form, name(role))
            ->isEnabledTo(child<QGroupBox>(form, name("ButtonGroup")));
    };
    if (type <= rule::cycles
        && (isEnabled("FixedLineEdit") != (type == rule::fixed)
            || isEnabled("LinkEffectComboBox") != (type == rule::linked)
            || isEnabled("LinkOffsetLineEdit") != (type == rule::linked)))
        return QStringLiteral("the fields of another rule are enabled");
    return {};
}

QString otherRules(const Effect &effect, const MetaWidget &form)
{
    const QString start = otherRule("start", keys::startRule, effect, form);
    if (!start.isEmpty())
        return QStringLiteral("start: ") + start;
    const QString end = otherRule("end", keys::endRule, effect, form);
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

QStringList EditorStage::selectedEids()
{
    static const QRegularExpression eid(QStringLiteral("<property key=\"eid\">([^<]*)<"));
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    effect.copyEffect(stream);
    QStringList found;
    const QStringList pieces = text.split(QStringLiteral("<EFFECT-ENTRY>"), Qt::SkipEmptyParts);
    for (const QString &piece : pieces)
        found.append(eid.match(piece).captured(1));
    return found;
}

QString EditorStage::insanity()
{
    const QStringList rowEids = column(8);
    if (sorted(rowEids) != sorted(eids()))
        return QStringLiteral("rows %1, children %2").arg(sorted(rowEids), sorted(eids()));

    QStringList highlighted;
    for (const int row : table().selectedRows())
        highlighted.append(table().text(row, 8));
    const bool hasChild = highlighted.size() == 1;
    const QStringList selected = selectedEids();
    if (selected != (hasChild ? highlighted : QStringList()))
        return QStringLiteral("highlighted %1, selected %2")
            .arg(highlighted.join(u' '), selected.join(u' '));

    const MetaWidget &editor = form();
    if (editor.m_startButtonGroup->isEnabled() != hasChild
        || editor.m_endButtonGroup->isEnabled() != hasChild)
        return QStringLiteral(
            "the panel is enabled without a selected child, or disabled with one");
    if (hasChild) {
        const QString shown = otherRules(*effect.getEffect(selected.first().toULong()), editor);
        if (!shown.isEmpty())
            return QStringLiteral("the panel does not show %1: %2").arg(highlighted.first(), shown);
    }
    return {};
}

QString EditorStage::staleTimes(bool *isLoop) const
{
    const LogCapture warnings(QtWarningMsg);
    RosterBuilder copies;
    const EffectList children = effect.getEffects();
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
