#include "ProgramOnScreen.h"
#include "ProgramRun.h"
#include "StageReading.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLoggingCategory>

/// Somebody who watches the example show.
class TestStageOnScreen : public QObject, private ProgramFolder
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyPlaceShowsWhatIsRendered();
    void playingGoesByTheClock();

private:
    bool waitForShown(const StageReading &stage, const QList<double> &row, int *exact);
    bool waitUntilStill(QImage *picture) const;
    QList<int> placesOf(const QImage &picture, int fromMs, int toMs) const;

    std::unique_ptr<WindowTwin> m_twin;
    std::unique_ptr<ProgramOnScreen> m_program;
    std::optional<RenderedTable> m_table;
    QString m_fault;
};

void TestStageOnScreen::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QFile example(QStringLiteral(META_SOURCE_DIR "/examples/facade.show"));
    QVERIFY(example.open(QIODevice::ReadOnly));
    const QByteArray show = example.readAll();
    QVERIFY(write("a.show", show));
    VERIFY_DONE(
        rehearsal({"render", "a.show", "--fps", "1000", "--seconds", "22", "--csv", "a.csv"}));
    m_table.emplace(read("a.csv"));
    QCOMPARE(m_table->rowCount(), 22000);

    m_program = std::make_unique<ProgramOnScreen>(m_folder->path(), QStringList{"a.show"});
    QVERIFY(m_program->goToMain());
    m_twin = std::make_unique<WindowTwin>(show, m_program->area().size());
}

bool TestStageOnScreen::waitForShown(const StageReading &stage, const QList<double> &row,
                                     int *exact)
{
    return QTest::qWaitFor([&] { return stage.shows(m_program->picture(), row, &m_fault, exact); },
                           30000);
}

// Until nothing moves any more.
bool TestStageOnScreen::waitUntilStill(QImage *picture) const
{
    return QTest::qWaitFor(
        [this, picture] {
            *picture = m_program->picture();
            QTest::qWait(300);
            return *picture == m_program->picture();
        },
        30000);
}

// Where the show may be, by its lights and by the clock.
QList<int> TestStageOnScreen::placesOf(const QImage &picture, int fromMs, int toMs) const
{
    const StageReading stage(*m_twin, *m_table);
    const QImage clock = picture.copy(m_twin->areaOf(m_twin->find<QLabel>("clock")));
    QList<int> places;
    for (int ms = fromMs; ms <= std::min(toMs, static_cast<int>(m_table->rowCount()) - 1); ++ms) {
        if (!stage.shows(picture, m_table->row(ms)))
            continue;
        m_twin->seek(ms);
        if (m_twin->picture("clock") == clock)
            places.append(ms);
    }
    return places;
}

void TestStageOnScreen::everyPlaceShowsWhatIsRendered()
{
    const StageReading stage(*m_twin, *m_table);
    const QRect stageArea = m_twin->areaOf(m_twin->find<QWidget>("stage"));
    m_program->click(m_twin->middleOf("stage"));
    ScreenUser::moveAway();
    int exact = 0;
    for (const int seconds : {0, 4, 14, 20, 21}) {
        ScreenUser::press(QStringList{"Home"} + QStringList(seconds / 10, "shift+Right")
                          + QStringList(seconds % 10, "Right"));
        const QList<double> &row = m_table->row(seconds * 1000);
        QVERIFY2(waitForShown(stage, row, &exact),
                 qPrintable(QStringLiteral("at %1 s: %2").arg(seconds).arg(m_fault)));
        QVERIFY2(exact >= 10 || seconds < 10, qPrintable(QString::number(exact)));
        m_twin->seek(1000 * seconds);
        QCOMPARE(m_program->picture().copy(stageArea), m_twin->picture("stage"));
    }
}

void TestStageOnScreen::playingGoesByTheClock()
{
    m_program->click(m_twin->middleOf("stage"));
    ScreenUser::moveAway();
    ScreenUser::press({"shift+space"}); // stops at the start
    QImage still;
    QVERIFY(waitUntilStill(&still));

    QElapsedTimer sincePlay;
    sincePlay.start();
    ScreenUser::press({"space"});
    QVERIFY(m_program->waitForChange(still.rect(), still));
    QElapsedTimer sinceMoving;
    sinceMoving.start();
    QTest::qWait(2000);
    const auto leastMs = static_cast<int>(sinceMoving.elapsed());
    ScreenUser::press({"space"});
    QImage paused;
    QVERIFY(waitUntilStill(&paused));
    const auto mostMs = static_cast<int>(sincePlay.elapsed());

    const QList<int> places = placesOf(paused, leastMs, mostMs);
    QCOMPARE(places.size(), 1);
}

QTEST_MAIN(TestStageOnScreen)
#include "tst_StageOnScreen.moc"
