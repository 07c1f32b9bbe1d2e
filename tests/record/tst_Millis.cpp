#include "Millis.h"

#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <limits>
#include <type_traits>

using meta::Millis;

Q_DECLARE_METATYPE(std::optional<quint32>)

namespace {

constexpr quint32 largest = 4294967295;

// Only a number of exactly 32 bits becomes a time, and only when asked to.
static_assert(std::is_constructible_v<Millis, quint32>);
static_assert(!std::is_convertible_v<quint32, Millis>);
static_assert(!std::is_constructible_v<Millis, double>);
static_assert(!std::is_constructible_v<Millis, int>);
static_assert(!std::is_constructible_v<Millis, unsigned long>);
static_assert(!std::is_constructible_v<Millis, quint64>);
static_assert(!std::is_convertible_v<Millis, double>);
static_assert(!std::is_convertible_v<Millis, quint32>);

} // namespace

class tst_Millis : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void startsAtZero();
    void comparesByValue();
    void sumsAndDifferencesWrap_data();
    void sumsAndDifferencesWrap();
    void doublesAreTruncatedAndSaturate_data();
    void doublesAreTruncatedAndSaturate();
    void toDoubleIsExact();
    void secondsAreReadAndCutToWholeMilliseconds_data();
    void secondsAreReadAndCutToWholeMilliseconds();
    void isStoredInDecimal_data();
    void isStoredInDecimal();
    void isShownInSecondsOfSixDigits_data();
    void isShownInSecondsOfSixDigits();
    void everyTimeBelowAThousandSecondsIsShownAsItsNumberIs();
};

void tst_Millis::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_Millis::startsAtZero()
{
    QCOMPARE(Millis().value(), 0u);
    QVERIFY(Millis() == Millis(0u));
}

void tst_Millis::comparesByValue()
{
    QVERIFY(Millis(5u) == Millis(5u));
    QVERIFY(Millis(5u) != Millis(6u));
    QVERIFY(Millis(5u) < Millis(largest));
    QVERIFY(Millis(largest) > Millis(2147483648u));
}

void tst_Millis::sumsAndDifferencesWrap_data()
{
    QTest::addColumn<quint32>("a");
    QTest::addColumn<quint32>("b");
    QTest::addColumn<quint32>("sum");
    QTest::addColumn<quint32>("difference");
    QTest::newRow("plain") << 5000u << 2000u << 7000u << 3000u;
    QTest::newRow("equal") << 7u << 7u << 14u << 0u;
    QTest::newRow("below zero") << 0u << 1u << 1u << largest;
    QTest::newRow("to the largest") << 4294967290u << 5u << largest << 4294967285u;
    QTest::newRow("beyond the largest") << 4294967290u << 6u << 0u << 4294967284u;
    QTest::newRow("largest twice") << largest << largest << 4294967294u << 0u;
}

void tst_Millis::sumsAndDifferencesWrap()
{
    QFETCH(const quint32, a);
    QFETCH(const quint32, b);
    QTEST(Millis(a).plusWrapping(Millis(b)).value(), "sum");
    QTEST(Millis(b).plusWrapping(Millis(a)).value(), "sum");
    QTEST(Millis(a).minusWrapping(Millis(b)).value(), "difference");
}

void tst_Millis::doublesAreTruncatedAndSaturate_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<quint32>("ms");
    constexpr double infinity = std::numeric_limits<double>::infinity();
    QTest::newRow("whole") << 1500.0 << 1500u;
    QTest::newRow("truncated") << 1004.9999999999999 << 1004u;
    QTest::newRow("truncated from a half") << 0.5 << 0u;
    QTest::newRow("just below one") << std::nextafter(1.0, 0.0) << 0u;
    QTest::newRow("0") << 0.0 << 0u;
    QTest::newRow("-0") << -0.0 << 0u;
    QTest::newRow("smallest above 0") << std::numeric_limits<double>::denorm_min() << 0u;
    QTest::newRow("negative fraction") << -0.5 << 0u;
    QTest::newRow("negative") << -1.0 << 0u;
    QTest::newRow("far below") << -1e300 << 0u;
    QTest::newRow("2^31") << 2147483648.0 << 2147483648u;
    QTest::newRow("below the largest") << 4294967294.9 << 4294967294u;
    QTest::newRow("largest") << 4294967295.0 << largest;
    QTest::newRow("fraction beyond") << 4294967295.5 << largest;
    QTest::newRow("2^32") << 4294967296.0 << largest;
    QTest::newRow("far beyond") << 1e300 << largest;
    QTest::newRow("inf") << infinity << largest;
    QTest::newRow("-inf") << -infinity << 0u;
    QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN() << 0u;
    QTest::newRow("-nan") << -std::numeric_limits<double>::quiet_NaN() << 0u;
}

void tst_Millis::doublesAreTruncatedAndSaturate()
{
    QFETCH(const double, number);
    QTEST(Millis::fromDoubleSaturating(number).value(), "ms");
}

void tst_Millis::toDoubleIsExact()
{
    for (const quint32 ms : {0u, 1u, 2147483647u, 2147483648u, largest}) {
        QVERIFY(Millis(ms).toDouble() == static_cast<double>(ms));
        QCOMPARE(Millis::fromDoubleSaturating(Millis(ms).toDouble()).value(), ms);
    }
}

void tst_Millis::secondsAreReadAndCutToWholeMilliseconds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::optional<quint32>>("ms");
    const auto row = [](const char *text, std::optional<quint32> ms) {
        QTest::newRow(qPrintable(QStringLiteral("\"%1\"").arg(QString::fromLatin1(text))))
            << QString::fromLatin1(text) << ms;
    };
    row("1.5", 1500u);
    row("60", 60000u);
    row("0", 0u);
    row("1.005", 1004u);
    row("0.29", 290u);
    row("0.0009", 0u);
    row(".5", 500u);
    row("5.", 5000u);
    row("+5", 5000u);
    row(" 1.5", 1500u);
    row("1.5 ", 1500u);
    row("1e3", 1000000u);
    row("1E-3", 1u);
    row("-1", 0u);
    row("-.5", 0u);
    row("-0", 0u);
    row("4294967.295", largest);
    row("4294967.294", 4294967294u);
    row("4294968", largest);
    row("1e300", largest);
    row("inf", largest);
    row("-inf", 0u);
    row("nan", 0u);

    row("", {});
    row(" ", {});
    row(".", {});
    row("-", {});
    row("1e", {});
    row("1,5", {});
    row("1,000", {});
    row("0x10", {});
    row("1abc", {});
    row("1 5", {});
    row("1e400", {});
    row("infinity", {});
}

void tst_Millis::secondsAreReadAndCutToWholeMilliseconds()
{
    QFETCH(const QString, text);
    QFETCH(const std::optional<quint32>, ms);
    const std::optional<Millis> read = Millis::fromSecondsText(text);
    QCOMPARE(read.has_value(), ms.has_value());
    if (read)
        QCOMPARE(read->value(), *ms);
}

void tst_Millis::isStoredInDecimal_data()
{
    QTest::addColumn<quint32>("ms");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0u << "0";
    QTest::newRow("some") << 1500u << "1500";
    QTest::newRow("no grouping") << 1234567u << "1234567";
    QTest::newRow("largest") << largest << "4294967295";
}

void tst_Millis::isStoredInDecimal()
{
    QFETCH(const quint32, ms);
    QTEST(Millis(ms).decimalText(), "text");
}

void tst_Millis::isShownInSecondsOfSixDigits_data()
{
    QTest::addColumn<quint32>("ms");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0u << "0";
    QTest::newRow("one") << 1u << "0.001";
    QTest::newRow("fraction") << 1500u << "1.5";
    QTest::newRow("whole") << 60000u << "60";
    QTest::newRow("six digits") << 123456u << "123.456";
    QTest::newRow("seven digits") << 1234567u << "1234.57";
    QTest::newRow("rounded up to whole") << 9999999u << "10000";
    QTest::newRow("six digits before the point") << 999999000u << "999999";
    QTest::newRow("seven digits before the point") << 1000000000u << "1e+06";
    QTest::newRow("largest") << largest << "4.29497e+06";
}

void tst_Millis::isShownInSecondsOfSixDigits()
{
    QFETCH(const quint32, ms);
    QTEST(Millis(ms).secondsText(), "text");
}

void tst_Millis::everyTimeBelowAThousandSecondsIsShownAsItsNumberIs()
{
    for (quint32 ms = 0; ms < 1001000; ++ms) {
        const QString expected = QString::number(double(ms) / 1000.0, 'g', 6);
        if (Millis(ms).secondsText() != expected)
            QCOMPARE(Millis(ms).secondsText(), expected);
    }
}

QTEST_GUILESS_MAIN(tst_Millis)

#include "tst_Millis.moc"
