#include "TableScene.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QRegularExpression>
#include <QTest>
#include <QTextDocumentFragment>
#include <QToolTip>

using meta::ComboTableItem;

class tst_TableWidgetColumns : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void sizesBeforeAnyChange();
    void hiddenColumnOnlyStoresItsWidth();
    void textCutShortIsToldByAToolTip();
    void adjustColumnFitsTheWidestCell_data();
    void adjustColumnFitsTheWidestCell();
    void adjustColumnFitsTheTitleWithItsIndicator();
    void adjustColumnCountsThePicture();
    void adjustColumnCountsTheArrowOfAChooser();
    void adjustColumnIsNeverBelowTwenty();
    void laterWidthWinsOverAdjustColumn();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidgetColumns::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

void tst_TableWidgetColumns::sizesBeforeAnyChange()
{
    TableScene scene;
    for (int column = 0; column < 4; ++column)
        QCOMPARE(scene.table.columnWidth(column), 100);
    for (int row = 0; row < 5; ++row)
        QCOMPARE(scene.table.rowHeight(row), 20);
    QCOMPARE(scene.table.verticalHeader()->width(), 30);
}

void tst_TableWidgetColumns::hiddenColumnOnlyStoresItsWidth()
{
    TableScene scene;
    scene.table.hideColumn(Priority);
    QCOMPARE(scene.table.columnWidth(Priority), 0);

    scene.table.setColumnWidth(Priority, 70);
    QCOMPARE(scene.table.columnWidth(Priority), 0);
    scene.table.showColumn(Priority);
    QCOMPARE(scene.table.columnWidth(Priority), 70);
}

void tst_TableWidgetColumns::textCutShortIsToldByAToolTip()
{
    const QString name = QStringLiteral("a <b>name</b> that is far too long for its column");
    TableScene scene({"b", name});
    scene.table.setColumnWidth(Name, 80);
    const auto hover = [&scene](int row) {
        const QPoint at = scene.table.visualRect(scene.table.model()->index(row, Name)).center();
        QWidget *viewport = scene.table.viewport();
        QHelpEvent help(QEvent::ToolTip, at, viewport->mapToGlobal(at));
        QCoreApplication::sendEvent(viewport, &help);
    };
    hover(0);
    QCOMPARE(QToolTip::text(), QString());
    hover(1);
    QCOMPARE(QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText(), name);
    QVERIFY(Qt::mightBeRichText(QToolTip::text()));
    QToolTip::hideText();
}

void tst_TableWidgetColumns::adjustColumnFitsTheWidestCell_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("widest");
    QTest::newRow("one") << QStringList{"the only text of the column"} << 0;
    QTest::newRow("wide before long") << QStringList{"WWWWWWWWWWWWWWW", "iiiiiiiiiiiiiiiiii"} << 0;
    QTest::newRow("last of many") << QStringList{"1", "1.5", "", "1234.57 and more"} << 3;
    QTest::newRow("Cyrillic") << QStringList{"wide Latin text", "широкая ЖЖЖЖЖЖЖЖЖЖЖ"} << 1;
    QTest::newRow("Han") << QStringList{"灯光效果灯光效果灯光", "narrow text"} << 0;
    QTest::newRow("beyond 16 bits") << QStringList{"narrow text", "😀😀😀😀😀😀😀😀😀😀😀😀"} << 1;
    QTest::newRow("combining marks")
        << QStringList{"e\u0301\u0301\u0301\u0301\u0301\u0301\u0301", "wide WWWWWWW text"} << 1;
}

void tst_TableWidgetColumns::adjustColumnFitsTheWidestCell()
{
    QFETCH(QStringList, texts);
    QFETCH(int, widest);
    TableScene scene(texts);

    scene.table.adjustColumn(Name);

    QList<int> hints;
    for (int row = 0; row < texts.size(); ++row) {
        const QModelIndex index = scene.table.model()->index(row, Name);
        QStyleOptionViewItem option;
        option.initFrom(&scene.table);
        option.font = scene.table.font();
        option.widget = &scene.table;
        hints.append(scene.table.itemDelegate()->sizeHint(option, index).width());
    }
    QCOMPARE(hints.indexOf(*std::max_element(hints.cbegin(), hints.cend())), widest);
    QCOMPARE(scene.table.columnWidth(Name), hints.at(widest) + 1); // the line beside it
}

void tst_TableWidgetColumns::adjustColumnFitsTheTitleWithItsIndicator()
{
    TableScene scene;
    scene.table.setHorizontalHeaderItem(Name, new QTableWidgetItem("A very long title, this one"));

    scene.table.adjustColumn(Name);

    const QHeaderView *header = scene.table.horizontalHeader();
    QVERIFY(!header->isSortIndicatorShown());
    QVERIFY(scene.table.columnWidth(Name) > header->sectionSizeHint(Name));
    scene.table.sortColumn(Name, true);
    QCOMPARE(scene.table.columnWidth(Name), header->sectionSizeHint(Name));
}

void tst_TableWidgetColumns::adjustColumnCountsThePicture()
{
    TableScene scene({"a text of some length", "a text of some lengt"});
    scene.table.adjustColumn(Name);
    const int without = scene.table.columnWidth(Name);

    scene.table.setPixmap(1, Name, picture(60));
    scene.table.adjustColumn(Name);
    const int with = scene.table.columnWidth(Name);
    QVERIFY2(with > without + 50, qPrintable(QString::number(with - without)));

    scene.table.setPixmap(0, Name, picture(60));
    scene.table.adjustColumn(Name);
    QVERIFY(scene.table.columnWidth(Name) > with);
}

void tst_TableWidgetColumns::adjustColumnCountsTheArrowOfAChooser()
{
    TableScene scene({"a"});
    const QString text = QStringLiteral("an effect of a long name");
    scene.table.setItem(0, Type, new ComboTableItem(&scene.table, {text}));
    scene.table.adjustColumn(Type);
    scene.click(0, Type);

    const QWidget *editor = scene.table.indexWidget(scene.table.model()->index(0, Type));

    QVERIFY(editor);
    QVERIFY(editor->width() >= editor->sizeHint().width());
}

void tst_TableWidgetColumns::adjustColumnIsNeverBelowTwenty()
{
    TableScene scene({"i"});
    scene.table.setHorizontalHeaderLabels({"", "", "", ""});
    scene.table.horizontalHeader()->setMinimumSectionSize(1);
    scene.table.hideColumn(Name); // then its title takes no room

    scene.table.adjustColumn(Name);
    scene.table.showColumn(Name);

    QCOMPARE(scene.table.columnWidth(Name), 20);
}

void tst_TableWidgetColumns::laterWidthWinsOverAdjustColumn()
{
    TableScene scene({"a text that is longer than its column will be"});

    scene.table.adjustColumn(Name);
    QVERIFY(scene.table.columnWidth(Name) > 80);
    scene.table.setColumnWidth(Name, 80);

    QCOMPARE(scene.table.columnWidth(Name), 80);
}

QTEST_MAIN(tst_TableWidgetColumns)
#include "tst_TableWidgetColumns.moc"
