#include "RulerTicks.h"
#include "TimeText.h"

#include <QTest>

#include <cmath>

using rehearsal::RulerTicks;

class tst_TimelineRuler : public QObject
{
    Q_OBJECT

private slots:
    void timesReadAsMinutesAndSeconds_data();
    void timesReadAsMinutesAndSeconds();
    void lengthsReadAsSeconds_data();
    void lengthsReadAsSeconds();
    void marksAreRoundAndStandClear_data();
    void marksAreRoundAndStandClear();
    void labelsNeverTouchAndMarksDivideAtAnyZoom();
};

void tst_TimelineRuler::timesReadAsMinutesAndSeconds_data()
{
    QTest::addColumn<qint64>("ms");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("text");

    QTest::newRow("zero")        << qint64{0}             << 0 << "0:00";
    QTest::newRow("ms")          << qint64{7}             << 3 << "0:00.007";
    QTest::newRow("cut off")     << qint64{1999}          << 1 << "0:01.9";
    QTest::newRow("minutes")     << qint64{65250}         << 3 << "1:05.250";
    QTest::newRow("an hour")     << qint64{3600000}       << 0 << "1:00:00";
    QTest::newRow("hours")       << qint64{36065250}      << 2 << "10:01:05.25";
    QTest::newRow("past 32 bit") << qint64{1} * 5000000000 << 0 << "1388:53:20";
}

void tst_TimelineRuler::timesReadAsMinutesAndSeconds()
{
    QFETCH(qint64, ms);
    QFETCH(int, decimals);
    QTEST(rehearsal::timeText(ms, decimals), "text");
}

void tst_TimelineRuler::lengthsReadAsSeconds_data()
{
    QTest::addColumn<double>("ms");
    QTest::addColumn<QString>("text");

    QTest::newRow("whole")    << 40000.0      << "40 s";
    QTest::newRow("part")     << 250.0        << "0.25 s";
    QTest::newRow("fraction") << 0.5          << "0.0005 s";
    QTest::newRow("longest")  << 4294967295.0 << "4294967.295 s";
}

void tst_TimelineRuler::lengthsReadAsSeconds()
{
    QFETCH(double, ms);
    QTEST(rehearsal::secondsText(ms), "text");
}

void tst_TimelineRuler::marksAreRoundAndStandClear_data()
{
    QTest::addColumn<double>("pixelsPerMs");
    QTest::addColumn<qint64>("major");
    QTest::addColumn<qint64>("minor");
    QTest::addColumn<int>("decimals");

    // A label takes 40 pixels, and 10 for each decimal.
    QTest::newRow("milliseconds") << 100.0  << qint64{1}       << qint64{1}      << 3;
    QTest::newRow("hundreds")     << 0.5    << qint64{100}     << qint64{20}     << 1;
    QTest::newRow("seconds")      << 0.04   << qint64{1000}    << qint64{200}    << 0;
    QTest::newRow("two seconds")  << 0.025  << qint64{2000}    << qint64{500}    << 0;
    QTest::newRow("half minutes") << 0.002  << qint64{30000}   << qint64{5000}   << 0;
    QTest::newRow("hours")        << 2.1e-5 << qint64{3600000} << qint64{300000} << 0;
}

void tst_TimelineRuler::marksAreRoundAndStandClear()
{
    QFETCH(double, pixelsPerMs);
    const RulerTicks ticks =
        RulerTicks::fitting(pixelsPerMs, [](int decimals) { return 40.0 + 10 * decimals; });
    QTEST(ticks.major, "major");
    QTEST(ticks.minor, "minor");
    QTEST(ticks.decimals, "decimals");
}

void tst_TimelineRuler::labelsNeverTouchAndMarksDivideAtAnyZoom()
{
    for (const double seconds : {14.0, 40.0, 90.0}) {
        const auto width = [seconds](int decimals) { return seconds + 10 * decimals; };
        for (int zoom = 0; zoom < 128; ++zoom) {
            const double scale = 20 * std::pow(0.83, zoom);
            const RulerTicks ticks = RulerTicks::fitting(scale, width);
            QVERIFY(double(ticks.major) * scale >= width(ticks.decimals));
            QVERIFY(double(ticks.minor) * scale >= 6);
            QCOMPARE(ticks.major % ticks.minor, 0);
        }
    }
}

QTEST_GUILESS_MAIN(tst_TimelineRuler)
#include "tst_TimelineRuler.moc"
