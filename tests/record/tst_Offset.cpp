#include "Offset.h"

#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <type_traits>

using meta::Offset;

namespace {

static_assert(std::is_constructible_v<Offset, double>);
static_assert(!std::is_convertible_v<double, Offset>);
static_assert(!std::is_convertible_v<Offset, double>);

} // namespace

class tst_Offset : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void startsAtZero();
    void secondsAreRead_data();
    void secondsAreRead();
    void textThatIsNoNumberGivesNothing_data();
    void textThatIsNoNumberGivesNothing();
    void isStoredAndShownInSixDigits_data();
    void isStoredAndShownInSixDigits();
};

void tst_Offset::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_Offset::startsAtZero()
{
    QCOMPARE(Offset().toDouble(), 0.0);
}

void tst_Offset::secondsAreRead_data()
{
    QTest::addColumn<QString>("seconds");
    QTest::addColumn<double>("ms");
    QTest::newRow("whole") << "2" << 2000.0;
    QTest::newRow("negative") << "-2" << -2000.0;
    QTest::newRow("signed") << "+0.5" << 500.0;
    QTest::newRow("not whole in ms") << "1.0005" << 1000.5;
    QTest::newRow("exponent") << "1e3" << 1000000.0;
    QTest::newRow("blanks around") << " 1.5 " << 1500.0;
    QTest::newRow("inf") << "inf" << HUGE_VAL;
    QTest::newRow("-inf") << "-inf" << -HUGE_VAL;
}

void tst_Offset::secondsAreRead()
{
    QFETCH(const QString, seconds);
    QFETCH(const double, ms);
    const auto offset = Offset::fromSecondsText(seconds);
    QVERIFY(offset);
    QVERIFY(offset->toDouble() == ms);
}

void tst_Offset::textThatIsNoNumberGivesNothing_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", " ", "abc", "1,5", "2 sec", "0x10", "1e", "1e400", "."})
        QTest::newRow(text) << text;
}

void tst_Offset::textThatIsNoNumberGivesNothing()
{
    QFETCH(const QString, text);
    QVERIFY(!Offset::fromSecondsText(text));
}

void tst_Offset::isStoredAndShownInSixDigits_data()
{
    QTest::addColumn<double>("ms");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("0") << 0.0 << "0" << "0";
    QTest::newRow("whole") << 1500.0 << "1500" << "1.5";
    QTest::newRow("negative") << -2500.0 << "-2500" << "-2.5";
    QTest::newRow("six digits") << 123456.0 << "123456" << "123.456";
    QTest::newRow("seven digits") << 1234567.8 << "1.23457e+06" << "1234.57";
    QTest::newRow("small") << 0.001 << "0.001" << "1e-06";
    QTest::newRow("inf") << HUGE_VAL << "inf" << "inf";
    QTest::newRow("nan") << std::nan("") << "nan" << "nan";
}

void tst_Offset::isStoredAndShownInSixDigits()
{
    QFETCH(const double, ms);
    QTEST(Offset(ms).storedText(), "stored");
    QTEST(Offset(ms).secondsText(), "shown");
}

QTEST_APPLESS_MAIN(tst_Offset)
#include "tst_Offset.moc"
