#include "TableScene.h"

#include <QPainter>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using meta::ComboTableItem;
using meta::TableItem;
using meta::TableWidget;

namespace {

/// A cell that counts how many of its kind live.
class CountedItem final : public TableItem
{
public:
    explicit CountedItem(int &living) : TableItem(nullptr, OnTyping, "counted"), m_living(living)
    {
        ++m_living;
    }
    ~CountedItem() override { --m_living; }

private:
    int &m_living;
};

} // namespace

class tst_TableWidgetCells : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void missingCellReadsAsEmpty();
    void settingAMissingCellMakesAPlainOne();
    void settingACellKeepsItsItem();
    void settingOutsideTheTableDoesNothing_data();
    void settingOutsideTheTableDoesNothing();
    void setItemDeletesTheOneBefore();
    void tableDeletesItsItems();
    void pictureIsKeptAsItIs();
    void numbersStandAtTheRightAndOtherTextAtTheLeft_data();
    void numbersStandAtTheRightAndOtherTextAtTheLeft();
    void settersAndSortingEmitNothing();
    void gatheringAnnouncesTheTouchedCellsOnce();
    void emptyGatheringAnnouncesNothing();
};

// Any warning fails, but for what the platform of the tests says of itself.
void tst_TableWidgetCells::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

void tst_TableWidgetCells::missingCellReadsAsEmpty()
{
    TableWidget table;
    table.setColumnCount(2);
    table.setNumRows(1);

    for (const int row : {-1, 0, 1}) {
        QVERIFY(!table.item(row, 1));
        QCOMPARE(table.text(row, 1), QString());
        QVERIFY(table.pixmap(row, 1).isNull());
    }
}

void tst_TableWidgetCells::settingAMissingCellMakesAPlainOne()
{
    TableWidget table;
    table.setColumnCount(2);
    table.setNumRows(1);

    table.setText(0, 0, QStringLiteral("text"));
    table.setPixmap(0, 1, picture(8));

    QCOMPARE(table.text(0, 0), QStringLiteral("text"));
    QCOMPARE(table.text(0, 1), QString());
    for (const int column : {0, 1}) {
        QVERIFY(table.item(0, column));
        QCOMPARE(table.item(0, column)->editType(), TableItem::OnTyping);
    }
}

void tst_TableWidgetCells::settingACellKeepsItsItem()
{
    TableWidget table;
    table.setColumnCount(1);
    table.setNumRows(1);
    auto *item = new TableItem(&table, TableItem::WhenCurrent, QStringLiteral("1"));
    table.setItem(0, 0, item);

    table.setText(0, 0, QStringLiteral("2"));
    table.setPixmap(0, 0, picture(8));

    QCOMPARE(table.item(0, 0), item);
    QCOMPARE(item->text(), QStringLiteral("2"));
    QCOMPARE(item->editType(), TableItem::WhenCurrent);
}

void tst_TableWidgetCells::settingOutsideTheTableDoesNothing_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::newRow("above") << -1 << 0;
    QTest::newRow("below") << 2 << 0;
    QTest::newRow("left") << 1 << -1;
    QTest::newRow("right") << 0 << 2;
}

void tst_TableWidgetCells::settingOutsideTheTableDoesNothing()
{
    QFETCH(int, row);
    QFETCH(int, column);
    TableWidget table;
    table.setColumnCount(2);
    table.setNumRows(2);
    int living = 0;

    table.setText(row, column, QStringLiteral("text"));
    table.setPixmap(row, column, picture(8));
    table.setItem(row, column, new CountedItem(living));

    QCOMPARE(living, 0);
    for (const int cell : {0, 1, 2, 3})
        QVERIFY(!table.item(cell / 2, cell % 2));
}

void tst_TableWidgetCells::setItemDeletesTheOneBefore()
{
    TableWidget table;
    table.setColumnCount(1);
    table.setNumRows(1);
    int living = 0;

    table.setItem(0, 0, new CountedItem(living));
    QCOMPARE(living, 1);
    table.setItem(0, 0, new CountedItem(living));
    QCOMPARE(living, 1);
    table.setItem(0, 0, new TableItem(&table, TableItem::Never, QStringLiteral("other")));
    QCOMPARE(living, 0);
    QCOMPARE(table.text(0, 0), QStringLiteral("other"));
}

void tst_TableWidgetCells::tableDeletesItsItems()
{
    int living = 0;
    {
        TableWidget table;
        table.setColumnCount(1);
        table.setNumRows(3);
        for (int row = 0; row < 3; ++row)
            table.setItem(row, 0, new CountedItem(living));
        table.removeRow(0);
        QCOMPARE(living, 2);
        table.setNumRows(1);
        QCOMPARE(living, 1);
    }
    QCOMPARE(living, 0);
}

void tst_TableWidgetCells::pictureIsKeptAsItIs()
{
    TableScene scene;
    const QPixmap pixmap = picture(8);

    scene.table.setPixmap(1, Name, pixmap);
    QCOMPARE(scene.table.pixmap(1, Name).cacheKey(), pixmap.cacheKey());
    QCOMPARE(scene.table.text(1, Name), QStringLiteral("b"));

    scene.table.setPixmap(1, Name, {});
    QVERIFY(scene.table.pixmap(1, Name).isNull());
    QVERIFY(!scene.table.item(1, Name)->data(Qt::DecorationRole).isValid());
}

void tst_TableWidgetCells::numbersStandAtTheRightAndOtherTextAtTheLeft_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isAtTheRight");
    QTest::newRow("number") << "7" << true;
    QTest::newRow("fraction") << "-1.5" << true;
    QTest::newRow("exponent") << "1e+06" << true;
    QTest::newRow("name") << "Z" << false;
    QTest::newRow("number and more") << "7 Z" << false;
}

// Seen by where the ink is.
void tst_TableWidgetCells::numbersStandAtTheRightAndOtherTextAtTheLeft()
{
    QFETCH(QString, text);
    TableWidget table;
    table.setColumnCount(1);
    table.setNumRows(1);
    table.setText(0, 0, text);
    const QModelIndex index = table.model()->index(0, 0);
    QImage image(300, 20, QImage::Format_RGB32);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        QStyleOptionViewItem option;
        option.initFrom(&table);
        option.state = QStyle::State_Enabled;
        option.palette.setColor(QPalette::Text, Qt::black);
        option.rect = image.rect();
        table.itemDelegateForIndex(index)->paint(&painter, option, index);
    }
    const auto hasInk = [&image](int left, int right) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = left; x < right; ++x) {
                if (qGray(image.pixel(x, y)) < 128)
                    return true;
            }
        }
        return false;
    };
    QTEST(hasInk(150, 300), "isAtTheRight");
    QCOMPARE(hasInk(0, 150), !hasInk(150, 300));
}

void tst_TableWidgetCells::settersAndSortingEmitNothing()
{
    TableScene scene;
    scene.click(1, Type);
    scene.take();

    for (int row = 0; row < scene.table.rowCount(); ++row) {
        scene.table.setText(row, Name, QStringLiteral("new"));
        scene.table.setText(row, Type, QStringLiteral("Wave"));
        scene.table.setPixmap(row, Name, picture(8));
        scene.table.setPixmap(row, Name, picture(8));
        scene.table.setItem(row, Priority, new TableItem(nullptr, TableItem::WhenCurrent, "5"));
        static_cast<ComboTableItem *>(scene.table.item(row, Type))->setCurrentItem("Cycle");
    }
    scene.table.sortColumn(Type, false);
    scene.table.setNumRows(8);

    QCOMPARE(scene.take(), QStringList());
}

void tst_TableWidgetCells::gatheringAnnouncesTheTouchedCellsOnce()
{
    TableScene scene;
    QSignalSpy changes(scene.table.model(), &QAbstractItemModel::dataChanged);
    {
        const TableWidget::Gathering gathering(scene.table);
        scene.table.setText(3, Type, QStringLiteral("Wave"));
        scene.table.setPixmap(1, Group, picture(8));
        scene.table.setItem(2, Priority, new TableItem(nullptr, TableItem::Never, "9"));
        QCOMPARE(changes.count(), 0);
        QCOMPARE(scene.table.text(3, Type), QStringLiteral("Wave"));
    }
    QCOMPARE(changes.count(), 1);
    const QModelIndex first = changes.at(0).at(0).toModelIndex();
    const QModelIndex last = changes.at(0).at(1).toModelIndex();
    QCOMPARE(QPoint(first.column(), first.row()), QPoint(Type, 1));
    QCOMPARE(QPoint(last.column(), last.row()), QPoint(Priority, 3));

    scene.table.setText(0, Name, QStringLiteral("alone"));
    QCOMPARE(changes.count(), 2);
}

void tst_TableWidgetCells::emptyGatheringAnnouncesNothing()
{
    TableScene scene;
    const QSignalSpy changes(scene.table.model(), &QAbstractItemModel::dataChanged);

    for (int round = 0; round < 2; ++round)
        const TableWidget::Gathering gathering(scene.table);

    QCOMPARE(changes.count(), 0);
}

QTEST_MAIN(tst_TableWidgetCells)
#include "tst_TableWidgetCells.moc"
