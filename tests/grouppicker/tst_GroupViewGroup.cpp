#include "GroupViewGroup.h"

#include <QPixmap>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidget>

#include <vector>

namespace {

/// No type that a group view knows.
constexpr auto unknownGroup = static_cast<GroupTypeEnum>(0);

const QStringList nineLamps{
    QStringLiteral("................"), //
    QStringLiteral("..##...##...##.."), //
    QStringLiteral(".#aa#.#bb#.#cc#."), //
    QStringLiteral(".#aa#.#bb#.#cc#."), //
    QStringLiteral("..##...##...##.."), //
    QStringLiteral("................"), //
    QStringLiteral("..##...##...##.."), //
    QStringLiteral(".#aa#.#bb#.#cc#."), //
    QStringLiteral(".#aa#.#bb#.#cc#."), //
    QStringLiteral("..##...##...##.."), //
    QStringLiteral("................"), //
    QStringLiteral("..##...##...##.."), //
    QStringLiteral(".#aa#.#bb#.#cc#."), //
    QStringLiteral(".#aa#.#bb#.#cc#."), //
    QStringLiteral("..##...##...##.."), //
    QStringLiteral("................"),
};

const QStringList oneLamp{
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral(".......##......."), //
    QStringLiteral("......#bb#......"), //
    QStringLiteral("......#bb#......"), //
    QStringLiteral(".......##......."), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"), //
    QStringLiteral("................"),
};

/// What the letters of the rows above stand for.
struct Colours
{
    QRgb background;
    QRgb ring;
    QRgb a;
    QRgb b;
    QRgb c;
};

constexpr QRgb white = 0xffffffff;
constexpr QRgb black = 0xff000000;
constexpr QRgb red = 0xffff0000;
constexpr QRgb orange = 0xffe08040;
constexpr QRgb yellow = 0xffffff00;
constexpr QRgb green = 0xff00e080;
constexpr QRgb darkGrey = 0xff898989;
constexpr QRgb lightGrey = 0xffe8e8e8;

QImage image(const QStringList &rows, const Colours &colours)
{
    QImage image(16, 16, QImage::Format_ARGB32);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            QRgb colour = colours.background;
            switch (rows.at(y).at(x).toLatin1()) {
            case '#': colour = colours.ring; break;
            case 'a': colour = colours.a; break;
            case 'b': colour = colours.b; break;
            case 'c': colour = colours.c; break;
            }
            image.setPixel(x, y, colour);
        }
    }
    return image;
}

QPixmap pixmap(const QTreeWidgetItem &item)
{
    return item.data(0, Qt::DecorationRole).value<QPixmap>();
}

/// "chase", "sync", "leaf", "empty", or "none" for a picture that is not there.
QString picture(const QTreeWidgetItem &item)
{
    const QPixmap shown = pixmap(item);
    if (shown.isNull())
        return QStringLiteral("none");
    const QImage pixels = shown.toImage();
    switch (pixels.pixel(2, 2)) { // of the lamp at the top left
    case red: return QStringLiteral("chase");
    case green: return QStringLiteral("sync");
    case white: return QStringLiteral("leaf");
    case lightGrey: return QStringLiteral("empty");
    }
    return QStringLiteral("strange");
}

/// A list of three columns that is not shown.
class List : public QTreeWidget
{
public:
    List() { setColumnCount(3); }

    GroupViewGroup *add(const QString &name, const QString &type = {}, quint32 uid = 0)
    {
        auto *group = new GroupViewGroup(this, uid, ChasingGroup);
        group->setText(0, name);
        group->setText(1, type);
        group->setText(2, QString::number(uid));
        return group;
    }
    QStringList column(int column) const
    {
        QStringList texts;
        for (int row = 0; row < topLevelItemCount(); ++row)
            texts.append(topLevelItem(row)->text(column));
        return texts;
    }
};

} // namespace

class tst_GroupViewGroup : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void newItemIsPlacedWhereItIsMade();
    void newItemIsClosedDraggableAndNotEmpty();
    void typeCodeIs2004();

    void picturesArePixelForPixel_data();
    void picturesArePixelForPixel();
    void picturesAreShared();
    void typeAndEmptinessChooseThePicture();
    void newItemOfUnknownTypeHasNoPicture();
    void unknownTypeKeepsThePicture();
    void unknownTypeKeepsTheEmptyPictureWhenNoLongerEmpty();

    void nameIsStoredAndShown();
    void textIsNotTheName();

    void nameKeyHasItsNumbersFilledUp_data();
    void nameKeyHasItsNumbersFilledUp();
    void nameKeyFollowsTheText();
    void otherColumnsAreKeyedByTheirText();
    void keyIsTheSameInBothDirections();

    void rowsAreSortedByTheirKeys_data();
    void rowsAreSortedByTheirKeys();
    void rowsOfTheSameUidAreSortedByNameThenType();
    void rowsMoveWhenTheirTextChanges();
    void rowsUnderAnItemAreSortedToo();
    void itemsWithoutAListCompareByName();
};

// --- Making ---

void tst_GroupViewGroup::newItemIsPlacedWhereItIsMade()
{
    QTreeWidget list;
    auto *first = new GroupViewGroup(&list, 11, ChasingGroup);
    auto *last = new GroupViewGroup(&list, 12, SynchronizedGroup);
    auto *second = new GroupViewGroup(&list, first, 4294967295U, LeafGroup);
    QCOMPARE(list.topLevelItemCount(), 3);
    QCOMPARE(list.topLevelItem(0), first);
    QCOMPARE(list.topLevelItem(1), second);
    QCOMPARE(list.topLevelItem(2), last);

    auto *firstChild = new GroupViewGroup(first, 21, LeafGroup);
    auto *lastChild = new GroupViewGroup(first, 22, ChasingGroup);
    auto *secondChild = new GroupViewGroup(first, firstChild, 23, unknownGroup);
    QCOMPARE(first->childCount(), 3);
    QCOMPARE(first->child(0), firstChild);
    QCOMPARE(first->child(1), secondChild);
    QCOMPARE(first->child(2), lastChild);

    QCOMPARE(first->getUID(), 11U);
    QCOMPARE(first->getType(), ChasingGroup);
    QCOMPARE(second->getUID(), 4294967295U);
    QCOMPARE(second->getType(), LeafGroup);
    QCOMPARE(firstChild->getUID(), 21U);
    QCOMPARE(firstChild->getType(), LeafGroup);
    QCOMPARE(secondChild->getUID(), 23U);
    QCOMPARE(secondChild->getType(), unknownGroup);
}

void tst_GroupViewGroup::newItemIsClosedDraggableAndNotEmpty()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, SynchronizedGroup);
    const std::vector<GroupViewGroup *> groups{
        group, new GroupViewGroup(&list, group, 2, SynchronizedGroup),
        new GroupViewGroup(group, 3, SynchronizedGroup),
        new GroupViewGroup(group, group->child(0), 4, SynchronizedGroup)};
    for (const GroupViewGroup *item : groups) {
        QVERIFY(!item->isExpanded());
        QVERIFY(item->flags() & Qt::ItemIsDragEnabled);
        QVERIFY(!item->getEmpty());
        QCOMPARE(item->getName(), QString());
        QCOMPARE(picture(*item), QStringLiteral("sync"));
    }
}

void tst_GroupViewGroup::typeCodeIs2004()
{
    QTreeWidget list;
    const auto *group = new GroupViewGroup(&list, 1, ChasingGroup);
    QCOMPARE(group->type(), 2004);
    QCOMPARE((new GroupViewGroup(&list, list.topLevelItem(0), 2, ChasingGroup))->type(), 2004);
    QCOMPARE((new GroupViewGroup(list.topLevelItem(0), 3, ChasingGroup))->type(), 2004);
    QCOMPARE((new GroupViewGroup(list.topLevelItem(0), nullptr, 4, ChasingGroup))->type(), 2004);
}

// --- Pictures ---

void tst_GroupViewGroup::picturesArePixelForPixel_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("empty");
    QTest::addColumn<QImage>("expected");

    QTest::newRow("chasing") << int(ChasingGroup) << false
                             << image(nineLamps, {white, black, red, orange, yellow});
    QTest::newRow("synchronized") << int(SynchronizedGroup) << false
                                  << image(nineLamps, {white, black, green, green, green});
    QTest::newRow("leaf") << int(LeafGroup) << false
                          << image(oneLamp, {white, black, red, red, red});
    QTest::newRow("empty") << int(ChasingGroup) << true
                           << image(nineLamps, {white, darkGrey, lightGrey, lightGrey, lightGrey});
}

void tst_GroupViewGroup::picturesArePixelForPixel()
{
    QFETCH(int, type);
    QFETCH(bool, empty);
    QFETCH(QImage, expected);
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, static_cast<GroupTypeEnum>(type));
    group->setEmpty(empty);
    QCOMPARE(pixmap(*group).toImage().convertToFormat(QImage::Format_ARGB32), expected);
}

void tst_GroupViewGroup::picturesAreShared()
{
    QTreeWidget list;
    for (const GroupTypeEnum type : {ChasingGroup, SynchronizedGroup, LeafGroup}) {
        auto *one = new GroupViewGroup(&list, 1, type);
        auto *other = new GroupViewGroup(&list, 2, type);
        QCOMPARE(pixmap(*one).cacheKey(), pixmap(*other).cacheKey());
        one->setEmpty(true);
        QVERIFY(pixmap(*one).cacheKey() != pixmap(*other).cacheKey());
        other->setEmpty(true);
        QCOMPARE(pixmap(*one).cacheKey(), pixmap(*other).cacheKey());
    }
}

void tst_GroupViewGroup::typeAndEmptinessChooseThePicture()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, ChasingGroup);
    QCOMPARE(picture(*group), QStringLiteral("chase"));
    group->setType(SynchronizedGroup);
    QCOMPARE(picture(*group), QStringLiteral("sync"));
    group->setType(LeafGroup);
    QCOMPARE(picture(*group), QStringLiteral("leaf"));

    group->setEmpty(true);
    QVERIFY(group->getEmpty());
    QCOMPARE(picture(*group), QStringLiteral("empty"));
    group->setType(SynchronizedGroup);
    QCOMPARE(group->getType(), SynchronizedGroup);
    QCOMPARE(picture(*group), QStringLiteral("empty"));

    group->setEmpty(false);
    QVERIFY(!group->getEmpty());
    QCOMPARE(picture(*group), QStringLiteral("sync"));
}

void tst_GroupViewGroup::newItemOfUnknownTypeHasNoPicture()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, unknownGroup);
    QCOMPARE(picture(*group), QStringLiteral("none"));
    group->setEmpty(true);
    QCOMPARE(picture(*group), QStringLiteral("empty"));
}

void tst_GroupViewGroup::unknownTypeKeepsThePicture()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, LeafGroup);
    group->setType(unknownGroup);
    QCOMPARE(group->getType(), unknownGroup);
    QCOMPARE(picture(*group), QStringLiteral("leaf"));
}

void tst_GroupViewGroup::unknownTypeKeepsTheEmptyPictureWhenNoLongerEmpty()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, unknownGroup);
    group->setEmpty(true);
    group->setEmpty(false);
    QVERIFY(!group->getEmpty());
    QCOMPARE(picture(*group), QStringLiteral("empty"));
}

// --- Names ---

void tst_GroupViewGroup::nameIsStoredAndShown()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, ChasingGroup);
    group->setName(QStringLiteral("  Arch  2 "));
    QCOMPARE(group->getName(), QStringLiteral("  Arch  2 "));
    QCOMPARE(group->text(0), QStringLiteral("  Arch  2 "));
}

void tst_GroupViewGroup::textIsNotTheName()
{
    QTreeWidget list;
    auto *group = new GroupViewGroup(&list, 1, ChasingGroup);
    group->setText(0, QStringLiteral("Arch"));
    QCOMPARE(group->getName(), QString());
}

// --- Keys ---

void tst_GroupViewGroup::nameKeyHasItsNumbersFilledUp_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key");
    const auto row = [](const char *what, const char *text, const char *key) {
        QTest::newRow(what) << QString::fromUtf8(text) << QString::fromUtf8(key);
    };

    row("nothing", "", "");
    row("blanks alone", "   ", "");
    row("no digits", "Front Arch", "Front Arch");
    row("two numbers", "a12b3", "a0000000012b0000000003");
    row("blanks simplified", "  Zone   4", "Zone 0000000004");
    row("tabs and lines simplified", "\tZone\n4 \r\n", "Zone 0000000004");
    row("number at the start", "7 Dwarfs", "0000000007 Dwarfs");
    row("zero", "0", "0000000000");
    row("zeros in front", "a007", "a0000000007");
    row("ten digits with zeros", "a0000000007", "a0000000007");
    row("signs and points are no digits", "-1.5e+3", "-0000000001.0000000005e+0000000003");
    row("two numbers a blank apart", "1 2", "0000000001 0000000002");

    row("largest that fits", "4294967295", "4294967295");
    row("one more stays", "4294967296", "4294967296");
    row("ten digits stay, the next number does not", "9999999999 7", "9999999999 0000000007");
    row("eleven digits: taken up from the eleventh", "99999999999", "99999999990000000009");
    row("twelve digits: ten stay, two are filled up", "x123456789012", "x12345678900000000012");
    row("twelve digits that fit", "x000000000012", "x0000000012");
    row("fifteen digits, then letters", "123456789012345b6", "12345678900000012345b0000000006");
    row("twenty-five digits: taken up twice", "1234567890123456789012345",
        "123456789012345678900000012345");
    row("twenty digits that never fit", "99999999999999999999", "99999999999999999999");

    // Digits of other scripts are a run that is no number: the search goes on ten characters on.
    row("other digits stay", "Zone ٣", "Zone ٣");
    row("mixed digits stay", "Zone 1٣", "Zone 1٣");
    row("number within ten characters stays", "٣ 12", "٣ 12");
    row("number ten characters on is filled up", "٣ 34567890 12", "٣ 34567890 0000000012");
    row("number is cut ten characters on", "٣ 345678901 2", "٣ 345678900000000001 0000000002");
    row("superscript is no digit", "m²3", "m²0000000003");
    row("letters outside the base plane", "😀𝟗1", "😀𝟗0000000001");
}

void tst_GroupViewGroup::nameKeyHasItsNumbersFilledUp()
{
    QFETCH(QString, text);
    QFETCH(QString, key);
    List list;
    QCOMPARE(list.add(text)->key(0, true), key);
}

void tst_GroupViewGroup::nameKeyFollowsTheText()
{
    List list;
    GroupViewGroup *group = list.add(QStringLiteral("a1"));
    QCOMPARE(group->key(0, true), QStringLiteral("a0000000001"));
    group->setText(0, QStringLiteral("b2"));
    QCOMPARE(group->key(0, true), QStringLiteral("b0000000002"));
    group->setName(QStringLiteral("c3"));
    QCOMPARE(group->key(0, true), QStringLiteral("c0000000003"));
    group->setData(0, Qt::EditRole, QStringLiteral("d4"));
    QCOMPARE(group->key(0, true), QStringLiteral("d0000000004"));
    list.model()->setData(list.model()->index(0, 0), QStringLiteral("e5"));
    QCOMPARE(group->key(0, true), QStringLiteral("e0000000005"));
}

void tst_GroupViewGroup::otherColumnsAreKeyedByTheirText()
{
    List list;
    const GroupViewGroup *group = list.add(QStringLiteral("a1"), QStringLiteral("  Type  9 "), 12);
    QCOMPARE(group->key(1, true), QStringLiteral("  Type  9 "));
    QCOMPARE(group->key(2, true), QStringLiteral("12"));
    QCOMPARE(group->key(3, true), QString());
}

void tst_GroupViewGroup::keyIsTheSameInBothDirections()
{
    List list;
    const GroupViewGroup *group = list.add(QStringLiteral("a1"), QStringLiteral("Chasing"), 12);
    for (int column = 0; column < 3; ++column)
        QCOMPARE(group->key(column, false), group->key(column, true));
}

// --- Order ---

void tst_GroupViewGroup::rowsAreSortedByTheirKeys_data()
{
    QTest::addColumn<QStringList>("rows"); // "name|type|uid"
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QString>("sorted"); // their uids

    const QStringList numbered{QStringLiteral("Group 10|x|1"), QStringLiteral("Group 9|x|2"),
                               QStringLiteral("Group 100|x|3")};
    QTest::newRow("natural order") << numbered << 0 << true << "2 1 3";
    QTest::newRow("natural order, descending") << numbered << 0 << false << "3 1 2";

    const QStringList letters{QStringLiteral("b|x|1"), QStringLiteral("a|x|2"),
                              QStringLiteral("B|x|3"), QStringLiteral("\u00e4|x|4")};
    QTest::newRow("by code units, not by the user's language") << letters << 0 << true << "3 2 1 4";

    const QStringList typed{QStringLiteral("a|Type 9|1"), QStringLiteral("b|Type 10|2"),
                            QStringLiteral("c|Chasing|3")};
    QTest::newRow("type by its text") << typed << 1 << true << "3 2 1";
    QTest::newRow("type by its text, descending") << typed << 1 << false << "1 2 3";

    const QStringList uids{QStringLiteral("a|x|9"), QStringLiteral("b|x|10"),
                           QStringLiteral("c|x|100")};
    QTest::newRow("uid by its text") << uids << 2 << true << "10 100 9";

    const QStringList namesakes{QStringLiteral("a|Unknown|1"), QStringLiteral("a|Chasing|3"),
                                QStringLiteral("a|Chasing|2")};
    QTest::newRow("same name: by type, then by uid") << namesakes << 0 << true << "2 3 1";
    QTest::newRow("same name, descending") << namesakes << 0 << false << "1 3 2";

    const QStringList sameKey{QStringLiteral("Zone  04|x|2"), QStringLiteral("Zone 4|x|1")};
    QTest::newRow("same key of different names") << sameKey << 0 << true << "1 2";

    const QStringList sameType{QStringLiteral("Group 10|x|1"), QStringLiteral("Group 9|x|3"),
                               QStringLiteral("Group 9|x|2")};
    QTest::newRow("same type: by name in natural order, then by uid")
        << sameType << 1 << true << "2 3 1";
}

void tst_GroupViewGroup::rowsAreSortedByTheirKeys()
{
    QFETCH(QStringList, rows);
    QFETCH(int, column);
    QFETCH(bool, ascending);
    QFETCH(QString, sorted);
    List list;
    for (const QString &row : rows) {
        const QStringList texts = row.split(u'|');
        list.add(texts.at(0), texts.at(1), texts.at(2).toUInt());
    }

    list.sortByColumn(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    list.setSortingEnabled(true);

    QCOMPARE(list.column(2).join(u' '), sorted);
}

void tst_GroupViewGroup::rowsOfTheSameUidAreSortedByNameThenType()
{
    List list;
    list.add(QStringLiteral("b 10"), QStringLiteral("x"), 5);
    list.add(QStringLiteral("b 9"), QStringLiteral("y"), 5);
    list.add(QStringLiteral("b 9"), QStringLiteral("x"), 5);
    list.sortByColumn(2, Qt::AscendingOrder);
    list.setSortingEnabled(true);
    QCOMPARE(list.column(0), QStringList({"b 9", "b 9", "b 10"}));
    QCOMPARE(list.column(1), QStringList({"x", "y", "x"}));
}

void tst_GroupViewGroup::rowsMoveWhenTheirTextChanges()
{
    List list;
    list.sortByColumn(0, Qt::AscendingOrder);
    list.setSortingEnabled(true);
    list.add(QStringLiteral("a2"));
    GroupViewGroup *moved = list.add(QStringLiteral("a1"));
    list.add(QStringLiteral("a3"));
    QCOMPARE(list.column(0), QStringList({"a1", "a2", "a3"}));

    moved->setText(0, QStringLiteral("a10"));
    QCOMPARE(list.column(0), QStringList({"a2", "a3", "a10"}));
}

void tst_GroupViewGroup::rowsUnderAnItemAreSortedToo()
{
    List list;
    GroupViewGroup *parent = list.add(QStringLiteral("parent"));
    for (const char *name : {"a10", "a9"})
        (new GroupViewGroup(parent, 1, LeafGroup))->setName(QString::fromLatin1(name));
    list.sortByColumn(0, Qt::AscendingOrder);
    list.setSortingEnabled(true);
    QCOMPARE(parent->child(0)->text(0), QStringLiteral("a9"));
    QCOMPARE(parent->child(1)->text(0), QStringLiteral("a10"));
}

void tst_GroupViewGroup::itemsWithoutAListCompareByName()
{
    QTreeWidgetItem parent;
    auto *nine = new GroupViewGroup(&parent, 2, LeafGroup);
    nine->setName(QStringLiteral("Group 9"));
    auto *ten = new GroupViewGroup(&parent, 1, LeafGroup);
    ten->setName(QStringLiteral("Group 10"));
    QVERIFY(*nine < *ten);
    QVERIFY(!(*ten < *nine));
    QVERIFY(!(*nine < *nine));
}

QTEST_MAIN(tst_GroupViewGroup)

#include "tst_GroupViewGroup.moc"
