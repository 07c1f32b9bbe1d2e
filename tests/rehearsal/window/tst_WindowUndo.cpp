#include "WindowEdits.h"

#include "EditorDock.h"

#include <QElapsedTimer>
#include <QGroupBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSpinBox>

#include <cmath>

using rehearsal::Playback;

namespace {

const QByteArray minimal =
    WindowScene::read(QStringLiteral(META_SOURCE_DIR "/examples/minimal.show"));

QByteArray contentOf(WindowScene &scene)
{
    return ::contentOf(scene.document().text());
}

/// How many times undo can be worked; redone afterwards.
int steps(WindowScene &scene)
{
    int count = 0;
    for (; scene.action("undoAction").isEnabled(); ++count)
        scene.trigger("undoAction");
    for (int i = 0; i < count; ++i)
        scene.trigger("redoAction");
    return count;
}

} // namespace

/// Undo and redo of what is done in the editor.
class tst_WindowUndo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useOwnHome(); }
    void init();

    void nothingIsToBeUndoneAtFirst();
    void editIsOneStepBackAndForth_data();
    void editIsOneStepBackAndForth();
    void nestedDeletionIsOneStepBackAndForth();
    void manyStepsBackAndForth();
    void redoIsDroppedByANewEdit();
    void undoToWhatIsSavedClearsTheMark();

    void selectingIsNoEdit_data();
    void selectingIsNoEdit();

    void whatIsTypedInOneGoIsOneStep();
    void whatIsTypedIntoTwoFieldsIsTwoSteps();
    void whatIsTypedBeforeAndAfterAClickIsTwoSteps();
    void whatIsTypedBeforeAndAfterAPauseIsTwoSteps();
    void keyThatIsHeldIsOneStep();
    void undoInAFieldTakesBackAllThatWasTyped();
    void undoInAParameterTakesBackAllThatWasTyped();
    void openCellHasItsOwnUndo();
    void openCellIsNotLostByUndo();
    void enteredNumberIsNotLostByUndo();

    void playingGoesOn_data();
    void playingGoesOn();
    void pausedStaysPausedAtItsPlace();
    void stoppedStaysStopped();
    void lightsDoNotJump();

    void editorComesBackWithTheSameChild();
    void editorComesBackWithItsOrder();
    void editorComesBackScrolled();
    void editorComesBackWithTheFocus_data();
    void editorComesBackWithTheFocus();
    void nestedEditorComesBackWithItsChild();
    void timelineKeepsItsView();
};

void tst_WindowUndo::init()
{
    clearHome();
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

void tst_WindowUndo::nothingIsToBeUndoneAtFirst()
{
    WindowScene scene;
    QVERIFY(!scene.action("undoAction").isEnabled());
    QVERIFY(!scene.action("redoAction").isEnabled());
    QVERIFY(!scene.window.isWindowModified());
}

void tst_WindowUndo::editIsOneStepBackAndForth_data()
{
    QTest::addColumn<int>("edit");
    for (std::size_t i = 0; i < windowEdits().size(); ++i) {
        const char *name = windowEdits()[i].name;
        if (qstrcmp(name, "nested deletion") != 0)
            QTest::newRow(name) << static_cast<int>(i);
    }
}

void tst_WindowUndo::editIsOneStepBackAndForth()
{
    QFETCH(int, edit);
    const WindowEdit &made = windowEdits()[static_cast<std::size_t>(edit)];
    WindowScene scene;
    if (made.prepare)
        made.prepare(scene);
    const int stepsBefore = steps(scene);
    // What undoing shut has to be opened again.
    if (made.prepare && stepsBefore == 0)
        made.prepare(scene);
    const QByteArray before = contentOf(scene);

    made.make(scene);
    const QByteArray after = contentOf(scene);
    QVERIFY(after != before);
    QVERIFY(scene.window.isWindowModified());
    QCOMPARE(scene.disagreement(), QString());

    scene.undo();
    QCOMPARE(difference(before, contentOf(scene)), QString());
    QCOMPARE(scene.disagreement(), QString());
    QCOMPARE(scene.window.isWindowModified(), stepsBefore > 0);

    scene.redo();
    QCOMPARE(difference(after, contentOf(scene)), QString());
    QCOMPARE(scene.disagreement(), QString());
    QVERIFY(!scene.action("redoAction").isEnabled());
    QCOMPARE(steps(scene), stepsBefore + 1);
}

// The holder's own times are 0 after the deletion, and what its rules say after the redo.
void tst_WindowUndo::nestedDeletionIsOneStepBackAndForth()
{
    WindowScene scene;
    const auto nested = [&] {
        return qobject_cast<MetaEffect *>(&scene.childOf(4))->getEffects().count();
    };
    selectInner(scene);
    const QByteArray before = contentOf(scene);
    press(*innerForm(scene).m_deleteEffectButton);
    QCOMPARE(nested(), 0);
    QCOMPARE(steps(scene), 1);
    scene.undo();
    QCOMPARE(difference(before, contentOf(scene)), QString());
    QCOMPARE(scene.disagreement(), QString());
    scene.redo();
    QCOMPARE(nested(), 0);
    QCOMPARE(scene.disagreement(), QString());
}

// Edits of all kinds, as a user of the same habits makes them every time.
void tst_WindowUndo::manyStepsBackAndForth()
{
    WindowScene scene;
    QRandomGenerator random(11);
    QList<QByteArray> contents{contentOf(scene)};
    const auto note = [&] {
        if (contentOf(scene) != contents.last())
            contents.append(contentOf(scene));
    };
    while (contents.size() <= 110) {
        const quint32 eid = 1 + random.bounded(3u);
        const QString number = QString::number(random.bounded(1, 400) / 20.0);
        switch (random.bounded(7)) {
        case 0: scene.typeIntoCell(eid, meta::NameColumn, QStringLiteral("Name") + number); break;
        case 1: scene.typeIntoCell(eid, meta::FadeOutColumn, number); break;
        case 2:
            scene.select(3);
            scene.typeInto("m_startFixedLineEdit", number);
            break;
        case 3:
            scene.select(eid);
            scene.typeInto("m_endFixedLineEdit", number);
            break;
        case 4: {
            const char *const groups[] = {"Row", "Left", "Middle", "Right"};
            pickGroup(groups[random.bounded(4)], [&] { scene.click(eid, meta::GroupColumn); });
            break;
        }
        case 5:
            scene.select(3);
            press(scene, scene.childText(3, "starttype") == u"1" ? "m_startFixedRadioButton"
                                                                 : "m_startLinkedRadioButton");
            note();
            if (scene.childText(3, "starttype") == u"1")
                press(scene, "m_startFixedRadioButton");
            break;
        default: selectInner(scene); scene.typeInto(*innerForm(scene).m_endFixedLineEdit, number);
        }
        note();
    }
    const QList<QByteArray> steps = contents;
    for (qsizetype step = steps.size() - 2; step >= 0; --step) {
        QVERIFY2(scene.action("undoAction").isEnabled(), qPrintable(QString::number(step)));
        scene.undo();
        const QString differing = difference(steps[step], contentOf(scene));
        QVERIFY2(differing.isEmpty(),
                 qPrintable(QStringLiteral("%1: %2").arg(step).arg(differing)));
        QCOMPARE(scene.disagreement(), QString());
    }
    QVERIFY(!scene.action("undoAction").isEnabled());
    QVERIFY(!scene.window.isWindowModified());
    for (qsizetype step = 1; step < steps.size(); ++step) {
        scene.redo();
        const QString differing = difference(steps[step], contentOf(scene));
        QVERIFY2(differing.isEmpty(),
                 qPrintable(QStringLiteral("%1: %2").arg(step).arg(differing)));
        QCOMPARE(scene.disagreement(), QString());
    }
    QVERIFY(!scene.action("redoAction").isEnabled());
}

void tst_WindowUndo::redoIsDroppedByANewEdit()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "One");
    scene.typeIntoCell(1, meta::NameColumn, "Two");
    scene.undo();
    QVERIFY(scene.action("redoAction").isEnabled());
    scene.typeIntoCell(2, meta::NameColumn, "Three");
    QVERIFY(!scene.action("redoAction").isEnabled());
    scene.redo();
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("One"));
    scene.undo();
    QCOMPARE(scene.childText(2, "name"), QStringLiteral("Next"));
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("One"));
}

void tst_WindowUndo::undoToWhatIsSavedClearsTheMark()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "One");
    QVERIFY(scene.window.isWindowModified());
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(!scene.window.isWindowModified());
    scene.typeIntoCell(1, meta::NameColumn, "Two");
    QVERIFY(scene.window.isWindowModified());
    scene.undo();
    QVERIFY(!scene.window.isWindowModified());
    scene.undo();
    QVERIFY(scene.window.isWindowModified());
    scene.redo();
    QVERIFY(!scene.window.isWindowModified());
}

// --- Selecting ---

void tst_WindowUndo::selectingIsNoEdit_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("show of one minute") << minuteShow();
    QTest::newRow("no counts of cycles")
        << minuteShow().replace("<property key=\"endcyclecount\">1</property>\n", "");
    QTest::newRow("example") << minimal;
}

void tst_WindowUndo::selectingIsNoEdit()
{
    QFETCH(QByteArray, text);
    WindowScene scene(text);
    for (int round = 0; round < 2; ++round) {
        for (int row = 0; row < scene.table().rowCount(); ++row)
            scene.select(scene.table().text(row, meta::EidColumn).toUInt());
    }
    QVERIFY(!scene.window.isWindowModified());
    QVERIFY(!scene.action("undoAction").isEnabled());
    // Nor does it stand between an edit and its undoing.
    const QByteArray before = contentOf(scene);
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.select(2);
    scene.undo();
    QCOMPARE(difference(before, contentOf(scene)), QString());
    QVERIFY(!scene.action("undoAction").isEnabled());
    // Nor does it drop what can be redone.
    scene.select(2);
    scene.select(1);
    scene.redo();
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Dawn"));
}

// --- Typing ---

void tst_WindowUndo::whatIsTypedInOneGoIsOneStep()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "12.75");
    QCOMPARE(scene.childText(3, "begin"), QStringLiteral("12750"));
    QCOMPARE(steps(scene), 1);
}

void tst_WindowUndo::whatIsTypedIntoTwoFieldsIsTwoSteps()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "12.75");
    scene.typeInto("m_endFixedLineEdit", "3.5");
    QCOMPARE(steps(scene), 2);
    scene.undo();
    QCOMPARE(scene.childText(3, "startfixedtime"), QStringLiteral("12750"));
    QCOMPARE(scene.childText(3, "endfixedtime"), QStringLiteral("59000"));
}

void tst_WindowUndo::whatIsTypedBeforeAndAfterAClickIsTwoSteps()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "2");
    press(scene, "m_startFixedLineEdit");
    scene.type("5");
    QCOMPARE(scene.childText(3, "startfixedtime"), QStringLiteral("25000"));
    QCOMPARE(steps(scene), 2);
}

void tst_WindowUndo::whatIsTypedBeforeAndAfterAPauseIsTwoSteps()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "2");
    QTest::qWait(1200);
    scene.type("5");
    QCOMPARE(scene.childText(3, "startfixedtime"), QStringLiteral("25000"));
    QCOMPARE(steps(scene), 2);
}

void tst_WindowUndo::keyThatIsHeldIsOneStep()
{
    WindowScene scene;
    scene.select(1);
    press(scene, "m_levelSpinBox");
    const int stepsBefore = steps(scene);
    const auto hold = [&scene](Qt::Key key) {
        for (int time = 0; time < 20; ++time) {
            QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, QString(), time > 0);
            QApplication::sendEvent(&scene.focus(), &down);
            QCoreApplication::processEvents();
        }
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(&scene.focus(), &up);
    };
    hold(Qt::Key_Down);
    const QString level = scene.childText(1, "level");
    QVERIFY(level.toDouble() < 1);
    hold(Qt::Key_Up);
    hold(Qt::Key_Down);
    QCOMPARE(scene.childText(1, "level"), level);
    QCOMPARE(steps(scene), stepsBefore + 3);
    scene.undo();
    scene.undo();
    QCOMPARE(scene.childText(1, "level"), level);
    scene.undo();
    QCOMPARE(scene.childText(1, "level"), QStringLiteral("1"));
}

void tst_WindowUndo::undoInAFieldTakesBackAllThatWasTyped()
{
    WindowScene scene;
    scene.select(3);
    scene.typeInto("m_startFixedLineEdit", "12.75");
    QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("m_startFixedLineEdit"));
    scene.undo();
    QCOMPARE(scene.childText(3, "startfixedtime"), QStringLiteral("1000"));
    QCOMPARE(scene.field<QLineEdit>("m_startFixedLineEdit").text().toDouble(), 1.0);
    QVERIFY(!scene.action("undoAction").isEnabled());
    QVERIFY(scene.action("redoAction").isEnabled());
    scene.redo();
    QCOMPARE(scene.childText(3, "startfixedtime"), QStringLiteral("12750"));
    QCOMPARE(scene.field<QLineEdit>("m_startFixedLineEdit").text().toDouble(), 12.75);
}

void tst_WindowUndo::undoInAParameterTakesBackAllThatWasTyped()
{
    WindowScene scene;
    scene.select(1);
    scene.typeInto("m_levelSpinBox", "0.25");
    QCOMPARE(scene.childText(1, "level"), QStringLiteral("0.25"));
    scene.undo();
    QCOMPARE(scene.childText(1, "level"), QStringLiteral("1"));
    QVERIFY(!scene.action("undoAction").isEnabled());
}

void tst_WindowUndo::openCellHasItsOwnUndo()
{
    WindowScene scene;
    scene.typeIntoCell(2, meta::NameColumn, "Second");
    WindowScene::openCell(scene.form(), 1, meta::NameColumn);
    scene.type("Dawn");
    scene.undo();
    QCOMPARE(scene.childText(2, "name"), QStringLiteral("Second"));
    QVERIFY(!scene.action("redoAction").isEnabled());
    QVERIFY(scene.table().isAncestorOf(QApplication::focusWidget()));
    scene.key(Qt::Key_Return);
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Rise"));
}

// By the menu, which does not take the focus from the cell.
void tst_WindowUndo::openCellIsNotLostByUndo()
{
    WindowScene scene;
    scene.typeIntoCell(2, meta::NameColumn, "Second");
    WindowScene::openCell(scene.form(), 1, meta::NameColumn);
    scene.type("Dawn");
    scene.trigger("undoAction");
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Rise"));
    QCOMPARE(scene.childText(2, "name"), QStringLiteral("Second"));
    scene.trigger("redoAction");
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Dawn"));
}

void tst_WindowUndo::enteredNumberIsNotLostByUndo()
{
    WindowScene scene;
    scene.select(1);
    press(scene, "m_endCyclesRadioButton");
    scene.typeInto("m_endCyclesSpinBox", "12");
    scene.undo();
    QCOMPARE(scene.childText(1, "endtype"), QStringLiteral("2"));
    QCOMPARE(scene.childText(1, "endcyclecount"), QStringLiteral("1"));
    scene.redo();
    QCOMPARE(scene.childText(1, "endcyclecount"), QStringLiteral("12"));
}

// --- Playing ---

void tst_WindowUndo::playingGoesOn_data()
{
    QTest::addColumn<double>("speed");
    QTest::newRow("normal") << 1.0;
    QTest::newRow("fast") << 4.0;
    QTest::newRow("slow") << 0.25;
}

void tst_WindowUndo::playingGoesOn()
{
    QFETCH(double, speed);
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.playback().setSpeed(speed);
    scene.playback().seek(5000);
    scene.playback().play();
    QElapsedTimer watch;
    watch.start();
    const auto isWhereItShouldBe = [&] {
        scene.playback().tick();
        const double expected = 5000 + static_cast<double>(watch.elapsed()) * speed;
        return std::abs(scene.playback().position() - expected) <= 34 * speed + 2;
    };
    QTest::qWait(150);
    QVERIFY(isWhereItShouldBe());
    for (int round = 0; round < 3; ++round) {
        scene.undo();
        QCOMPARE(scene.playback().state(), Playback::State::Playing);
        QVERIFY(isWhereItShouldBe());
        scene.redo();
        QTest::qWait(50);
        QVERIFY(isWhereItShouldBe());
    }
    QCOMPARE(scene.playback().speed(), speed);
    QCOMPARE(scene.timeline().position(), scene.playback().position());
}

void tst_WindowUndo::pausedStaysPausedAtItsPlace()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.playback().seek(2500);
    scene.undo();
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    QCOMPARE(scene.playback().position(), 2500u);
    QCOMPARE(scene.light(1), 0.0);
    QCOMPARE(scene.light(2), 1.0);
    QCOMPARE(scene.timeline().position(), 2500u);
}

void tst_WindowUndo::stoppedStaysStopped()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.undo();
    QCOMPARE(scene.playback().state(), Playback::State::Stopped);
    for (const quint32 uid : {1u, 2u, 3u})
        QCOMPARE(scene.light(uid), 0.0);
}

// The right light rises evenly, so it tells the time that the lights are at.
void tst_WindowUndo::lightsDoNotJump()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.playback().seek(30'000);
    scene.playback().play();
    const auto isTrue = [&] {
        const double shown = scene.light(3) * 59'000 + 1000;
        return std::abs(shown - scene.playback().position()) < 2;
    };
    for (const char *action : {"undoAction", "redoAction", "undoAction"}) {
        QTest::qWait(60);
        QVERIFY(isTrue());
        scene.action(action).trigger();
        QVERIFY(isTrue());
    }
}

// --- The editor ---

void tst_WindowUndo::editorComesBackWithTheSameChild()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.select(3);
    scene.undo();
    QCOMPARE(WindowScene::selectedEids(scene.form()), QStringList("3"));
    QCOMPARE(scene.field<QLineEdit>("m_startFixedLineEdit").text().toDouble(), 1.0);
    QVERIFY(scene.form().m_startButtonGroup->isEnabled());
    press(scene, "m_deleteEffectButton");
    QVERIFY(!scene.top().getEffect(3));
    QVERIFY(scene.top().getEffect(1));
}

void tst_WindowUndo::editorComesBackWithItsOrder()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    QHeaderView &header = *scene.table().horizontalHeader();
    const QPoint name(header.sectionViewportPosition(meta::NameColumn) + 20, header.height() / 2);
    const auto names = [&] {
        QStringList texts;
        for (int row = 0; row < scene.table().rowCount(); ++row)
            texts.append(scene.table().text(row, meta::NameColumn));
        return texts;
    };
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, name);
    QCOMPARE(names(), QStringList({"Dawn", "Inner", "Last", "Next"}));
    scene.undo();
    QCOMPARE(names(), QStringList({"Inner", "Last", "Next", "Rise"}));
    QHeaderView &again = *scene.table().horizontalHeader();
    QTest::mouseClick(again.viewport(), Qt::LeftButton, {}, name);
    QCOMPARE(names(), QStringList({"Rise", "Next", "Last", "Inner"}));
    scene.redo();
    QCOMPARE(names(), QStringList({"Next", "Last", "Inner", "Dawn"}));
}

void tst_WindowUndo::editorComesBackScrolled()
{
    WindowScene scene(crowdedShow(120));
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.select(40);
    QScrollBar &bar = *scene.table().verticalScrollBar();
    QVERIFY(bar.maximum() > 20);
    bar.setValue(bar.maximum() / 3);
    const int value = bar.value();
    scene.undo();
    QCOMPARE(scene.table().verticalScrollBar()->value(), value);
    QCOMPARE(WindowScene::selectedEids(scene.form()), QStringList("40"));
}

void tst_WindowUndo::editorComesBackWithTheFocus_data()
{
    QTest::addColumn<QByteArray>("field");
    for (const char *field :
         {"m_effectTable", "m_startFixedLineEdit", "m_endFixedLineEdit", "m_endFixedRadioButton",
          "m_effectComboBox", "m_newEffectButton", "m_fromSpinBox"})
        QTest::newRow(field) << QByteArray(field);
}

void tst_WindowUndo::editorComesBackWithTheFocus()
{
    QFETCH(QByteArray, field);
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.select(3);
    scene.field<QWidget>(field.constData()).setFocus();
    scene.undo();
    QCOMPARE(QApplication::focusWidget(), &scene.field<QWidget>(field.constData()));
    scene.redo();
    QCOMPARE(QApplication::focusWidget(), &scene.field<QWidget>(field.constData()));
}

void tst_WindowUndo::nestedEditorComesBackWithItsChild()
{
    WindowScene scene;
    selectInner(scene);
    QLineEdit *field =
        scene.form().m_effectParameterFrame->findChild<MetaWidget *>()->m_startFixedLineEdit;
    scene.typeInto(*field, "1.5");
    scene.undo();
    QCOMPARE(WindowScene::selectedEids(scene.form()), QStringList("4"));
    auto *inner = scene.form().m_effectParameterFrame->findChild<MetaWidget *>();
    QVERIFY(inner);
    QCOMPARE(WindowScene::selectedEids(*inner), QStringList("1"));
    QCOMPARE(inner->m_startFixedLineEdit->text().toDouble(), 0.0);
    QCOMPARE(QApplication::focusWidget(), inner->m_startFixedLineEdit);
}

void tst_WindowUndo::timelineKeepsItsView()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.timeline().setUnfolded({4}, true);
    for (int i = 0; i < 3; ++i)
        scene.timeline().zoomIn();
    scene.timeline().setHighlighted({3});
    const double scale = scene.timeline().pixelsPerMs();
    scene.undo();
    QCOMPARE(scene.timeline().pixelsPerMs(), scale);
    QVERIFY(scene.timeline().isUnfolded({4}));
    QCOMPARE(scene.timeline().highlighted(), rehearsal::EidPath({3}));
}

QTEST_MAIN(tst_WindowUndo)
#include "tst_WindowUndo.moc"
