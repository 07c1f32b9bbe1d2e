#include "BrightnessTable.h"

#include <QBuffer>
#include <QTest>

#include <cmath>
#include <cstdio>
#include <random>

using rehearsal::BrightnessTable;

namespace {

/// The brightness as the table writes it.
QByteArray written(double brightness)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    BrightnessTable(buffer, {1}).addFrame(0, {brightness});
    return buffer.data().mid(qstrlen("time_ms,1\n0,")).chopped(1);
}

} // namespace

class TestBrightnessTable : public QObject
{
    Q_OBJECT

private slots:
    void hasAColumnALightAndARowAFrame();
    void withoutLightsHasTheTimesAlone();
    void brightnessHasFourDecimals_data();
    void brightnessHasFourDecimals();
    void brightnessIsRoundedAsItsExactValueSays();
};

void TestBrightnessTable::hasAColumnALightAndARowAFrame()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    BrightnessTable table(buffer, {2, 10, 4294967295u});
    table.addFrame(0, {0, 0.5, 1});
    table.addFrame(100000000, {1, 0.25, 0.125});
    QCOMPARE(buffer.data(), QByteArray("time_ms,2,10,4294967295\n"
                                       "0,0.0000,0.5000,1.0000\n"
                                       "100000000,1.0000,0.2500,0.1250\n"));
}

void TestBrightnessTable::withoutLightsHasTheTimesAlone()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    BrightnessTable(buffer, {}).addFrame(25, {});
    QCOMPARE(buffer.data(), QByteArray("time_ms\n25\n"));
}

void TestBrightnessTable::brightnessHasFourDecimals_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("dark") << 0.0 << QByteArray("0.0000");
    QTest::newRow("dark, from below") << -0.0 << QByteArray("0.0000");
    QTest::newRow("full") << 1.0 << QByteArray("1.0000");
    QTest::newRow("nearly full") << 0.99996 << QByteArray("1.0000");
    QTest::newRow("a third") << 1.0 / 3 << QByteArray("0.3333");
    QTest::newRow("rounded up") << 2.0 / 3 << QByteArray("0.6667");
    QTest::newRow("just too little") << 0.00004999 << QByteArray("0.0000");
    QTest::newRow("just enough") << 0.00005001 << QByteArray("0.0001");
    QTest::newRow("nearest double below the middle") << 0.00015 << QByteArray("0.0001");
    QTest::newRow("nearest double above the middle") << 0.12345 << QByteArray("0.1235");
    QTest::newRow("a true middle goes to the even digit") << 0.03125 << QByteArray("0.0312");
    QTest::newRow("brighter than full") << 12.5 << QByteArray("12.5000");
    QTest::newRow("rounded to two digits") << 9.99999 << QByteArray("10.0000");
    QTest::newRow("beyond all measure") << 1e20 << QByteArray("100000000000000000000.0000");
    QTest::newRow("negative") << -0.25 << QByteArray("-0.2500");
}

void TestBrightnessTable::brightnessHasFourDecimals()
{
    QFETCH(double, brightness);
    QTEST(written(brightness), "text");
}

void TestBrightnessTable::brightnessIsRoundedAsItsExactValueSays()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anyBrightness(0, 1);
    std::uniform_int_distribution<int> anyMiddle(0, 9999);
    for (int i = 0; i < 20000; ++i) {
        const double nearMiddle = (anyMiddle(random) + 0.5) / 10000;
        for (const double brightness :
             {anyBrightness(random), nearMiddle, std::nextafter(nearMiddle, 1)}) {
            char expected[32];
            std::snprintf(expected, sizeof expected, "%.4f", brightness);
            QCOMPARE(written(brightness), QByteArray(expected));
        }
    }
}

QTEST_GUILESS_MAIN(TestBrightnessTable)
#include "tst_BrightnessTable.moc"
