#include "PanelScene.h"
#include "RuleGroup.h"

#include <QRegularExpression>

class tst_TimePanelFollows : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void editedStartCellIsFollowed_data();
    void editedStartCellIsFollowed();
    void editedEndCellIsFollowed_data();
    void editedEndCellIsFollowed();
    void everyRuleIsFollowed_data();
    void everyRuleIsFollowed();
    void followingKeepsTextThatMeansTheSameTime();
    void followingWritesNothing();
    void brokenLinksAreShownAsTheFixedRulesThatTheyBecame();
    void startRepairedByTheFillOfTheEndIsFollowed();
};

void tst_TimePanelFollows::editedStartCellIsFollowed_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");

    QTest::newRow("2.5") << "2.5"
                         << "2500"
                         << "2.5";
    QTest::newRow("more digits than are shown") << "1234.5678"
                                                << "1234567"
                                                << "1234.57";
    QTest::newRow("no number") << "abc"
                               << "0"
                               << "0";
}

void tst_TimePanelFollows::editedStartCellIsFollowed()
{
    QFETCH(QString, typed);
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    PanelScene scene;
    scene.store(1, "starttype=1 startfixedtime=9000 startlinkeid=3 endfixedtime=1000");
    scene.select(1);

    scene.typeIntoCell(scene.rowOf(1), 4, typed);

    QCOMPARE(writes(scene.take()), QStringList({"1 starttype=0", "1 startfixedtime=" + stored}));
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(enabledFields(scene.form(), "start"), "time");
    QCOMPARE(scene.form().m_startFixedLineEdit->text(), shown);
    QCOMPARE(scene.at(1).text("startfixedtime"), stored);
    CHECK_SANITY(scene);
}

void tst_TimePanelFollows::editedEndCellIsFollowed_data()
{
    QTest::addColumn<QString>("type");

    QTest::newRow("linked") << "1";
    QTest::newRow("cycles") << "2";
}

void tst_TimePanelFollows::editedEndCellIsFollowed()
{
    QFETCH(QString, type);
    PanelScene scene;
    scene.store(1, "startfixedtime=1000 endfixedtime=9000 endlinkeid=3 endcyclecount=5 endtype="
                       + type);
    scene.select(1);

    scene.typeIntoCell(scene.rowOf(1), 5, "4.5");

    QCOMPARE(writes(scene.take()), QStringList({"1 endtype=0", "1 endfixedtime=3500"}));
    QCOMPARE(ruleOn(scene.form(), "end"), "fixed");
    QCOMPARE(enabledFields(scene.form(), "end"), "time");
    QCOMPARE(scene.form().m_endFixedLineEdit->text(), "3.5");
    CHECK_SANITY(scene);
}

void tst_TimePanelFollows::everyRuleIsFollowed_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("rule");
    QTest::addColumn<QString>("fields");

    QTest::newRow("start fixed") << "1"
                                 << "0"
                                 << "start"
                                 << "fixed"
                                 << "time";
    QTest::newRow("start linked") << "0"
                                  << "1"
                                  << "start"
                                  << "linked"
                                  << "link";
    QTest::newRow("start, other code") << "1"
                                       << "2"
                                       << "start"
                                       << "linked"
                                       << "link";
    QTest::newRow("end fixed") << "2"
                               << "0"
                               << "end"
                               << "fixed"
                               << "time";
    QTest::newRow("end linked") << "2"
                                << "1"
                                << "end"
                                << "linked"
                                << "link";
    QTest::newRow("end cycles") << "0"
                                << "2"
                                << "end"
                                << "cycles"
                                << "cycles";
    QTest::newRow("end, other code") << "2"
                                     << "3"
                                     << "end"
                                     << "cycles"
                                     << "cycles";
}

// The panel follows both sides when a cell of either is edited.
void tst_TimePanelFollows::everyRuleIsFollowed()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, side);
    QFETCH(QString, rule);
    QFETCH(QString, fields);
    const QString type = side + "type=";
    PanelScene scene;
    scene.store(1, type + before + " " + side + "linkeid=3");
    scene.select(1);
    scene.store(1, type + after);

    scene.effect.handleValueChanged(scene.rowOf(1), side == u"start" ? 5 : 4);

    QCOMPARE(ruleOn(scene.form(), side), rule);
    QCOMPARE(enabledFields(scene.form(), side), fields);
    QCOMPARE(writes(scene.take()).filter(" " + side), QStringList());
}

void tst_TimePanelFollows::followingKeepsTextThatMeansTheSameTime()
{
    PanelScene scene;
    scene.select(1);
    EditorStage::typeInto(*scene.form().m_startFixedLineEdit, "1.50");

    scene.table().setText(scene.rowOf(1), 5, "4.5"); // without a click, which would fill anew
    scene.effect.handleValueChanged(scene.rowOf(1), 5);

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "1.50");
    QCOMPARE(scene.form().m_endFixedLineEdit->text(), "3");
}

void tst_TimePanelFollows::followingWritesNothing()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=3 endfixedtime=1000");
    scene.select(1);
    scene.store(1, "starttype=0 startfixedtime=1234567");

    scene.effect.handleValueChanged(scene.rowOf(1), 5);

    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "1234.57");
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(scene.at(1).text("startfixedtime"), "1234567");
    QCOMPARE(writes(scene.take()).filter("start"), QStringList());
}

void tst_TimePanelFollows::brokenLinksAreShownAsTheFixedRulesThatTheyBecame()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=98 startfixedtime=5000 endtype=1 endlinkeid=99 "
                   "endfixedtime=6000 startlinkstart=0 startlinkoffset=0 endlinkstart=0 "
                   "endlinkoffset=0 endcyclecount=5");

    scene.selectEid(1);

    QCOMPARE(writes(scene.take()), QStringList({"1 starttype=0", "1 startfixedtime=0",
                                                "1 endtype=0", "1 endfixedtime=0"}));
    for (const char *const side : {"start", "end"}) {
        QCOMPARE(ruleOn(scene.form(), side), "fixed");
        QCOMPARE(enabledFields(scene.form(), side), "time");
        QCOMPARE(group(scene.form(), side).fixedTime->text(), "0");
    }
    CHECK_SANITY(scene);
}

void tst_TimePanelFollows::startRepairedByTheFillOfTheEndIsFollowed()
{
    PanelScene scene;
    scene.store(1, "starttype=1 startlinkeid=3 startfixedtime=5000");
    scene.select(1);
    scene.store(1, "startlinkeid=99 endfixedtime=6000");

    scene.effect.refreshWidgets();

    QCOMPARE(withoutFocus(scene.take()),
             QStringList({"pass", "1 starttype=0", "1 startfixedtime=0"}));
    QCOMPARE(ruleOn(scene.form(), "start"), "fixed");
    QCOMPARE(enabledFields(scene.form(), "start"), "time");
    QCOMPARE(scene.form().m_startFixedLineEdit->text(), "0");
    CHECK_SANITY(scene);
}

QTEST_MAIN(tst_TimePanelFollows)
#include "tst_TimePanelFollows.moc"
