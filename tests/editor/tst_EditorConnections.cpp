#include "EditorStage.h"
#include "EffectColumns.h"
#include "LogCapture.h"

#include <QContextMenuEvent>
#include <QMetaMethod>
#include <QRegularExpression>

#include <functional>
#include <optional>
#include <utility>

using enum meta::EffectColumn;

namespace {

QString textOf(const QVariant &argument)
{
    if (argument.typeId() != QMetaType::QPoint)
        return argument.toString();
    const QPoint point = argument.toPoint();
    return QStringLiteral("%1;%2").arg(point.x()).arg(point.y());
}

} // namespace

/// A meta effect that notes which of the slots for its form are called, and does nothing else.
class NotingMetaEffect : public OpenMetaEffect
{
    Q_OBJECT

public:
    using OpenMetaEffect::OpenMetaEffect;

    QStringList take() { return std::exchange(m_noted, {}); }

public slots:
    void handleNewEffectClicked() { note("handleNewEffectClicked", {}); }
    void handleDeleteSelectedEffectsClicked() { note("handleDeleteSelectedEffectsClicked", {}); }
    void handleValueChanged(int row, int column) { note("handleValueChanged", {row, column}); }
    // Goes on to the table, as clicking is about the order of these.
    void handleCurrentChanged(int row, int column)
    {
        note("handleCurrentChanged", {row, column});
        MetaEffect::handleCurrentChanged(row, column);
    }
    void handleSelectionChanged() { note("handleSelectionChanged", {}); }
    void handleSharedPropertyChanged(int row, int column)
    {
        note("handleSharedPropertyChanged", {row, column});
    }
    void handleContextMenuRequested(int row, int column, const QPoint &position)
    {
        note("handleContextMenuRequested", {row, column, position});
    }
    void handleClicked(int row, int column, int button, const QPoint &position)
    {
        note("handleClicked", {row, column, button, position});
    }
    void handleHeaderClicked(int column) { note("handleHeaderClicked", {column}); }
    void startFixedToggled(bool on) { note("startFixedToggled", {on}); }
    void startLinkedToggled(bool on) { note("startLinkedToggled", {on}); }
    void startFixedTimeChanged(const QString &text) { note("startFixedTimeChanged", {text}); }
    void startLinkStartToggled(bool on) { note("startLinkStartToggled", {on}); }
    void startLinkEndToggled(bool on) { note("startLinkEndToggled", {on}); }
    void startLinkEffectActivated(int index) { note("startLinkEffectActivated", {index}); }
    void startLinkOffsetChanged(const QString &text) { note("startLinkOffsetChanged", {text}); }
    void endFixedToggled(bool on) { note("endFixedToggled", {on}); }
    void endLinkedToggled(bool on) { note("endLinkedToggled", {on}); }
    void endCyclesToggled(bool on) { note("endCyclesToggled", {on}); }
    void endFixedTimeChanged(const QString &text) { note("endFixedTimeChanged", {text}); }
    void endLinkStartToggled(bool on) { note("endLinkStartToggled", {on}); }
    void endLinkEndToggled(bool on) { note("endLinkEndToggled", {on}); }
    void endLinkEffectActivated(int index) { note("endLinkEffectActivated", {index}); }
    void endLinkOffsetChanged(const QString &text) { note("endLinkOffsetChanged", {text}); }
    void endCyclesChanged(int value) { note("endCyclesChanged", {value}); }

private:
    void note(const char *slot, const QVariantList &arguments)
    {
        QStringList texts;
        for (const QVariant &argument : arguments)
            texts.append(textOf(argument));
        m_noted.append(QString::fromLatin1(slot) + u'(' + texts.join(u' ') + u')');
    }

    QStringList m_noted;
};

namespace {

/// The form of a noting meta effect with three children, all its fields enabled.
class NotingStage : public EditorStage
{
public:
    NotingStage()
    {
        for (const quint32 eid : {1u, 2u, 3u})
            noting.addChild(new WidgetStub(&map, QStringLiteral("Stub"), eid));
        m_form = qobject_cast<MetaWidget *>(noting.internalGetEffectWidget());
        m_form->show();
        if (!QTest::qWaitForWindowActive(m_form))
            qFatal("the editor's window did not become active");
        m_form->m_startButtonGroup->setEnabled(true);
        m_form->m_endButtonGroup->setEnabled(true);
        m_form->m_startLinkEffectComboBox->addItems({"a", "b", "c"});
        m_form->m_endLinkEffectComboBox->addItems({"a", "b", "c"});
        const auto fields = m_form->findChildren<QWidget *>();
        for (QWidget *field : fields)
            field->setEnabled(true);
        noting.take();
    }

    MetaWidget &form() { return *m_form; }
    meta::TableWidget &table() { return *m_form->m_effectTable; }
    QPoint at(int row, int column)
    {
        return table().visualRect(table().model()->index(row, column)).center();
    }

    NotingMetaEffect noting{&map, 0};

private:
    MetaWidget *m_form;
};

using Action = std::function<void(NotingStage &)>;
using Doing = std::function<void(EditorStage &)>;
using Observed = std::function<QString(EditorStage &)>;

void chooseNext(QComboBox &chooser)
{
    chooser.setFocus();
    QTest::keyClick(&chooser, Qt::Key_Down);
}

} // namespace

Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(Doing)
Q_DECLARE_METATYPE(Observed)

class tst_EditorConnections : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void userReachesTheSlot_data();
    void userReachesTheSlot();
    void clickOnAnotherRowTellsOfCurrentCellSelectionAndClickInThisOrder();
    void settersReachTheSlotsOfTheFieldsToo_data();
    void settersReachTheSlotsOfTheFieldsToo();
    void formIsConnectedToTheEffectByTheseSignalsAlone();
    void buildingAndRebuildingReachNoSlot();
    void slotDoesItsWork_data();
    void slotDoesItsWork();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EditorConnections::init()
{
    // The offscreen platform says this of every window with a minimum size.
    QTest::failOnWarning(
        QRegularExpression(QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
    m_debugLines.emplace(QtDebugMsg);
}

void tst_EditorConnections::userReachesTheSlot_data()
{
    QTest::addColumn<Action>("act");
    QTest::addColumn<QStringList>("noted");

    const auto row = [](const char *name, const Action &act, const QStringList &noted) {
        QTest::newRow(name) << act << noted;
    };
    const auto press = [](auto member) {
        return [member](NotingStage &stage) {
            QAbstractButton *button = stage.form().*member;
            QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
        };
    };
    const auto type = [](QLineEdit *MetaWidget::*member) {
        return [member](NotingStage &stage) { QTest::keyClick(stage.form().*member, Qt::Key_7); };
    };
    const auto choose = [](QComboBox *MetaWidget::*member) {
        return [member](NotingStage &stage) { chooseNext(*(stage.form().*member)); };
    };

    row("new effect", press(&MetaWidget::m_newEffectButton), {"handleNewEffectClicked()"});
    row("delete effect", press(&MetaWidget::m_deleteEffectButton),
        {"handleDeleteSelectedEffectsClicked()"});
    row("edited cell",
        [](NotingStage &stage) {
            QTest::mouseClick(stage.table().viewport(), Qt::LeftButton, {},
                              stage.at(1, PriorityColumn));
            stage.noting.take();
            auto *line = stage.table().viewport()->findChild<QLineEdit *>();
            line->selectAll();
            QTest::keyClicks(line, QStringLiteral("12"));
            QTest::keyClick(line, Qt::Key_Return);
            QCoreApplication::processEvents();
        },
        {"handleValueChanged(1 3)"});
    row("another current cell",
        [](NotingStage &stage) {
            stage.table().setCurrentCell(2, 1, QItemSelectionModel::NoUpdate);
        },
        {"handleCurrentChanged(2 1)", "handleSelectionChanged()"});
    row("another selection", [](NotingStage &stage) { stage.table().selectRow(1); },
        {"handleSelectionChanged()"});
    row("context menu",
        [](NotingStage &stage) {
            QContextMenuEvent event(QContextMenuEvent::Mouse, stage.at(2, 1), {321, 123});
            QApplication::sendEvent(stage.table().viewport(), &event);
        },
        {"handleContextMenuRequested(2 1 321;123)"});
    row("click on the current cell",
        [](NotingStage &stage) {
            const QPoint position = stage.at(1, NameColumn);
            QTest::mouseClick(stage.table().viewport(), Qt::LeftButton, {}, position);
            stage.noting.take();
            QTest::mouseClick(stage.table().viewport(), Qt::MiddleButton, {}, {10, position.y()});
        },
        {"handleClicked(1 0 4 10;29)"});
    row("click on a title",
        [](NotingStage &stage) {
            QHeaderView *header = stage.table().horizontalHeader();
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                              {header->sectionViewportPosition(PriorityColumn) + 20, 5});
        },
        {"handleHeaderClicked(3)"});

    const auto switchOn = [](QRadioButton *MetaWidget::*former, QRadioButton *MetaWidget::*button) {
        return [former, button](NotingStage &stage) {
            (stage.form().*former)->setChecked(true);
            stage.noting.take();
            QTest::mouseClick(stage.form().*button, Qt::LeftButton, {},
                              {8, (stage.form().*button)->height() / 2});
        };
    };
    const auto startFixed = &MetaWidget::m_startFixedRadioButton;
    const auto startLinked = &MetaWidget::m_startLinkedRadioButton;
    const auto startLinkStart = &MetaWidget::m_startLinkStartRadioButton;
    const auto startLinkEnd = &MetaWidget::m_startLinkEndRadioButton;
    const auto endFixed = &MetaWidget::m_endFixedRadioButton;
    const auto endLinked = &MetaWidget::m_endLinkedRadioButton;
    const auto endCycles = &MetaWidget::m_endCyclesRadioButton;
    const auto endLinkStart = &MetaWidget::m_endLinkStartRadioButton;
    const auto endLinkEnd = &MetaWidget::m_endLinkEndRadioButton;
    row("start fixed", switchOn(startLinked, startFixed),
        {"startLinkedToggled(false)", "startFixedToggled(true)"});
    row("start linked", switchOn(startFixed, startLinked),
        {"startFixedToggled(false)", "startLinkedToggled(true)"});
    row("start time", type(&MetaWidget::m_startFixedLineEdit), {"startFixedTimeChanged(7)"});
    row("start linked to a start", switchOn(startLinkEnd, startLinkStart),
        {"startLinkEndToggled(false)", "startLinkStartToggled(true)"});
    row("start linked to an end", switchOn(startLinkStart, startLinkEnd),
        {"startLinkStartToggled(false)", "startLinkEndToggled(true)"});
    row("start linked to another effect", choose(&MetaWidget::m_startLinkEffectComboBox),
        {"startLinkEffectActivated(1)"});
    row("start offset", type(&MetaWidget::m_startLinkOffsetLineEdit),
        {"startLinkOffsetChanged(7)"});
    row("end fixed", switchOn(endLinked, endFixed),
        {"endLinkedToggled(false)", "endFixedToggled(true)"});
    row("end linked", switchOn(endCycles, endLinked),
        {"endCyclesToggled(false)", "endLinkedToggled(true)"});
    row("end in cycles", switchOn(endFixed, endCycles),
        {"endFixedToggled(false)", "endCyclesToggled(true)"});
    row("duration", type(&MetaWidget::m_endFixedLineEdit), {"endFixedTimeChanged(7)"});
    row("end linked to a start", switchOn(endLinkEnd, endLinkStart),
        {"endLinkEndToggled(false)", "endLinkStartToggled(true)"});
    row("end linked to an end", switchOn(endLinkStart, endLinkEnd),
        {"endLinkStartToggled(false)", "endLinkEndToggled(true)"});
    row("end linked to another effect", choose(&MetaWidget::m_endLinkEffectComboBox),
        {"endLinkEffectActivated(1)"});
    row("end offset", type(&MetaWidget::m_endLinkOffsetLineEdit), {"endLinkOffsetChanged(7)"});
    row("cycles",
        [](NotingStage &stage) { QTest::keyClick(stage.form().m_endCyclesSpinBox, Qt::Key_Up); },
        {"endCyclesChanged(2)"});
}

void tst_EditorConnections::userReachesTheSlot()
{
    QFETCH(Action, act);
    NotingStage stage;
    act(stage);
    QTEST(stage.noting.take(), "noted");
}

void tst_EditorConnections::clickOnAnotherRowTellsOfCurrentCellSelectionAndClickInThisOrder()
{
    NotingStage stage;
    QTest::mouseClick(stage.table().viewport(), Qt::LeftButton, {}, stage.at(0, NameColumn));
    stage.noting.take();

    QTest::mouseClick(stage.table().viewport(), Qt::LeftButton, {}, {10, stage.at(2, 0).y()});

    QCOMPARE(stage.noting.take(),
             QStringList({"handleCurrentChanged(2 0)", "handleSelectionChanged()",
                          "handleSelectionChanged()", "handleClicked(2 0 1 10;49)"}));
}

void tst_EditorConnections::settersReachTheSlotsOfTheFieldsToo_data()
{
    QTest::addColumn<Action>("act");
    QTest::addColumn<QStringList>("noted");

    const auto row = [](const char *name, const Action &act, const QStringList &noted) {
        QTest::newRow(name) << act << noted;
    };
    row("start time", [](NotingStage &stage) { stage.form().m_startFixedLineEdit->setText("1"); },
        {"startFixedTimeChanged(1)"});
    row("start offset",
        [](NotingStage &stage) { stage.form().m_startLinkOffsetLineEdit->setText("2"); },
        {"startLinkOffsetChanged(2)"});
    row("duration", [](NotingStage &stage) { stage.form().m_endFixedLineEdit->setText("3"); },
        {"endFixedTimeChanged(3)"});
    row("end offset",
        [](NotingStage &stage) { stage.form().m_endLinkOffsetLineEdit->setText("4"); },
        {"endLinkOffsetChanged(4)"});
    row("cycles", [](NotingStage &stage) { stage.form().m_endCyclesSpinBox->setValue(5); },
        {"endCyclesChanged(5)"});
    // Only a user chooses.
    row("start chooser",
        [](NotingStage &stage) { stage.form().m_startLinkEffectComboBox->setCurrentIndex(2); }, {});
    row("end chooser",
        [](NotingStage &stage) { stage.form().m_endLinkEffectComboBox->setCurrentIndex(2); }, {});
    row("cell", [](NotingStage &stage) { stage.table().setText(0, NameColumn, "b"); }, {});
}

void tst_EditorConnections::settersReachTheSlotsOfTheFieldsToo()
{
    QFETCH(Action, act);
    NotingStage stage;
    act(stage);
    QTEST(stage.noting.take(), "noted");
}

void tst_EditorConnections::formIsConnectedToTheEffectByTheseSignalsAlone()
{
    EditorStage stage;
    stage.add(1);
    stage.effect.internalGetEffectWidget();
    QObjectList objects = stage.form().findChildren<QObject *>();
    objects.append(&stage.form());
    objects.append(&stage.form().m_popupMenu);
    QStringList connected;
    for (QObject *object : std::as_const(objects)) {
        const QMetaObject &meta = *object->metaObject();
        for (int index = 0; index < meta.methodCount(); ++index) {
            const QMetaMethod method = meta.method(index);
            if (method.methodType() == QMetaMethod::Signal
                && QObject::disconnect(object, method, &stage.effect, QMetaMethod()))
                connected.append((object == stage.table().horizontalHeader()
                                      ? QStringLiteral("header")
                                      : object->objectName())
                                 + u' ' + QString::fromLatin1(method.methodSignature()));
        }
    }
    connected.sort();

    QCOMPARE(connected, QStringList({"MetaWidget destroyed(QObject*)",
                                     "header sectionClicked(int)",
                                     "m_deleteEffectButton clicked(bool)",
                                     "m_effectTable clicked(int,int,int,QPoint)",
                                     "m_effectTable contextMenuRequested(int,int,QPoint)",
                                     "m_effectTable currentChanged(int,int)",
                                     "m_effectTable selectionChanged()",
                                     "m_effectTable valueChanged(int,int)",
                                     "m_endCyclesRadioButton toggled(bool)",
                                     "m_endCyclesSpinBox valueChanged(int)",
                                     "m_endFixedLineEdit textChanged(QString)",
                                     "m_endFixedRadioButton toggled(bool)",
                                     "m_endLinkEffectComboBox activated(int)",
                                     "m_endLinkEndRadioButton toggled(bool)",
                                     "m_endLinkOffsetLineEdit textChanged(QString)",
                                     "m_endLinkStartRadioButton toggled(bool)",
                                     "m_endLinkedRadioButton toggled(bool)",
                                     "m_newEffectButton clicked(bool)",
                                     "m_startFixedLineEdit textChanged(QString)",
                                     "m_startFixedRadioButton toggled(bool)",
                                     "m_startLinkEffectComboBox activated(int)",
                                     "m_startLinkEndRadioButton toggled(bool)",
                                     "m_startLinkOffsetLineEdit textChanged(QString)",
                                     "m_startLinkStartRadioButton toggled(bool)",
                                     "m_startLinkedRadioButton toggled(bool)"}));
}

void tst_EditorConnections::buildingAndRebuildingReachNoSlot()
{
    EditorStage stage;
    NotingMetaEffect noting(&stage.map, 0);
    noting.addChild(new WidgetStub(&stage.map, QStringLiteral("Chase"), 1));

    QWidget *form = noting.internalGetEffectWidget();
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form));
    noting.refreshMetaWidget();
    noting.addToWidget(noting.getEffect(1), 0);
    noting.resizeTable();

    QCOMPARE(noting.take(), QStringList());
}

void tst_EditorConnections::slotDoesItsWork_data()
{
    QTest::addColumn<Doing>("act");
    QTest::addColumn<Observed>("observed");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const Doing &act, const Observed &observed,
                        const char *expected) {
        QTest::newRow(name) << act << observed << QString::fromLatin1(expected);
    };
    const auto press = [](auto member) {
        return [member](EditorStage &stage) {
            QAbstractButton *button = stage.form().*member;
            QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
        };
    };
    const auto type = [](QLineEdit *MetaWidget::*member) {
        return [member](EditorStage &stage) {
            EditorStage::typeInto(*(stage.form().*member), QStringLiteral("7"));
        };
    };
    const auto choose = [](QComboBox *MetaWidget::*member) {
        return [member](EditorStage &stage) { chooseNext(*(stage.form().*member)); };
    };
    // What was written last into the child with eid 3, which is selected; empty if nothing.
    const auto property = [](const char *key) {
        return [key](EditorStage &stage) {
            const auto &child = dynamic_cast<WidgetStub &>(*stage.effect.getEffect(3));
            const QString start = QString::fromLatin1(key) + u'=';
            QString text;
            for (const QString &change : child.changes) {
                if (change.startsWith(start))
                    text = change.mid(start.size());
            }
            return text;
        };
    };
    const auto eids = [](EditorStage &stage) { return stage.eids().join(u' '); };
    const auto selected = [](EditorStage &stage) { return stage.selectedEids().join(u' '); };
    const auto rows = [](EditorStage &stage) { return stage.column(8).join(u' '); };

    row(
        "new effect",
        [](EditorStage &stage) {
            EditorStage::pickingGroup(
                {}, [&] { QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton); });
        },
        eids, "1 2 3 4");
    row("delete effect", press(&MetaWidget::m_deleteEffectButton), eids, "1 2");
    row(
        "edited cell",
        [](EditorStage &stage) { stage.typeIntoCell(stage.rowOf(3), 6, QStringLiteral("2.5")); },
        property("fadein"), "2500");
    row(
        "another current cell",
        [](EditorStage &stage) {
            stage.table().clearSelection();
            stage.table().setCurrentCell(stage.rowOf(2), 2, QItemSelectionModel::NoUpdate);
        },
        selected, "2");
    row(
        "another selection", [](EditorStage &stage) { stage.table().clearSelection(); }, selected,
        "");
    row(
        "click on a group",
        [](EditorStage &stage) {
            EditorStage::pickingGroup(QStringLiteral("Windows"),
                                      [&] { stage.click(stage.rowOf(3), GroupColumn); });
        },
        property("gid"), "11");
    row(
        "click on a title", [](EditorStage &stage) { stage.clickHeader(NameColumn); }, rows,
        "1 2 3");

    row(
        "start fixed",
        [press](EditorStage &stage) {
            press (&MetaWidget::m_startLinkedRadioButton)(stage);
            press (&MetaWidget::m_startFixedRadioButton)(stage);
        },
        property("starttype"), "0");
    row("start linked", press(&MetaWidget::m_startLinkedRadioButton), property("starttype"), "1");
    row("start time", type(&MetaWidget::m_startFixedLineEdit), property("startfixedtime"), "7000");
    row(
        "start linked to a start",
        [press](EditorStage &stage) {
            press (&MetaWidget::m_startLinkedRadioButton)(stage);
            press (&MetaWidget::m_startLinkEndRadioButton)(stage);
            press (&MetaWidget::m_startLinkStartRadioButton)(stage);
        },
        property("startlinkstart"), "1");
    row(
        "start linked to an end",
        [press](EditorStage &stage) {
            press (&MetaWidget::m_startLinkedRadioButton)(stage);
            press (&MetaWidget::m_startLinkStartRadioButton)(stage);
            press (&MetaWidget::m_startLinkEndRadioButton)(stage);
        },
        property("startlinkstart"), "0");
    row(
        "start linked to another effect",
        [press, choose](EditorStage &stage) {
            press (&MetaWidget::m_startLinkedRadioButton)(stage);
            choose (&MetaWidget::m_startLinkEffectComboBox)(stage);
        },
        property("startlinkeid"), "2");
    row(
        "start offset",
        [press, type](EditorStage &stage) {
            press (&MetaWidget::m_startLinkedRadioButton)(stage);
            type (&MetaWidget::m_startLinkOffsetLineEdit)(stage);
        },
        property("startlinkoffset"), "7000");
    row("end fixed", press(&MetaWidget::m_endFixedRadioButton), property("endtype"), "0");
    row("end linked", press(&MetaWidget::m_endLinkedRadioButton), property("endtype"), "1");
    row(
        "end in cycles",
        [press](EditorStage &stage) {
            press (&MetaWidget::m_endFixedRadioButton)(stage);
            press (&MetaWidget::m_endCyclesRadioButton)(stage);
        },
        property("endtype"), "2");
    row(
        "duration",
        [press, type](EditorStage &stage) {
            press (&MetaWidget::m_endFixedRadioButton)(stage);
            type (&MetaWidget::m_endFixedLineEdit)(stage);
        },
        property("endfixedtime"), "7000");
    row(
        "end linked to a start",
        [press](EditorStage &stage) {
            press (&MetaWidget::m_endLinkedRadioButton)(stage);
            press (&MetaWidget::m_endLinkEndRadioButton)(stage);
            press (&MetaWidget::m_endLinkStartRadioButton)(stage);
        },
        property("endlinkstart"), "1");
    row(
        "end linked to an end",
        [press](EditorStage &stage) {
            press (&MetaWidget::m_endLinkedRadioButton)(stage);
            press (&MetaWidget::m_endLinkStartRadioButton)(stage);
            press (&MetaWidget::m_endLinkEndRadioButton)(stage);
        },
        property("endlinkstart"), "0");
    row(
        "end linked to another effect",
        [press, choose](EditorStage &stage) {
            press (&MetaWidget::m_endLinkedRadioButton)(stage);
            choose (&MetaWidget::m_endLinkEffectComboBox)(stage);
        },
        property("endlinkeid"), "2");
    row(
        "end offset",
        [press, type](EditorStage &stage) {
            press (&MetaWidget::m_endLinkedRadioButton)(stage);
            type (&MetaWidget::m_endLinkOffsetLineEdit)(stage);
        },
        property("endlinkoffset"), "7000");
    row(
        "cycles",
        [](EditorStage &stage) { QTest::keyClick(stage.form().m_endCyclesSpinBox, Qt::Key_Up); },
        property("endcyclecount"), "6");
}

void tst_EditorConnections::slotDoesItsWork()
{
    QFETCH(Doing, act);
    QFETCH(Observed, observed);
    QFETCH(QString, expected);
    EditorStage stage;
    stage.add(1);
    stage.add(2);
    WidgetStub *child = stage.add(3);
    child->with("endtype", 2).with("endcyclecount", 5);
    stage.open();
    stage.selectEid(3);
    child->changes.clear();
    QVERIFY(observed(stage) != expected);

    act(stage);

    QCOMPARE(observed(stage), expected);
}

QTEST_MAIN(tst_EditorConnections)
#include "tst_EditorConnections.moc"
