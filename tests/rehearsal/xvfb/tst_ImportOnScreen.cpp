#include "ProgramOnScreen.h"
#include "ProgramRun.h"
#include "StageReading.h"

#include <QLoggingCategory>

/// Somebody who brings a sequence along.
class TestImportOnScreen : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }

    void aRealSequenceIsImportedAndPlays();
};

void TestImportOnScreen::aRealSequenceIsImportedAndPlays()
{
    const QString sequence = QStringLiteral(META_SHARED_DATA "/arrival-car-1.xsq");
    if (!QFile::exists(sequence))
        QSKIP("there is no real sequence here");
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QFile::copy(sequence, path("car.xsq")));
    QCOMPARE(rehearsal({"import", "car.xsq", "-o", "car.show", "--link-adjacent"}).status, 0);
    constexpr int seconds = 8;
    VERIFY_DONE(rehearsal({"render", "car.show", "--fps", "1000", "--seconds",
                           QString::number(seconds + 1), "--csv", "car.csv"}));
    const RenderedTable table(read("car.csv"));
    QCOMPARE(table.rowCount(), 1000 * (seconds + 1));

    ProgramOnScreen shown(m_folder->path());
    QVERIFY(shown.goToMain());
    ScreenUser::press({"ctrl+i"});
    QVERIFY(shown.goTo("Import a Sequence"));
    ScreenUser::type(path("car.xsq"));
    // The first one imports; when that is done, one opens the show. Between, they do nothing.
    const bool isOpened = QTest::qWaitFor(
        [&shown] {
            ScreenUser::press({"Return"});
            QTest::qWait(300);
            return !shown.has("Import a Sequence");
        },
        60000);
    QVERIFY(isOpened);
    QVERIFY(shown.goToMain());
    QTRY_COMPARE_WITH_TIMEOUT(shown.title(), QStringLiteral("car* – Rehearsal"), 60000);

    const WindowTwin twin(read("car.show"), shown.area().size());
    const StageReading stage(twin, table);
    const QRect stageArea = twin.areaOf(twin.find<QWidget>("stage"));
    shown.click(twin.middleOf("stage"));
    ScreenUser::moveAway();
    ScreenUser::press(QStringList{"Home"} + QStringList(seconds, "Right"));
    QString fault;
    const bool isShown = QTest::qWaitFor(
        [&] { return stage.shows(shown.picture(), table.row(1000 * seconds), &fault); }, 30000);
    QVERIFY2(isShown, qPrintable(fault));

    ScreenUser::press({"space"});
    for (int i = 0; i < 5; ++i)
        QVERIFY(shown.waitForChange(stageArea, shown.picture()));
    ScreenUser::press({"space"});

    ScreenUser::press({"ctrl+q"});
    QVERIFY(shown.goTo("Save the Show"));
    ScreenUser::press({"alt+n"}); // not
    QCOMPARE(shown.waitForEnd(), 0);
    QCOMPARE(shown.errors(), QByteArray());
}

QTEST_MAIN(TestImportOnScreen)
#include "tst_ImportOnScreen.moc"
