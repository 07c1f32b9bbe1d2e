#include "TransparencyText.h"

#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <limits>
#include <random>

namespace {

/// Whether the text is the one that it must be; says so if not.
bool isExact(double value)
{
    const QString text = meta::transparencyText(value);
    const QString expected = QString::number(value, 'g', 3);
    if (text == expected)
        return true;
    qInfo("%.17g: \"%s\" instead of \"%s\"", value, qPrintable(text), qPrintable(expected));
    return false;
}

/// The value and its three neighbours on either side.
bool isExactAround(double value)
{
    double below = value;
    double above = value;
    bool isGood = isExact(value);
    for (int i = 0; i < 3; ++i) {
        below = std::nextafter(below, -10.0);
        above = std::nextafter(above, 10.0);
        isGood = isGood && isExact(below) && isExact(above);
    }
    return isGood;
}

} // namespace

class tst_TransparencyText : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void hasThreeSignificantDigits_data();
    void hasThreeSignificantDigits();
    void multiplesAreExact();
    void tiesAndTheirNeighboursAreExact();
    void boundsAndTheirNeighboursAreExact();
    void randomValuesAreExact();
    void randomFadesAreExact();
    void valuesOutsideTheScaleAreExact();
    void aTextIsMadeOnce();
};

void tst_TransparencyText::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_TransparencyText::hasThreeSignificantDigits_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("opaque") << 0.0 << "0";
    QTest::newRow("invisible") << 1.0 << "1";
    QTest::newRow("half") << 0.5 << "0.5";
    QTest::newRow("third") << 0.33333 << "0.333";
    QTest::newRow("two thirds") << 2.0 / 3.0 << "0.667";
    QTest::newRow("no zeros behind") << 0.1 << "0.1";
    QTest::newRow("below a tenth") << 0.012345 << "0.0123";
    QTest::newRow("up to a tenth") << 0.09996 << "0.1";
    QTest::newRow("up to one") << 0.9996 << "1";
    QTest::newRow("below a hundredth") << 0.0012345 << "0.00123";
    QTest::newRow("tiny") << 0.000012345 << "1.23e-05";
}

void tst_TransparencyText::hasThreeSignificantDigits()
{
    QFETCH(const double, value);
    QTEST(meta::transparencyText(value), "text");
}

void tst_TransparencyText::multiplesAreExact()
{
    for (int i = 0; i <= 1000; ++i)
        QVERIFY(isExactAround(i / 1000.0));
    for (int i = 0; i <= 10000; ++i)
        QVERIFY(isExactAround(i / 10000.0));
}

// Of a tie's two texts the digits behind the double decide.
void tst_TransparencyText::tiesAndTheirNeighboursAreExact()
{
    for (int i = 0; i < 1000; ++i)
        QVERIFY(isExactAround((2 * i + 1) / 2000.0));
    for (int i = 0; i < 10000; ++i)
        QVERIFY(isExactAround((2 * i + 1) / 20000.0));
    for (const double tie : {0.1235, 0.0995, 0.09995, 0.9995, 0.0125, 0.375, 0.0625, 0.1005})
        QVERIFY(isExactAround(tie));
    // So near that the product with 1000 or 10000 looks like the tie, or only just not.
    for (int i = 100; i < 1000; ++i) {
        for (const double distance : {1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 9e-13, 1.1e-12, 1e-11}) {
            QVERIFY(isExact((i + 0.5) / 1000.0 + distance));
            QVERIFY(isExact((i + 0.5) / 1000.0 - distance));
            QVERIFY(isExact((i + 0.5) / 10000.0 + distance));
            QVERIFY(isExact((i + 0.5) / 10000.0 - distance));
        }
    }
}

void tst_TransparencyText::boundsAndTheirNeighboursAreExact()
{
    for (const double bound : {0.0, 0.001, 0.01, 0.00995, 0.009995, 0.1, 0.0999, 0.9995, 1.0})
        QVERIFY(isExactAround(bound));
}

void tst_TransparencyText::randomValuesAreExact()
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 300000; ++i)
        QVERIFY(isExact(static_cast<double>(random() >> 11) * 0x1p-53));
    // The small ones are rare among those.
    for (int i = 0; i < 200000; ++i)
        QVERIFY(isExact(static_cast<double>(random() >> 11) * 0x1p-53 * 0.11));
}

// What fades give: a transparency between two, at a whole millisecond.
void tst_TransparencyText::randomFadesAreExact()
{
    std::mt19937 random(2);
    for (int i = 0; i < 200000; ++i) {
        const auto length = static_cast<double>(1 + random() % 10000);
        const auto done = static_cast<double>(random() % 10001);
        QVERIFY(isExact(1.0 - done / length));
        QVERIFY(isExact(done / length));
    }
}

void tst_TransparencyText::valuesOutsideTheScaleAreExact()
{
    using Limits = std::numeric_limits<double>;
    for (const double value :
         {-0.0, -0.5, -1.0, -0.05, 1.0004, 1.0005, 1.5, 2.0, 999.5, 1000.0, 1e10, 1e300, -1e300,
          1e-300, 4.2949672955e9, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
          -Limits::quiet_NaN(), Limits::denorm_min(), Limits::max(), Limits::lowest()})
        QVERIFY(isExact(value));
}

void tst_TransparencyText::aTextIsMadeOnce()
{
    for (const double value : {0.01, 0.05, 0.25, 0.33333, 1.0}) {
        const QString text = meta::transparencyText(value);
        QCOMPARE(meta::transparencyText(value).constData(), text.constData());
    }
}

QTEST_GUILESS_MAIN(tst_TransparencyText)

#include "tst_TransparencyText.moc"
