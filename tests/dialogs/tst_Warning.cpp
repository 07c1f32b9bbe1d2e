#include "DialogUser.h"
#include "FileDialogs.h"

#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>

#include <algorithm>

namespace {

const QString caption = QStringLiteral("A caption");
const QString yes = QStringLiteral("Yes");
const QString yesToAll = QStringLiteral("Yes, and Don't Ask Again");
const QString no = QStringLiteral("No");

using BoxUser = DialogUser<QMessageBox>;

/// The buttons of a box from left to right.
QList<QAbstractButton *> buttons(const QMessageBox &box)
{
    QList<QAbstractButton *> found = box.buttons();
    std::sort(found.begin(), found.end(), [&box](const auto *left, const auto *right) {
        return left->mapTo(&box, QPoint()).x() < right->mapTo(&box, QPoint()).x();
    });
    return found;
}

QStringList texts(const QMessageBox &box)
{
    QStringList result;
    for (const QAbstractButton *button : buttons(box))
        result.append(button->text());
    return result;
}

QAbstractButton *button(const QMessageBox &box, const QString &text)
{
    for (QAbstractButton *each : box.buttons()) {
        if (each->text() == text)
            return each;
    }
    return nullptr;
}

void click(const QMessageBox &box, const QString &text)
{
    QTest::mouseClick(button(box, text), Qt::LeftButton);
}

int warn(int defaultButton, int escapeButton, QWidget *parent = nullptr)
{
    return FileDialogs::warning(parent, caption, QStringLiteral("Sure?"), yes, yesToAll, no,
                                defaultButton, escapeButton);
}

} // namespace

/// The toolkit's message box, which every system but one shows.
class tst_Warning : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void warningReturnsTheIndexOfTheButton_data();
    void warningReturnsTheIndexOfTheButton();
    void returnKeyPressesTheDefaultButton_data();
    void returnKeyPressesTheDefaultButton();
    void escapeAndClosingStandForTheEscapeButton_data();
    void escapeAndClosingStandForTheEscapeButton();
    void withoutEscapeButtonTheBoxStays_data();
    void withoutEscapeButtonTheBoxStays();
    void singleButtonIsTheEscapeButton();
    void warningShowsWhatItIsGiven();
    void emptyButtonsAreAbsent_data();
    void emptyButtonsAreAbsent();
    void absentButtonLeavesTheOthersTheirIndex();
    void boxThatGoesWithItsParentIsClosed();
};

void tst_Warning::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

void tst_Warning::warningReturnsTheIndexOfTheButton_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("index");

    QTest::newRow("first") << yes << 0;
    QTest::newRow("second") << yesToAll << 1;
    QTest::newRow("third") << no << 2;
}

void tst_Warning::warningReturnsTheIndexOfTheButton()
{
    QFETCH(QString, text);
    const BoxUser user([&](QMessageBox &box) { click(box, text); });

    QTEST(warn(0, 2), "index");
    QVERIFY(user.isDone());
}

void tst_Warning::returnKeyPressesTheDefaultButton_data()
{
    QTest::addColumn<int>("defaultButton");

    for (int i = 0; i < 3; ++i)
        QTest::addRow("%d", i) << i;
}

void tst_Warning::returnKeyPressesTheDefaultButton()
{
    QFETCH(int, defaultButton);
    const BoxUser user([](QMessageBox &box) { press(box, Qt::Key_Return); });

    QCOMPARE(warn(defaultButton, (defaultButton + 1) % 3), defaultButton);
    QVERIFY(user.isDone());
}

void tst_Warning::escapeAndClosingStandForTheEscapeButton_data()
{
    QTest::addColumn<int>("escapeButton");
    QTest::addColumn<bool>("closes");

    for (int i = 0; i < 3; ++i) {
        QTest::addRow("%d by Escape", i) << i << false;
        QTest::addRow("%d by closing", i) << i << true;
    }
}

void tst_Warning::escapeAndClosingStandForTheEscapeButton()
{
    QFETCH(int, escapeButton);
    QFETCH(bool, closes);
    const BoxUser user([closes](QMessageBox &box) {
        if (closes)
            box.close();
        else
            press(box, Qt::Key_Escape);
    });

    QCOMPARE(warn((escapeButton + 1) % 3, escapeButton), escapeButton);
    QVERIFY(user.isDone());
}

void tst_Warning::withoutEscapeButtonTheBoxStays_data()
{
    QTest::addColumn<int>("escapeButton");

    QTest::newRow("none") << -1;
    QTest::newRow("one too many") << 3;
}

void tst_Warning::withoutEscapeButtonTheBoxStays()
{
    QFETCH(int, escapeButton);
    const BoxUser user([](QMessageBox &box) {
        press(box, Qt::Key_Escape);
        QVERIFY(box.isVisible());
        box.close();
        QVERIFY(box.isVisible());
        click(box, yesToAll);
    });

    QCOMPARE(warn(0, escapeButton), 1);
    QVERIFY(user.isDone());
}

void tst_Warning::singleButtonIsTheEscapeButton()
{
    const BoxUser user([](QMessageBox &box) { press(box, Qt::Key_Escape); });

    QCOMPARE(FileDialogs::warning(nullptr, caption, QStringLiteral("Sure?"), yes, {}, {}, 0, 2), 0);
    QVERIFY(user.isDone());
}

void tst_Warning::warningShowsWhatItIsGiven()
{
    QWidget parent;
    const QString text = QStringLiteral("Are you sure?\nAll will be discarded.");
    const BoxUser user([&](QMessageBox &box) {
        QCOMPARE(box.parentWidget(), &parent);
        QCOMPARE(box.windowTitle(), caption);
        QCOMPARE(box.text(), text);
        QCOMPARE(box.icon(), QMessageBox::Warning);
        QVERIFY(box.isModal());
        QCOMPARE(texts(box), QStringList({yes, yesToAll, no}));
        click(box, no);
    });

    QCOMPARE(FileDialogs::warning(&parent, caption, text, yes, yesToAll, no, 0, 1), 2);
    QVERIFY(user.isDone());
}

void tst_Warning::emptyButtonsAreAbsent_data()
{
    QTest::addColumn<QString>("button0");
    QTest::addColumn<QString>("button1");
    QTest::addColumn<QString>("button2");
    QTest::addColumn<QStringList>("shown");

    const QString none;
    QTest::newRow("all there") << yes << yesToAll << no << QStringList({yes, yesToAll, no});
    QTest::newRow("no third") << yes << yesToAll << none << QStringList({yes, yesToAll});
    QTest::newRow("no second") << yes << none << no << QStringList({yes, no});
    QTest::newRow("first alone") << yes << none << none << QStringList({yes});
    QTest::newRow("no text at all") << none << none << none << QStringList({"OK"});
}

void tst_Warning::emptyButtonsAreAbsent()
{
    QFETCH(QString, button0);
    QFETCH(QString, button1);
    QFETCH(QString, button2);
    QStringList shown;
    const BoxUser user([&shown](QMessageBox &box) {
        shown = texts(box);
        click(box, shown.value(0));
    });

    QCOMPARE(FileDialogs::warning(nullptr, caption, {}, button0, button1, button2, 0, 0), 0);
    QVERIFY(user.isDone());
    QTEST(shown, "shown");
}

void tst_Warning::absentButtonLeavesTheOthersTheirIndex()
{
    const BoxUser user([](QMessageBox &box) { click(box, no); });

    QCOMPARE(FileDialogs::warning(nullptr, caption, {}, yes, {}, no, 0, 0), 2);
    QVERIFY(user.isDone());
}

void tst_Warning::boxThatGoesWithItsParentIsClosed()
{
    auto *parent = new QWidget;
    const BoxUser user([parent](QMessageBox &) { delete parent; });

    QCOMPARE(warn(0, 2, parent), 2);
    QVERIFY(user.isDone());
}

QTEST_MAIN(tst_Warning)
#include "tst_Warning.moc"
