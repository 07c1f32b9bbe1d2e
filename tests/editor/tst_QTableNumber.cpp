#include "QTableNumber.h"

#include "TableWidget.h"
#include "TextRow.h"

#include <QLocale>
#include <QRegularExpression>
#include <QTest>

#include <clocale>
#include <memory>

using meta::TableItem;
using meta::TableWidget;

class tst_QTableNumber : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void cellIsMadeWithItsEditTypeAndText_data();
    void cellIsMadeWithItsEditTypeAndText();
    void keyIsThePaddedNumberOrElseTheText_data();
    void keyIsThePaddedNumberOrElseTheText();
    void keyFollowsTheText();
    void keyIsTheSameInEveryLocale_data();
    void keyIsTheSameInEveryLocale();
    void cloneSortsAsANumberToo();
    void columnSortsByPlainComparisonOfTheKeys_data();
    void columnSortsByPlainComparisonOfTheKeys();
};

void tst_QTableNumber::cellIsMadeWithItsEditTypeAndText_data()
{
    QTest::addColumn<int>("editType");
    QTest::addColumn<bool>("isEditable");
    QTest::newRow("never") << int(TableItem::Never) << false;
    QTest::newRow("on typing") << int(TableItem::OnTyping) << true;
    QTest::newRow("when current") << int(TableItem::WhenCurrent) << true;
}

void tst_QTableNumber::cellIsMadeWithItsEditTypeAndText()
{
    QFETCH(int, editType);
    QFETCH(bool, isEditable);
    TableWidget table;

    const QTableNumber cell(&table, TableItem::EditType(editType), QStringLiteral("1.5"));

    QCOMPARE(int(cell.editType()), editType);
    QCOMPARE(cell.flags().testFlag(Qt::ItemIsEditable), isEditable);
    QCOMPARE(cell.text(), QStringLiteral("1.5"));
}

void tst_QTableNumber::keyIsThePaddedNumberOrElseTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key");

    textRow("nought", "0", "0000000000000.000000");
    textRow("whole", "7", "0000000000007.000000");
    textRow("seconds", "1.5", "0000000000001.500000");
    textRow("six digits of seconds", "1234.57", "0000000001234.570000");
    textRow("largest eid", "4294967295", "0004294967295.000000");
    textRow("largest time", "4.29497e+06", "0000004294970.000000");
    textRow("exponent", "1e3", "0000000001000.000000");
    textRow("capital exponent", "1E3", "0000000001000.000000");
    textRow("small", "1e-05", "0000000000000.000010");
    textRow("seventh decimal rounded", "0.1234567", "0000000000000.123457");
    textRow("beyond six decimals", "1e-9", "0000000000000.000000");
    textRow("plus sign", "+5", "0000000000005.000000");
    textRow("leading noughts", "007", "0000000000007.000000");
    textRow("no digit before the point", ".5", "0000000000000.500000");
    textRow("no digit behind the point", "5.", "0000000000005.000000");
    textRow("blanks around", " 1.5 ", "0000000000001.500000");

    textRow("negative", "-1.5", "-000000000001.500000");
    textRow("negative, more digits", "-1234.57", "-000000001234.570000");

    textRow("fills the width", "9999999999999", "9999999999999.000000");
    textRow("wider by one", "10000000000000", "10000000000000.000000");
    textRow("much wider", "1e20", "100000000000000000000.000000");
    textRow("negative and wider", "-10000000000000", "-10000000000000.000000");

    textRow("infinite", "inf", "                 inf");
    textRow("negative infinite", "-inf", "                -inf");
    textRow("not a number", "nan", "                 nan");

    textRow("empty", "", "");
    textRow("word", "soon", "soon");
    textRow("number with a unit", "2 sec", "2 sec");
    textRow("decimal comma", "1,5", "1,5");
    textRow("thousands comma", "1,000", "1,000");
    textRow("hexadecimal", "0x10", "0x10");
    textRow("unfinished exponent", "1e", "1e");
    textRow("only a point", ".", ".");
    textRow("too large for a number", "1e400", "1e400");
    textRow("blanks are kept in a text", " soon ", " soon ");
}

void tst_QTableNumber::keyIsThePaddedNumberOrElseTheText()
{
    QFETCH(QString, text);
    TableWidget table;
    QTEST(QTableNumber(&table, TableItem::WhenCurrent, text).key(), "key");
}

void tst_QTableNumber::keyFollowsTheText()
{
    TableWidget table;
    QTableNumber cell(&table, TableItem::WhenCurrent, QStringLiteral("2"));
    cell.setText(QStringLiteral("10"));
    QCOMPARE(cell.key(), QStringLiteral("0000000000010.000000"));
    cell.setText(QStringLiteral("ten"));
    QCOMPARE(cell.key(), QStringLiteral("ten"));
}

void tst_QTableNumber::keyIsTheSameInEveryLocale_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key");
    textRow("point", "1234.5", "0000000001234.500000");
    textRow("comma", "1234,5", "1234,5");
}

void tst_QTableNumber::keyIsTheSameInEveryLocale()
{
    QFETCH(QString, text);
    const QByteArray former = std::setlocale(LC_ALL, nullptr);
    const QLocale formerDefault;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    for (const char *german : {"de_DE.UTF-8", "de_DE.utf8", "de_DE"}) {
        if (std::setlocale(LC_ALL, german))
            break; // where none is installed, the toolkit's own locale alone is German
    }

    TableWidget table;
    const QString key = QTableNumber(&table, TableItem::WhenCurrent, text).key();

    std::setlocale(LC_ALL, former.constData());
    QLocale::setDefault(formerDefault);
    QTEST(key, "key");
}

void tst_QTableNumber::cloneSortsAsANumberToo()
{
    TableWidget table;
    const QTableNumber cell(&table, TableItem::Never, QStringLiteral("10"));

    const std::unique_ptr<QTableWidgetItem> clone(cell.clone());

    const auto *number = dynamic_cast<QTableNumber *>(clone.get());
    QVERIFY(number);
    QCOMPARE(number->key(), cell.key());
    QCOMPARE(number->editType(), TableItem::Never);
}

void tst_QTableNumber::columnSortsByPlainComparisonOfTheKeys_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("sorted");

    QTest::newRow("numbers, not texts")
        << QStringList({"100", "2", "10"}) << QStringList({"2", "10", "100"});
    QTest::newRow("decimals") << QStringList({"1.5", "0.001", "1.25", "60"})
                              << QStringList({"0.001", "1.25", "1.5", "60"});
    QTest::newRow("forms of a number")
        << QStringList({"1e3", "999", "+5", ".5"}) << QStringList({".5", "+5", "999", "1e3"});
    QTest::newRow("equal numbers keep their order")
        << QStringList({"2.0", "1", "2", "+2"}) << QStringList({"1", "2.0", "2", "+2"});
    QTest::newRow("negative ones come first, -1 before -2")
        << QStringList({"0", "-2", "1", "-1"}) << QStringList({"-1", "-2", "0", "1"});
    QTest::newRow("infinity comes before everything, not after it")
        << QStringList({"5", "-1", "inf", "nan"}) << QStringList({"inf", "nan", "-1", "5"});
    QTest::newRow("numbers before words, the empty text before both")
        << QStringList({"soon", "9999", "", "Later"}) << QStringList({"", "9999", "Later", "soon"});
    QTest::newRow("numbers wider than the key by their first digits")
        << QStringList({"2e13", "1e14", "9"}) << QStringList({"9", "1e14", "2e13"});
}

void tst_QTableNumber::columnSortsByPlainComparisonOfTheKeys()
{
    QFETCH(QStringList, texts);
    QFETCH(QStringList, sorted);
    TableWidget table;
    table.setColumnCount(1);
    table.setNumRows(int(texts.size()));
    for (int row = 0; row < texts.size(); ++row)
        table.setItem(row, 0, new QTableNumber(&table, TableItem::WhenCurrent, texts.at(row)));

    table.sortColumn(0, true);

    QStringList found;
    for (int row = 0; row < table.rowCount(); ++row)
        found.append(table.text(row, 0));
    QCOMPARE(found, sorted);
}

QTEST_MAIN(tst_QTableNumber)
#include "tst_QTableNumber.moc"
