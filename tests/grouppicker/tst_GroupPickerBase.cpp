#include "Brackets.h"
#include "GroupListView.h"
#include "GroupPickerBase.h"
#include "ListPlaces.h"

#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QMouseEvent>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <utility>

namespace {

/// Longer than a button stays down that a shortcut pressed.
constexpr int clickAnimationMs = 250;

/// Texts of everything in the form that can be read.
QStringList texts(const GroupPickerBase &form)
{
    const QTreeWidgetItem *header = form.m_groupListView->headerItem();
    return {form.windowTitle(),       header->text(0),        header->text(1),
            header->text(2),          form.m_syncBox->text(), form.buttonOk->text(),
            form.buttonCancel->text()};
}

/// A form on the screen with two rows, "One" and "Two", that notes what its list tells.
class ShownForm : public GroupPickerBase
{
public:
    ShownForm()
    {
        new QTreeWidgetItem(m_groupListView, {QStringLiteral("One"), QStringLiteral("x")});
        new QTreeWidgetItem(m_groupListView, {QStringLiteral("Two"), QStringLiteral("y")});
        connect(m_groupListView, &meta::GroupListView::clicked, this,
                [this](const QTreeWidgetItem *item) { note("clicked", item); });
        connect(m_groupListView, &meta::GroupListView::doubleClicked, this,
                [this](const QTreeWidgetItem *item) { note("doubleClicked", item); });
        show();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("the form does not become active");
    }

    QPoint outsideTheList() const { return m_syncBox->geometry().center(); }

    void press(QPoint place, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(windowHandle(), button, {}, place);
    }
    void release(QPoint place, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseRelease(windowHandle(), button, {}, place);
    }
    void click(QPoint place, Qt::MouseButton button = Qt::LeftButton)
    {
        press(place, button);
        release(place, button);
    }
    void doubleClick(QPoint place, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseDClick(windowHandle(), button, {}, place);
    }

    /// The second half of a double click, which may fall elsewhere than the first.
    void clickAgain(int row, int column)
    {
        QWidget *viewport = m_groupListView->viewport();
        const QPointF place = viewport->mapFrom(this, onRow(*this, row, column));
        const QPointF onScreen = viewport->mapToGlobal(place);
        QMouseEvent press(QEvent::MouseButtonDblClick, place, onScreen, Qt::LeftButton,
                          Qt::LeftButton, {});
        QCoreApplication::sendEvent(viewport, &press);
        QMouseEvent release(QEvent::MouseButtonRelease, place, onScreen, Qt::LeftButton, {}, {});
        QCoreApplication::sendEvent(viewport, &release);
    }

    /// What the list told since the last call.
    QString takeNotes() { return std::exchange(m_notes, {}).join(QStringLiteral(", ")); }

private:
    void note(const char *what, const QTreeWidgetItem *item)
    {
        m_notes.append(QString::fromLatin1(what) + u' '
                       + (item ? item->text(0) : QStringLiteral("nothing")));
    }

    QStringList m_notes;
};

} // namespace

class tst_GroupPickerBase : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void nameIsThatOfTheClassUnlessGiven();
    void modalFlagAndWindowFlagsAreTaken();
    void widgetsAreStackedInTheirLayouts();
    void textsAreSet();
    void listStartsEmptyAndSortedByName();
    void okIsTheDefaultButton();
    void formHasItsDesignSize();
    void formGrowsToItsMinimumSizeHint();

    void okAcceptsAndCancelRejects();
    void keysCloseTheForm_data();
    void keysCloseTheForm();

    void translationChangesEveryText();
    void newTranslatorReachesAFormThatExists();
    void shortcutsOutlastATranslation_data();
    void shortcutsOutlastATranslation();
    void languageChangeIsASlot();

    void listTellsOfClicksWithEveryButton_data();
    void listTellsOfClicksWithEveryButton();
    void listTellsOfClicksOnEveryColumn();
    void listTellsOfClicksOnNothing();
    void releaseElsewhereIsNoClick();
    void releaseOverAnItemThatReplacesThePressedOneIsNoClick();
    void doubleClickIsToldOnceAsClickAndOnceAsDoubleClick_data();
    void doubleClickIsToldOnceAsClickAndOnceAsDoubleClick();
    void doubleClickMayFallOnTwoColumns();
    void doubleClickOnTwoItemsIsTwoClicks();
    void doubleClickOnNothingIsNoDoubleClick();
    void signalsOfTheListCanBeConnectedByName();
};

void tst_GroupPickerBase::init()
{
    // The offscreen platform has a warning of its own.
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- The form ---

void tst_GroupPickerBase::nameIsThatOfTheClassUnlessGiven()
{
    QCOMPARE(GroupPickerBase().objectName(), QStringLiteral("GroupPickerBase"));
    QCOMPARE(GroupPickerBase(nullptr, QStringLiteral("Group Picker")).objectName(),
             QStringLiteral("Group Picker"));
}

void tst_GroupPickerBase::modalFlagAndWindowFlagsAreTaken()
{
    QWidget parent;
    const GroupPickerBase plain(&parent);
    QCOMPARE(plain.parentWidget(), &parent);
    QVERIFY(!plain.isModal());
    QVERIFY(plain.isWindow());

    const GroupPickerBase special(nullptr, {}, true, Qt::WindowStaysOnTopHint);
    QVERIFY(special.isModal());
    QVERIFY(special.windowFlags() & Qt::WindowStaysOnTopHint);
}

void tst_GroupPickerBase::widgetsAreStackedInTheirLayouts()
{
    const GroupPickerBase form;
    const auto *column = qobject_cast<QVBoxLayout *>(form.layout());
    QVERIFY(column);
    QCOMPARE(column->objectName(), QStringLiteral("GroupPickerBaseLayout"));
    QCOMPARE(column->contentsMargins(), QMargins(11, 11, 11, 11));
    QCOMPARE(column->spacing(), 6);
    QCOMPARE(column->count(), 3);
    QCOMPARE(column->itemAt(0)->widget(), form.m_groupListView);
    QCOMPARE(column->itemAt(1)->widget(), form.m_syncBox);

    const auto *row = qobject_cast<QHBoxLayout *>(column->itemAt(2)->layout());
    QVERIFY(row);
    QCOMPARE(row->objectName(), QStringLiteral("layout10"));
    QCOMPARE(row->contentsMargins(), QMargins());
    QCOMPARE(row->spacing(), 6);
    QCOMPARE(row->count(), 3);
    QSpacerItem *spacer = row->itemAt(0)->spacerItem();
    QVERIFY(spacer);
    QCOMPARE(spacer->sizeHint(), QSize(201, 21));
    QCOMPARE(spacer->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(spacer->sizePolicy().verticalPolicy(), QSizePolicy::Minimum);
    QCOMPARE(row->itemAt(1)->widget(), form.buttonOk);
    QCOMPARE(row->itemAt(2)->widget(), form.buttonCancel);

    QCOMPARE(form.m_groupListView->objectName(), QStringLiteral("m_groupListView"));
    QCOMPARE(form.m_syncBox->objectName(), QStringLiteral("m_syncBox"));
    QCOMPARE(form.buttonOk->objectName(), QStringLiteral("buttonOk"));
    QCOMPARE(form.buttonCancel->objectName(), QStringLiteral("buttonCancel"));
}

void tst_GroupPickerBase::textsAreSet()
{
    QCOMPARE(texts(GroupPickerBase()),
             QStringList({"Group Picker", "Name", "Type", "GID", "Display Synchronized Groups",
                          "&OK", "&Cancel"}));
}

void tst_GroupPickerBase::listStartsEmptyAndSortedByName()
{
    const GroupPickerBase form;
    const QTreeWidget &list = *form.m_groupListView;
    QCOMPARE(list.columnCount(), 3);
    QCOMPARE(list.topLevelItemCount(), 0);
    QCOMPARE(list.selectionMode(), QAbstractItemView::SingleSelection);
    QVERIFY(list.isSortingEnabled());
    QCOMPARE(list.sortColumn(), 0);
    QCOMPARE(list.header()->sortIndicatorOrder(), Qt::AscendingOrder);
    QVERIFY(!form.m_syncBox->isChecked());
}

void tst_GroupPickerBase::okIsTheDefaultButton()
{
    const GroupPickerBase form;
    QVERIFY(form.buttonOk->isDefault());
    QVERIFY(form.buttonOk->autoDefault());
    QCOMPARE(form.buttonOk->shortcut(), QKeySequence());
    QVERIFY(!form.buttonCancel->isDefault());
    QCOMPARE(form.buttonCancel->shortcut(), QKeySequence(QStringLiteral("Alt+C")));
}

void tst_GroupPickerBase::formHasItsDesignSize()
{
    const GroupPickerBase form;
    QVERIFY(form.minimumSizeHint().width() <= 317);
    QVERIFY(form.minimumSizeHint().height() <= 434);
    QCOMPARE(form.size(), QSize(317, 434));
}

void tst_GroupPickerBase::formGrowsToItsMinimumSizeHint()
{
    const QFont font = QApplication::font();
    QFont large = font;
    large.setPixelSize(40);
    QApplication::setFont(large);
    const GroupPickerBase form;
    const QSize size = form.size();
    const QSize hint = form.minimumSizeHint();
    QApplication::setFont(font);

    QVERIFY(hint.width() > 317);
    QCOMPARE(size, hint.expandedTo(QSize(317, 434)));
}

// --- Closing ---

void tst_GroupPickerBase::okAcceptsAndCancelRejects()
{
    ShownForm form;
    const QSignalSpy accepted(&form, &QDialog::accepted);
    const QSignalSpy rejected(&form, &QDialog::rejected);

    QTest::mouseClick(form.buttonOk, Qt::LeftButton);
    QVERIFY(!form.isVisible());
    QCOMPARE(form.result(), int(QDialog::Accepted));
    QCOMPARE(accepted.count(), 1);

    form.show();
    QTest::mouseClick(form.buttonCancel, Qt::LeftButton);
    QVERIFY(!form.isVisible());
    QCOMPARE(form.result(), int(QDialog::Rejected));
    QCOMPARE(accepted.count(), 1);
    QCOMPARE(rejected.count(), 1);
}

void tst_GroupPickerBase::keysCloseTheForm_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifier");
    QTest::addColumn<QString>("focus");
    QTest::addColumn<QString>("outcome");
    const auto row = [](const char *what, Qt::Key key, Qt::KeyboardModifier modifier,
                        const char *focus, const char *outcome) {
        QTest::newRow(what) << int(key) << int(modifier) << QString::fromLatin1(focus)
                            << QString::fromLatin1(outcome);
    };

    row("Return on the list", Qt::Key_Return, Qt::NoModifier, "m_groupListView", "accepted");
    row("Enter on the list", Qt::Key_Enter, Qt::KeypadModifier, "m_groupListView", "accepted");
    row("Return on the check box", Qt::Key_Return, Qt::NoModifier, "m_syncBox", "accepted");
    row("Return on OK", Qt::Key_Return, Qt::NoModifier, "buttonOk", "accepted");
    row("Return on Cancel", Qt::Key_Return, Qt::NoModifier, "buttonCancel", "rejected");
    row("Escape on the list", Qt::Key_Escape, Qt::NoModifier, "m_groupListView", "rejected");
    row("Escape on OK", Qt::Key_Escape, Qt::NoModifier, "buttonOk", "rejected");
    row("Alt+C on the list", Qt::Key_C, Qt::AltModifier, "m_groupListView", "rejected");
    row("Alt+C on OK", Qt::Key_C, Qt::AltModifier, "buttonOk", "rejected");
    row("Alt+O on the list", Qt::Key_O, Qt::AltModifier, "m_groupListView", "none");
    row("C on the check box", Qt::Key_C, Qt::NoModifier, "m_syncBox", "none");
}

void tst_GroupPickerBase::keysCloseTheForm()
{
    QFETCH(int, key);
    QFETCH(int, modifier);
    QFETCH(QString, focus);
    QFETCH(QString, outcome);
    ShownForm form;
    form.m_groupListView->setCurrentItem(form.m_groupListView->topLevelItem(0));
    auto *focused = form.findChild<QWidget *>(focus);
    QVERIFY(focused);
    focused->setFocus();
    QString seen = QStringLiteral("none");
    connect(&form, &QDialog::accepted, this, [&seen] { seen = QStringLiteral("accepted"); });
    connect(&form, &QDialog::rejected, this, [&seen] { seen = QStringLiteral("rejected"); });

    QTest::keyClick(form.windowHandle(), static_cast<Qt::Key>(key),
                    Qt::KeyboardModifiers(modifier));
    if (outcome == QStringLiteral("none"))
        QTest::qWait(clickAnimationMs);
    QTRY_COMPARE(seen, outcome);
    QCOMPARE(form.isVisible(), outcome == QStringLiteral("none"));
}

// --- Languages ---

void tst_GroupPickerBase::translationChangesEveryText()
{
    Brackets brackets;
    QVERIFY(QCoreApplication::installTranslator(&brackets));
    const QStringList translated = texts(GroupPickerBase());
    QCoreApplication::removeTranslator(&brackets);
    QCOMPARE(translated, QStringList({"[Group Picker]", "[Name]", "[Type]", "[GID]",
                                      "[Display Synchronized Groups]", "[&OK]", "[&Cancel]"}));
}

void tst_GroupPickerBase::newTranslatorReachesAFormThatExists()
{
    ShownForm form;
    const GroupPickerBase hidden;
    const QStringList before = texts(form);
    QStringList bracketed;
    for (const QString &text : before)
        bracketed.append(u'[' + text + u']');

    Brackets brackets;
    QVERIFY(QCoreApplication::installTranslator(&brackets));
    QTRY_COMPARE(texts(form), bracketed);
    QTRY_COMPARE(texts(hidden), bracketed);
    QCoreApplication::removeTranslator(&brackets);
    QTRY_COMPARE(texts(form), before);
    QTRY_COMPARE(texts(hidden), before);
}

void tst_GroupPickerBase::shortcutsOutlastATranslation_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("closes");
    QTest::newRow("Alt+C rejects") << int(Qt::Key_C) << true;
    QTest::newRow("Alt+O does nothing") << int(Qt::Key_O) << false;
}

void tst_GroupPickerBase::shortcutsOutlastATranslation()
{
    QFETCH(int, key);
    QFETCH(bool, closes);
    ShownForm form;
    Brackets brackets;
    QVERIFY(QCoreApplication::installTranslator(&brackets));
    QTRY_COMPARE(form.buttonCancel->text(), QStringLiteral("[&Cancel]"));
    const QSignalSpy finished(&form, &QDialog::finished);

    QTest::keyClick(form.windowHandle(), static_cast<Qt::Key>(key), Qt::AltModifier);
    QTest::qWait(clickAnimationMs);
    QCoreApplication::removeTranslator(&brackets);
    QCOMPARE(finished.count(), closes ? 1 : 0);
    QCOMPARE(form.result(), int(QDialog::Rejected));
}

void tst_GroupPickerBase::languageChangeIsASlot()
{
    GroupPickerBase form;
    form.setWindowTitle(QStringLiteral("x"));
    form.buttonOk->setText(QStringLiteral("&x"));
    form.buttonCancel->setText(QStringLiteral("x"));
    QVERIFY(QMetaObject::invokeMethod(&form, "languageChange"));
    QCOMPARE(form.windowTitle(), QStringLiteral("Group Picker"));
    QCOMPARE(form.buttonOk->text(), QStringLiteral("&OK"));
    QCOMPARE(form.buttonOk->shortcut(), QKeySequence());
    QCOMPARE(form.buttonCancel->shortcut(), QKeySequence(QStringLiteral("Alt+C")));
}

// --- The list's clicks ---

void tst_GroupPickerBase::listTellsOfClicksWithEveryButton_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("left") << int(Qt::LeftButton);
    QTest::newRow("right") << int(Qt::RightButton);
    QTest::newRow("middle") << int(Qt::MiddleButton);
}

void tst_GroupPickerBase::listTellsOfClicksWithEveryButton()
{
    QFETCH(int, button);
    ShownForm form;
    form.press(onRow(form, 1), static_cast<Qt::MouseButton>(button));
    QCOMPARE(form.takeNotes(), QString());
    form.release(onRow(form, 1), static_cast<Qt::MouseButton>(button));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked Two"));
    form.click(onRow(form, 0), static_cast<Qt::MouseButton>(button));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked One"));
}

void tst_GroupPickerBase::listTellsOfClicksOnEveryColumn()
{
    ShownForm form;
    form.press(onRow(form, 1, 0));
    form.release(onRow(form, 1, 1));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked Two"));
    form.click(onRow(form, 0, 1));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked One"));
}

void tst_GroupPickerBase::listTellsOfClicksOnNothing()
{
    ShownForm form;
    form.click(belowTheRows(form));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked nothing"));
    form.click(belowTheRows(form), Qt::RightButton);
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked nothing"));
}

void tst_GroupPickerBase::releaseElsewhereIsNoClick()
{
    ShownForm form;
    form.press(onRow(form, 0));
    form.release(onRow(form, 1));
    form.press(onRow(form, 0));
    form.release(belowTheRows(form));
    form.press(onRow(form, 0));
    form.release(form.outsideTheList());
    form.press(belowTheRows(form));
    form.release(onRow(form, 0));
    form.press(belowTheRows(form));
    form.release(form.outsideTheList());
    QCOMPARE(form.takeNotes(), QString());
}

void tst_GroupPickerBase::releaseOverAnItemThatReplacesThePressedOneIsNoClick()
{
    ShownForm form;
    form.press(onRow(form, 0));
    form.m_groupListView->clear();
    new QTreeWidgetItem(form.m_groupListView, {QStringLiteral("New")});
    form.release(onRow(form, 0));
    QCOMPARE(form.takeNotes(), QString());
}

void tst_GroupPickerBase::doubleClickIsToldOnceAsClickAndOnceAsDoubleClick_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<QString>("notes");
    QTest::newRow("left") << int(Qt::LeftButton) << "clicked Two, doubleClicked Two";
    QTest::newRow("right") << int(Qt::RightButton) << "clicked Two";
    QTest::newRow("middle") << int(Qt::MiddleButton) << "clicked Two";
}

void tst_GroupPickerBase::doubleClickIsToldOnceAsClickAndOnceAsDoubleClick()
{
    QFETCH(int, button);
    QFETCH(QString, notes);
    ShownForm form;
    form.doubleClick(onRow(form, 1), static_cast<Qt::MouseButton>(button));
    QCOMPARE(form.takeNotes(), notes);
    form.click(onRow(form, 1), static_cast<Qt::MouseButton>(button));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked Two"));
}

void tst_GroupPickerBase::doubleClickMayFallOnTwoColumns()
{
    ShownForm form;
    form.click(onRow(form, 1, 0));
    form.clickAgain(1, 1);
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked Two, doubleClicked Two"));
}

void tst_GroupPickerBase::doubleClickOnTwoItemsIsTwoClicks()
{
    ShownForm form;
    form.click(onRow(form, 0));
    form.clickAgain(1, 0);
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked One, clicked Two"));
    QCOMPARE(form.m_groupListView->currentItem()->text(0), QStringLiteral("Two"));
}

void tst_GroupPickerBase::doubleClickOnNothingIsNoDoubleClick()
{
    ShownForm form;
    form.doubleClick(belowTheRows(form));
    QCOMPARE(form.takeNotes(), QStringLiteral("clicked nothing"));
}

void tst_GroupPickerBase::signalsOfTheListCanBeConnectedByName()
{
    ShownForm form;
    QSignalSpy clicked(form.m_groupListView, SIGNAL(clicked(QTreeWidgetItem *)));
    QSignalSpy doubleClicked(form.m_groupListView, SIGNAL(doubleClicked(QTreeWidgetItem *)));
    QVERIFY(clicked.isValid());
    QVERIFY(doubleClicked.isValid());
    form.doubleClick(onRow(form, 0));
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(doubleClicked.count(), 1);
}

QTEST_MAIN(tst_GroupPickerBase)

#include "tst_GroupPickerBase.moc"
