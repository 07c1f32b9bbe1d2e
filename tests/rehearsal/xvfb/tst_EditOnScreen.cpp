#include "ProgramOnScreen.h"
#include "ProgramRun.h"
#include "ShowEditing.h"
#include "StageReading.h"

#include <QHash>
#include <QLoggingCategory>

/// Somebody who opens the example for the first time, changes it, saves, leaves and comes back.
class TestEditOnScreen : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }

    void anEditIsSeenSavedAndThereTheNextTime();
};

void TestEditOnScreen::anEditIsSeenSavedAndThereTheNextTime()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const QByteArray example = ShowEditing::exampleShow();
    QVERIFY(write("a.show", example));
    QVERIFY(write("later.show", ShowEditing::exampleWithClockAt(8000)));
    VERIFY_DONE(rehearsal({"resolve", "later.show", "-o", "expected.show"}));
    QHash<QString, QList<double>> rows;
    std::optional<RenderedTable> table;
    for (const char *name : {"a", "expected"}) {
        VERIFY_DONE(rehearsal({"render", name + QStringLiteral(".show"), "--fps", "1000",
                               "--seconds", "6", "--csv", "table.csv"}));
        table.emplace(read("table.csv"));
        QCOMPARE(table->rowCount(), 6000);
        rows.insert(name, table->row(5000));
    }

    ProgramOnScreen shown(m_folder->path(), {"a.show"});
    QVERIFY(shown.goToMain());
    QCOMPARE(shown.title(), QStringLiteral("a.show – Rehearsal"));
    const WindowTwin before(example, shown.area().size());
    WindowTwin after(read("expected.show"), shown.area().size());
    const StageReading stage(before, *table);
    const QRect stageArea = before.areaOf(before.find<QWidget>("stage"));
    const QRect timelineArea = before.areaOf(before.find<QWidget>("timeline"));

    // It plays at the first touch of the space bar.
    const QImage dark = shown.picture();
    ScreenUser::press({"space"});
    QVERIFY(shown.waitForChange(stageArea, dark));
    QVERIFY(shown.waitForChange(stageArea, shown.picture()));
    ScreenUser::press({"space"});

    ShowEditing::goToSecond(shown, before, 5);
    QTRY_VERIFY_WITH_TIMEOUT(stage.shows(shown.picture(), rows["a"]), 30000);
    QVERIFY(!stage.shows(shown.picture(), rows["expected"]));

    ShowEditing::typeClockStart(shown, before, "8");
    ScreenUser::press({"Tab"});
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show* – Rehearsal"), 30000);

    // The lights follow at once, and the timeline shows the bar where it is now.
    ScreenUser::moveAway();
    QTRY_VERIFY_WITH_TIMEOUT(stage.shows(shown.picture(), rows["expected"]), 30000);
    after.seek(5000);
    QVERIFY(before.bar(ShowEditing::clock) != after.bar(ShowEditing::clock));
    QTRY_COMPARE_WITH_TIMEOUT(shown.picture().copy(timelineArea), after.picture("timeline"), 30000);
    QCOMPARE(read("a.show"), example);

    ScreenUser::press({"ctrl+s"});
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("a.show – Rehearsal"), 30000);
    for (const QString name : {"a", "expected"})
        VERIFY_DONE(rehearsal({"render", name + ".show", "--csv", name + ".csv"}));
    QCOMPARE(read("a.csv"), read("expected.csv"));
    ShowEditing::goToSecond(shown, before, 5);
    QTRY_COMPARE_WITH_TIMEOUT(shown.picture().copy(timelineArea), after.picture("timeline"), 30000);
    const QImage left = shown.picture().copy(stageArea);
    ScreenUser::press({"ctrl+q"});
    QCOMPARE(shown.waitForEnd(), 0);
    QCOMPARE(shown.errors(), QByteArray());

    ProgramOnScreen again(m_folder->path(), {"a.show"});
    QVERIFY(again.goToMain());
    QCOMPARE(again.title(), QStringLiteral("a.show – Rehearsal"));
    ShowEditing::goToSecond(again, before, 5);
    QTRY_COMPARE_WITH_TIMEOUT(again.picture().copy(stageArea), left, 30000);
    QCOMPARE(again.picture().copy(timelineArea), after.picture("timeline"));
    ScreenUser::press({"ctrl+q"});
    QCOMPARE(again.waitForEnd(), 0);
}

QTEST_MAIN(TestEditOnScreen)
#include "tst_EditOnScreen.moc"
