#include "EditorStage.h"
#include "EffectColumns.h"
#include "EndSignals.h"
#include "LogCapture.h"
#include "TablePictures.h"
#include "TextRow.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <optional>

using meta::TableWidget;
using enum meta::EffectColumn;

class tst_EffectTableUpdates : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    // Playing
    void playStateFollowsTheFrames();
    void playStateIsTouchedOnlyWhenItChanges();
    void playStateFindsItsRowAfterSorting();
    void playStateOfAChildWithoutARowIsIgnored();
    void nameBeingTypedSurvivesTheNewPlayState();

    // Passes
    void passShowsNewTimesAndRules_data();
    void passShowsNewTimesAndRules();
    void passLeavesCellsOfUnknownRulesUntouched_data();
    void passLeavesCellsOfUnknownRulesUntouched();
    void passTouchesOnlyCellsThatChange();
    void passTouchesNothingThatIsShownAlready();
    void passOverwritesForeignTextsAndPictures();
    void passFindsItsRowsAfterSorting();
    void passShowsTheFirstChildOfARepeatedEidInAllItsRows();
    void passLeavesRowsWithoutAChildUntouched_data();
    void passLeavesRowsWithoutAChildUntouched();
    void passRecomputesTheOwnEnd();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_EffectTableUpdates::init()
{
    // The offscreen platform says this of every window with a minimum size.
    QTest::failOnWarning(
        QRegularExpression(QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Playing ---

void tst_EffectTableUpdates::playStateFollowsTheFrames()
{
    EditorStage stage;
    stage.add(1)->with("begin", 1000).with("end", 2000);
    stage.add(2)->with("begin", 0).with("end", 3000);
    stage.open();
    QCOMPARE(playStates(stage), QStringLiteral("open open"));

    stage.frameAt(0);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
    stage.frameAt(999);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
    stage.frameAt(1000);
    QCOMPARE(playStates(stage), QStringLiteral("closed closed"));
    stage.frameAt(1999);
    QCOMPARE(playStates(stage), QStringLiteral("closed closed"));
    stage.frameAt(2000);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));
}

void tst_EffectTableUpdates::playStateIsTouchedOnlyWhenItChanges()
{
    EditorStage stage;
    stage.add(1)->with("begin", 100).with("end", 200);
    stage.effect.with("loop", QStringLiteral("0"));
    stage.open();
    const QSignalSpy changes(stage.table().model(), &QAbstractItemModel::dataChanged);

    stage.frameAt(0);
    stage.frameAt(50);
    QCOMPARE(changes.count(), 0);
    stage.frameAt(100);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.last().first().toModelIndex(), stage.table().model()->index(0, NameColumn));
    stage.frameAt(110);
    stage.frameAt(150);
    QCOMPARE(changes.count(), 1);
    stage.frameAt(200);
    QCOMPARE(changes.count(), 2);
    stage.frameAt(300);
    QCOMPARE(changes.count(), 2);
}

void tst_EffectTableUpdates::playStateFindsItsRowAfterSorting()
{
    EditorStage stage;
    stage.add(1)->with("begin", 100).with("end", 200);
    stage.add(2)->with("begin", 500).with("end", 600);
    stage.open();
    stage.frameAt(0);

    stage.clickHeader(NameColumn);
    stage.frameAt(100);
    QCOMPARE(playStates(stage), QStringLiteral("closed open"));

    stage.clickHeader(NameColumn);
    QCOMPARE(playStates(stage), QStringLiteral("open closed"));
    stage.frameAt(200);
    QCOMPARE(playStates(stage), QStringLiteral("open open"));
}

void tst_EffectTableUpdates::playStateOfAChildWithoutARowIsIgnored()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("begin", 100).with("end", 200);
    stage.add(2)->with("begin", 300).with("end", 400);
    stage.open();
    stage.effect.removeFromTable(1);

    stage.frameAt(100);

    QVERIFY(child->getState());
    QCOMPARE(playStates(stage), QStringLiteral("open"));
}

void tst_EffectTableUpdates::nameBeingTypedSurvivesTheNewPlayState()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 100).with("endtype", 0).with("endfixedtime", 500);
    stage.effect.updateEffectTimes();
    stage.open();
    stage.click(0, NameColumn);
    QTest::keyClick(&stage.table(), Qt::Key_F);
    auto *line = qobject_cast<QLineEdit *>(
        stage.table().indexWidget(stage.table().model()->index(0, NameColumn)));
    QVERIFY(line);
    line->clear();
    QTest::keyClicks(line, QStringLiteral("Fla"));

    stage.frameAt(100);
    QCOMPARE(playStates(stage), QStringLiteral("closed"));
    QCOMPARE(line->text(), QStringLiteral("Fla"));
    QCOMPARE(child->text("name"), QStringLiteral("Child 1"));

    QTest::keyClicks(line, QStringLiteral("sh"));
    stage.frameAt(600);
    QCOMPARE(playStates(stage), QStringLiteral("open"));
    QTest::keyClick(line, Qt::Key_Return);
    QCoreApplication::processEvents();

    QCOMPARE(child->text("name"), QStringLiteral("Flash"));
    QCOMPARE(stage.table().text(0, NameColumn), QStringLiteral("Flash"));
    QCOMPARE(playStates(stage), QStringLiteral("open"));
}

// --- Passes ---

void tst_EffectTableUpdates::passShowsNewTimesAndRules_data()
{
    QTest::addColumn<int>("startType");
    QTest::addColumn<int>("endType");
    QTest::addColumn<QString>("shown");

    QTest::newRow("fixed") << 0 << 0 << "1.5 none, 3.5 none";
    QTest::newRow("linked start") << 1 << 0 << "60 link, 62 none";
    QTest::newRow("linked end") << 0 << 1 << "1.5 none, 61.234 link";
    QTest::newRow("both linked") << 1 << 1 << "60 link, 61.234 link";
    QTest::newRow("end in cycles") << 0 << 2 << "1.5 none, 4.5 cycle";
    QTest::newRow("linked start, end in cycles") << 1 << 2 << "60 link, 63 cycle";
}

void tst_EffectTableUpdates::passShowsNewTimesAndRules()
{
    QFETCH(int, startType);
    QFETCH(int, endType);
    EditorStage stage;
    stage.add(1)->with("endtype", 0).with("endfixedtime", 60000);
    WidgetStub *child = stage.add(2);
    child->with("startfixedtime", 1500).with("startlinkeid", 1).with("endfixedtime", 2000);
    child->with("endlinkeid", 1).with("endlinkoffset", 1234.567).with("endcyclecount", 3);

    // Whatever the cells showed before.
    for (int formerStart = 0; formerStart <= 1; ++formerStart) {
        for (int formerEnd = 0; formerEnd <= 2; ++formerEnd) {
            child->with("starttype", formerStart).with("endtype", formerEnd);
            stage.effect.internalGetEffectWidget();
            stage.effect.updateEffectTimes();
            child->with("starttype", startType).with("endtype", endType);

            stage.effect.updateEffectTimes();

            const int row = stage.rowOf(2);
            QTEST(QStringLiteral("%1 %2, %3 %4")
                      .arg(stage.table().text(row, StartColumn), pictureIn(stage, row, StartColumn),
                           stage.table().text(row, EndColumn), pictureIn(stage, row, EndColumn)),
                  "shown");
        }
    }
}

void tst_EffectTableUpdates::passLeavesCellsOfUnknownRulesUntouched_data()
{
    QTest::addColumn<QString>("startType");
    QTest::addColumn<QString>("endType");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");

    textRow("unknown start", "5", "0", "kept cycle", "2 none");
    textRow("a start in cycles", "2", "0", "kept cycle", "2 none");
    textRow("unknown end", "0", "3", "1.5 none", "kept cycle");
    textRow("both unknown", "4294967295", "77", "kept cycle", "kept cycle");
    textRow("both known", "0", "0", "1.5 none", "3.5 none");
}

void tst_EffectTableUpdates::passLeavesCellsOfUnknownRulesUntouched()
{
    QFETCH(QString, startType);
    QFETCH(QString, endType);
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("startfixedtime", 1500).with("endfixedtime", 2000).with("endtype", 2);
    stage.effect.internalGetEffectWidget();
    stage.effect.updateEffectTimes();
    const QPixmap cycle = stage.table().pixmap(0, EndColumn);
    for (const int column : {StartColumn, EndColumn}) {
        stage.table().setText(0, column, QStringLiteral("kept"));
        stage.table().setPixmap(0, column, cycle);
    }
    child->with("starttype", startType).with("endtype", endType).with("begin", 0).with("end", 0);

    stage.effect.updateEffectTimes();

    QTEST(stage.table().text(0, StartColumn) + u' ' + pictureIn(stage, 0, StartColumn), "start");
    QTEST(stage.table().text(0, EndColumn) + u' ' + pictureIn(stage, 0, EndColumn), "end");
}

void tst_EffectTableUpdates::passTouchesOnlyCellsThatChange()
{
    EditorStage stage;
    WidgetStub *first = stage.add(1);
    WidgetStub *second = stage.add(2);
    for (WidgetStub *child : {first, second})
        child->with("starttype", 0).with("endtype", 2).with("endcyclecount", 2);
    stage.open();
    stage.effect.updateEffectTimes();
    const QSignalSpy changes(stage.table().model(), &QAbstractItemModel::dataChanged);
    const auto lastChange = [&] {
        const auto cell = [&](int end) {
            const QModelIndex index = changes.last().at(end).toModelIndex();
            return QStringLiteral("%1,%2").arg(index.row()).arg(index.column());
        };
        return cell(0) + u' ' + cell(1);
    };

    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 0);

    second->setCycleTime(700);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(lastChange(), QStringLiteral("0,5 0,5"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("1.4"));

    // A broken link that is mended to the rule of before.
    first->with("starttype", 1).with("startlinkeid", 99);
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 1);

    first->with("startfixedtime", 1);
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 2);
    QCOMPARE(lastChange(), QStringLiteral("1,4 1,5"));

    second->with("endtype", 0).with("endfixedtime", 1400);
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 3);
    QCOMPARE(lastChange(), QStringLiteral("0,5 0,5"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("none"));
}

void tst_EffectTableUpdates::passTouchesNothingThatIsShownAlready()
{
    EditorStage stage;
    stage.add(1)->with("startfixedtime", 1500).with("endtype", 2).with("endcyclecount", 1);
    stage.add(2)->with("starttype", 1).with("startlinkeid", 1).with("endtype", 1);
    stage.effect.getEffect(2)->setProperty(QStringLiteral("endlinkeid"), QStringLiteral("1"));
    stage.effect.updateEffectTimes();
    stage.open();
    const QSignalSpy changes(stage.table().model(), &QAbstractItemModel::dataChanged);

    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 0);

    stage.clickHeader(NameColumn);
    stage.effect.updateEffectTimes();
    stage.effect.updateEffectTimes();
    QCOMPARE(changes.count(), 0);
}

void tst_EffectTableUpdates::passOverwritesForeignTextsAndPictures()
{
    EditorStage stage;
    stage.add(1)->with("endtype", 0).with("startfixedtime", 1500).with("endfixedtime", 500);
    stage.effect.internalGetEffectWidget();
    stage.effect.updateEffectTimes();
    TableWidget &table = stage.table();

    for (const int column : {StartColumn, EndColumn}) {
        table.setText(0, column, QStringLiteral("foreign"));
        table.setPixmap(0, column, table.pixmap(0, NameColumn));
    }
    stage.effect.updateEffectTimes();

    QCOMPARE(stage.row(0).mid(StartColumn, 2), QStringList({"1.5", "2"}));
    QCOMPARE(pictureIn(stage, 0, StartColumn), QStringLiteral("none"));
    QCOMPARE(pictureIn(stage, 0, EndColumn), QStringLiteral("none"));
}

void tst_EffectTableUpdates::passFindsItsRowsAfterSorting()
{
    EditorStage stage;
    WidgetStub *first = stage.add(1);
    WidgetStub *second = stage.add(2);
    stage.open();
    stage.effect.updateEffectTimes();
    stage.clickHeader(NameColumn);
    first->with("startfixedtime", 1000);
    second->with("startfixedtime", 2000);

    stage.effect.updateEffectTimes();
    QCOMPARE(stage.column(StartColumn), QStringList({"1", "2"}));

    stage.clickHeader(NameColumn);
    first->with("startfixedtime", 3000);
    stage.effect.updateEffectTimes();
    QCOMPARE(stage.column(StartColumn), QStringList({"2", "3"}));

    stage.effect.removeFromTable(2);
    first->with("startfixedtime", 4000);
    stage.effect.updateEffectTimes();
    QCOMPARE(stage.column(StartColumn), QStringList({"4"}));
}

void tst_EffectTableUpdates::passShowsTheFirstChildOfARepeatedEidInAllItsRows()
{
    EditorStage stage;
    stage.add(7)->with("startfixedtime", 1000);
    stage.add(7)->with("startfixedtime", 2000);
    stage.effect.internalGetEffectWidget();

    stage.effect.updateEffectTimes();

    QCOMPARE(stage.column(StartColumn), QStringList({"1", "1"}));
}

void tst_EffectTableUpdates::passLeavesRowsWithoutAChildUntouched_data()
{
    QTest::addColumn<QString>("eid");
    QTest::newRow("unknown eid") << "99";
    QTest::newRow("no number") << "abc";
    QTest::newRow("empty") << "";
}

void tst_EffectTableUpdates::passLeavesRowsWithoutAChildUntouched()
{
    QFETCH(QString, eid);
    EditorStage stage;
    stage.add(0)->with("startfixedtime", 1000);
    stage.add(1)->with("startfixedtime", 2000);
    stage.effect.internalGetEffectWidget();
    stage.table().setText(0, EidColumn, eid);
    stage.table().setText(0, StartColumn, QStringLiteral("kept"));

    stage.effect.updateEffectTimes();

    QCOMPARE(stage.column(StartColumn), QStringList({"kept", "1"}));
}

void tst_EffectTableUpdates::passRecomputesTheOwnEnd()
{
    EditorStage stage;
    WidgetStub *child = stage.add(1);
    child->with("endtype", 0).with("endfixedtime", 500);
    stage.effect.internalGetEffectWidget();
    const EndSignals announced(stage.effect);
    QString shownAtTheSignal;
    connect(&stage.effect, &MetaEffect::endTimeChanged, this,
            [&] { shownAtTheSignal = stage.table().text(0, EndColumn); });

    stage.effect.updateEffectTimes();

    QCOMPARE(announced.noted, QStringList({"end 500", "cycle 500"}));
    QCOMPARE(shownAtTheSignal, QStringLiteral("0"));
    QCOMPARE(stage.table().text(0, EndColumn), QStringLiteral("0.5"));
}

QTEST_MAIN(tst_EffectTableUpdates)
#include "tst_EffectTableUpdates.moc"
