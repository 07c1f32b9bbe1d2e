#include "FrameTimes.h"

#include <QTest>

using rehearsal::FrameTimes;

class TestFrameTimes : public QObject
{
    Q_OBJECT

private slots:
    void framesAreAtWholeMillisecondsRoundedDown_data();
    void framesAreAtWholeMillisecondsRoundedDown();
    void everyFrameBelowTheLengthIsCounted_data();
    void everyFrameBelowTheLengthIsCounted();
    void aWholeRateHasTheTimesOfIntegerDivision();
};

void TestFrameTimes::framesAreAtWholeMillisecondsRoundedDown_data()
{
    QTest::addColumn<double>("fps");
    QTest::addColumn<qint64>("frame");
    QTest::addColumn<qint64>("timeMs");

    QTest::newRow("the first frame") << 40.0 << qint64{0} << qint64{0};
    QTest::newRow("a whole distance") << 40.0 << qint64{3} << qint64{75};
    QTest::newRow("thirds are cut off") << 30.0 << qint64{1} << qint64{33};
    QTest::newRow("two thirds are cut off too") << 30.0 << qint64{2} << qint64{66};
    QTest::newRow("and do not add up") << 30.0 << qint64{3} << qint64{100};
    QTest::newRow("sevenths") << 7.0 << qint64{6} << qint64{857};
    QTest::newRow("a rate that is not whole") << 29.97 << qint64{1} << qint64{33};
    QTest::newRow("below one a second") << 0.5 << qint64{3} << qint64{6000};
    QTest::newRow("after a day") << 40.0 << qint64{4000000} << qint64{100000000};
}

void TestFrameTimes::framesAreAtWholeMillisecondsRoundedDown()
{
    QFETCH(double, fps);
    QFETCH(qint64, frame);
    QTEST(FrameTimes(fps, 1000).at(frame), "timeMs");
}

void TestFrameTimes::everyFrameBelowTheLengthIsCounted_data()
{
    QTest::addColumn<double>("fps");
    QTest::addColumn<quint32>("lengthMs");
    QTest::addColumn<qint64>("count");

    QTest::newRow("no length, no frame") << 40.0 << quint32{0} << qint64{0};
    QTest::newRow("the frame at the length does not count") << 40.0 << quint32{1000} << qint64{40};
    QTest::newRow("a millisecond more has it") << 40.0 << quint32{1001} << qint64{41};
    QTest::newRow("the shortest render") << 40.0 << quint32{1} << qint64{1};
    QTest::newRow("rounded down, frame 1 is at 33 ms") << 30.0 << quint32{33} << qint64{1};
    QTest::newRow("so 34 ms have it") << 30.0 << quint32{34} << qint64{2};
    QTest::newRow("sevenths") << 7.0 << quint32{1000} << qint64{7};
    QTest::newRow("a frame a millisecond") << 1000.0 << quint32{2500} << qint64{2500};
    QTest::newRow("slower than the show") << 0.001 << quint32{5000} << qint64{1};
    QTest::newRow("the longest show") << 1000.0 << quint32{4294967295u} << qint64{4294967295};
}

void TestFrameTimes::everyFrameBelowTheLengthIsCounted()
{
    QFETCH(double, fps);
    QFETCH(quint32, lengthMs);
    const FrameTimes times(fps, lengthMs);
    QTEST(times.count(), "count");
    QVERIFY(times.count() == 0 || times.at(times.count() - 1) < lengthMs);
    QVERIFY(times.at(times.count()) >= lengthMs);
}

void TestFrameTimes::aWholeRateHasTheTimesOfIntegerDivision()
{
    for (qint64 fps = 1; fps <= 1000; ++fps) {
        const FrameTimes times(static_cast<double>(fps), 0);
        for (qint64 frame = 0; frame < 5000; frame += 7)
            QCOMPARE(times.at(frame), frame * 1000 / fps);
    }
}

QTEST_GUILESS_MAIN(TestFrameTimes)
#include "tst_FrameTimes.moc"
