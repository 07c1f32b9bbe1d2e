#include "MetaWidget.h"

#include "TableWidget.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSpinBox>
#include <QSplitter>
#include <QTest>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace {

template<typename Widget>
Widget *child(const QWidget &form, const QString &name)
{
    auto *widget = form.findChild<Widget *>(name);
    if (!widget)
        qFatal("no widget %s", qPrintable(name));
    return widget;
}

bool showActive(QWidget &form)
{
    form.show();
    return QTest::qWaitForWindowActive(&form);
}

/// Notes what radio buttons report, and which of the two reads on meanwhile.
class Toggles
{
public:
    Toggles(QRadioButton *first, QRadioButton *second)
    {
        for (QRadioButton *button : {first, second}) {
            QObject::connect(button, &QRadioButton::toggled, &m_context, [=, this](bool on) {
                noted.append(button->text() + QLatin1String(on ? " on" : " off")
                             + QLatin1String(first->isChecked() ? ", first" : "")
                             + QLatin1String(second->isChecked() ? ", second" : ""));
            });
        }
    }

    QStringList noted;

private:
    QObject m_context;
};

/// The names of the widgets that have the focus, from the table on until it has it again.
QStringList tabStops(MetaWidget &form, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
{
    QStringList stops;
    form.m_effectTable->setFocus();
    do {
        stops.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    } while (QApplication::focusWidget() != form.m_effectTable && stops.size() < 100);
    return stops;
}

} // namespace

class tst_MetaWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();

    // Form
    void formIsNamedAsGivenOrAsItsClass_data();
    void formIsNamedAsGivenOrAsItsClass();
    void parentAndFlagsAreTaken();
    void membersAreTheObjectsOfTheirNames();
    void freshFormIsAtLeastOfItsSize_data();
    void freshFormIsAtLeastOfItsSize();
    void formHasThreeSignalsAndOneSlot();
    void formConnectsNothing();
    void popupMenuBelongsToNoWidgetAndDiesWithTheForm();
    void destroyedFormReportsNoEdit_data();
    void destroyedFormReportsNoEdit();
    void languageChangeSetsTheTextsAgain();

    // Table
    void freshTableHasNineTitledColumnsAndNoRows();
    void tableSelectsSeveralWholeRows();
    void tableDoesNotSortItself();

    // Rules
    void linkSidesStandWithoutAFrame();
    void freshRulesAreDisabledFixedAndLinkedToTheStart();
    void rulesExcludeOneAnother_data();
    void rulesExcludeOneAnother();
    void linkSidesLeaveTheRulesAlone_data();
    void linkSidesLeaveTheRulesAlone();
    void linkSidesKeepTheirPlaces();
    void linkSideBoxesAreAsLargeAsTheirButtons();
    void cyclesOutOfRangeAreRefusedWhenSet_data();
    void cyclesOutOfRangeAreRefusedWhenSet();
    void cyclesOutOfRangeAreRefusedWhenTyped_data();
    void cyclesOutOfRangeAreRefusedWhenTyped();
    void typedCyclesAreReportedOnceEntered();

    // Use
    void tabVisitsTheFieldsInReadingOrder();
    void tabPassesOverDisabledRules();
    void arrowKeysMoveAmongTheRulesOfOneGroup();
    void fieldsAreNamedByTheWordsAroundThem_data();
    void fieldsAreNamedByTheWordsAroundThem();
    void spareRoomGoesToTheTableAndTheParameters();
};

void tst_MetaWidget::init()
{
    // The offscreen platform says this of every window with a minimum size.
    QTest::failOnWarning(
        QRegularExpression(QStringLiteral("^(?!This plugin does not support propagateSizeHints)")));
}

// --- Form ---

void tst_MetaWidget::formIsNamedAsGivenOrAsItsClass_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QString() << QStringLiteral("MetaWidget");
    QTest::newRow("empty") << QStringLiteral("") << QStringLiteral("MetaWidget");
    QTest::newRow("given") << QStringLiteral("editor") << QStringLiteral("editor");
}

void tst_MetaWidget::formIsNamedAsGivenOrAsItsClass()
{
    QFETCH(QString, given);
    QTEST(MetaWidget(nullptr, given).objectName(), "name");
    QCOMPARE(MetaWidget().objectName(), QStringLiteral("MetaWidget"));
}

void tst_MetaWidget::parentAndFlagsAreTaken()
{
    QVERIFY(MetaWidget().isWindow());

    QWidget parent;
    const auto *inside = new MetaWidget(&parent);
    QCOMPARE(inside->parentWidget(), &parent);
    QVERIFY(!inside->isWindow());

    const auto *window = new MetaWidget(&parent, QString(), Qt::Tool);
    QCOMPARE(window->parentWidget(), &parent);
    QCOMPARE(window->windowType(), Qt::Tool);
}

void tst_MetaWidget::membersAreTheObjectsOfTheirNames()
{
    const MetaWidget form;
#define NAMED(member) std::pair<const QObject *, const char *>(form.member, #member)
    const std::pair<const QObject *, const char *> members[] = {
        NAMED(MetaWidgetLayout),
        NAMED(splitter4),
        NAMED(layout18),
        NAMED(m_effectTable),
        NAMED(layout1),
        NAMED(m_deleteEffectButton),
        NAMED(m_newEffectButton),
        NAMED(m_effectComboBox),
        NAMED(splitter2),
        NAMED(m_effectGroupBox),
        NAMED(m_effectParameterFrame),
        NAMED(layout20),
        NAMED(m_startButtonGroup),
        NAMED(layout11),
        NAMED(m_startFixedRadioButton),
        NAMED(layout8),
        NAMED(m_startFixedLineEdit),
        NAMED(textLabel8),
        NAMED(line1),
        NAMED(m_startLinkedLayout),
        NAMED(layout39),
        NAMED(m_startLinkedRadioButton),
        NAMED(m_startLinkButtonGroup),
        NAMED(m_startLinkStartRadioButton),
        NAMED(m_startLinkEndRadioButton),
        NAMED(layout14),
        NAMED(textLabel4),
        NAMED(m_startLinkEffectComboBox),
        NAMED(layout15),
        NAMED(textLabel5),
        NAMED(layout6),
        NAMED(m_startLinkOffsetLineEdit),
        NAMED(textLabel7),
        NAMED(m_endButtonGroup),
        NAMED(layout11_2),
        NAMED(m_endFixedRadioButton),
        NAMED(layout8_2),
        NAMED(m_endFixedLineEdit),
        NAMED(textLabel8_2),
        NAMED(line2),
        NAMED(layout20_2),
        NAMED(layout17),
        NAMED(m_endLinkedRadioButton),
        NAMED(m_endLinkButtonGroup),
        NAMED(m_endLinkStartRadioButton),
        NAMED(m_endLinkEndRadioButton),
        NAMED(layout18_2),
        NAMED(textLabel4_2),
        NAMED(m_endLinkEffectComboBox),
        NAMED(layout19),
        NAMED(textLabel5_2),
        NAMED(layout6_2),
        NAMED(m_endLinkOffsetLineEdit),
        NAMED(textLabel7_2),
        NAMED(line3),
        NAMED(layout22),
        NAMED(m_endCyclesRadioButton),
        NAMED(layout21),
        NAMED(m_endCyclesSpinBox),
        NAMED(textLabel10),
    };
#undef NAMED
    for (const auto &[member, name] : members) {
        QVERIFY2(member, name);
        QCOMPARE(member->objectName(), QString::fromLatin1(name));
        const QString objectName = member->objectName();
        if (member->isWidgetType())
            QCOMPARE(child<QWidget>(form, objectName), member);
        else
            QVERIFY2(form.findChildren<QLayout *>(objectName).contains(member), name);
    }

    // A pane and its layout have one name.
    QCOMPARE(form.layout18->layout(), form.layout18Column);
    QCOMPARE(form.layout18Column->objectName(), QStringLiteral("layout18"));
    QCOMPARE(form.layout20->layout(), form.layout20Column);
    QCOMPARE(form.layout20Column->objectName(), QStringLiteral("layout20"));
}

void tst_MetaWidget::freshFormIsAtLeastOfItsSize_data()
{
    QTest::addColumn<int>("pointSize");
    QTest::newRow("small font") << 5;
    QTest::newRow("usual font") << 9;
    QTest::newRow("huge font") << 40;
}

void tst_MetaWidget::freshFormIsAtLeastOfItsSize()
{
    QFETCH(int, pointSize);
    const QFont usual = QApplication::font();
    QFont font = usual;
    font.setPointSize(pointSize);
    QApplication::setFont(font);
    const MetaWidget form;
    const QSize hint = form.minimumSizeHint();
    QApplication::setFont(usual);

    QCOMPARE(form.size(), QSize(819, 662).expandedTo(hint));
    QVERIFY(pointSize < 40 || (hint.width() > 819 && hint.height() > 662));
    QCOMPARE(form.minimumSize(), QSize(800, 600));
    QCOMPARE(form.maximumSize(), QSize(32767, 32767));
    QCOMPARE(form.sizePolicy(), QSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum));
}

void tst_MetaWidget::formHasThreeSignalsAndOneSlot()
{
    const QMetaObject &meta = MetaWidget::staticMetaObject;
    QCOMPARE(meta.className(), "MetaWidget");
    QCOMPARE(meta.superClass(), &QWidget::staticMetaObject);
    QByteArrayList signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        QCOMPARE(method.access(), QMetaMethod::Public);
        QCOMPARE(method.returnType(), int(QMetaType::Void));
        signatures.append((method.methodType() == QMetaMethod::Signal ? "signal " : "slot ")
                          + method.methodSignature());
    }
    QCOMPARE(signatures,
             QByteArrayList({"signal newEffect(QString)", "signal valueChanged(int,int,QString)",
                             "signal propertyChanged(QString,QString)", "slot languageChange()"}));
}

void tst_MetaWidget::formConnectsNothing()
{
    MetaWidget form;
    const QSignalSpy newEffect(&form, SIGNAL(newEffect(QString)));
    const QSignalSpy valueChanged(&form, SIGNAL(valueChanged(int, int, QString)));
    const QSignalSpy propertyChanged(&form, SIGNAL(propertyChanged(QString, QString)));
    QVERIFY(newEffect.isValid() && valueChanged.isValid() && propertyChanged.isValid());

    form.m_effectComboBox->addItem(QStringLiteral("Dimmer"));
    form.m_effectTable->setNumRows(1);
    form.m_effectTable->selectRow(0);
    form.m_newEffectButton->click();
    form.m_deleteEffectButton->click();
    form.m_startLinkedRadioButton->setChecked(true);
    form.m_startFixedLineEdit->setText(QStringLiteral("1"));
    form.m_endCyclesSpinBox->setValue(7);

    QCOMPARE(newEffect.count() + valueChanged.count() + propertyChanged.count(), 0);
    QCOMPARE(form.m_effectTable->rowCount(), 1);
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());
}

void tst_MetaWidget::popupMenuBelongsToNoWidgetAndDiesWithTheForm()
{
    auto form = std::make_unique<MetaWidget>();
    const QPointer<QMenu> menu(&form->m_popupMenu);
    QVERIFY(!menu->parent());
    QVERIFY(menu->objectName().isEmpty());
    QVERIFY(menu->isEmpty());
    form.reset();
    QVERIFY(!menu);
}

void tst_MetaWidget::destroyedFormReportsNoEdit_data()
{
    QTest::addColumn<QString>("field");
    QTest::newRow("name in the table") << QStringLiteral("m_effectTable");
    for (const char *name : {"m_startFixedLineEdit", "m_startLinkOffsetLineEdit",
                             "m_endFixedLineEdit", "m_endLinkOffsetLineEdit", "m_endCyclesSpinBox"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_MetaWidget::destroyedFormReportsNoEdit()
{
    QFETCH(QString, field);
    auto form = std::make_unique<MetaWidget>();
    form->m_startButtonGroup->setEnabled(true);
    form->m_endButtonGroup->setEnabled(true);
    QVERIFY(showActive(*form));

    if (field == QStringLiteral("m_effectTable")) {
        meta::TableWidget &table = *form->m_effectTable;
        table.setNumRows(1);
        table.setText(0, 0, QStringLiteral("Effect 1"));
        table.setFocus();
        table.setCurrentCell(0, 0);
        table.editItem(table.item(0, 0));
        QVERIFY(qobject_cast<QLineEdit *>(QApplication::focusWidget()));
    } else {
        child<QWidget>(*form, field)->setFocus();
    }
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("3"));

    int reports = 0;
    const auto count = [&reports] { ++reports; };
    QObject context;
    connect(form->m_effectTable, qOverload<int, int>(&meta::TableWidget::valueChanged), &context,
            count);
    connect(form->m_effectTable, qOverload<int, int>(&meta::TableWidget::currentChanged), &context,
            count);
    connect(form->m_effectTable, qOverload<>(&meta::TableWidget::selectionChanged), &context,
            count);
    connect(form->m_endCyclesSpinBox, &QSpinBox::valueChanged, &context, count);
    for (const auto *edit : {form->m_startFixedLineEdit, form->m_startLinkOffsetLineEdit,
                             form->m_endFixedLineEdit, form->m_endLinkOffsetLineEdit}) {
        connect(edit, &QLineEdit::textChanged, &context, count);
        connect(edit, &QLineEdit::editingFinished, &context, count);
    }
    form.reset();
    QCOMPARE(reports, 0);
}

void tst_MetaWidget::languageChangeSetsTheTextsAgain()
{
    MetaWidget form;
    form.setWindowTitle(QStringLiteral("other"));
    form.m_effectTable->horizontalHeaderItem(8)->setText(QStringLiteral("other"));
    form.m_startLinkButtonGroup->setTitle(QStringLiteral("other"));
    form.m_endLinkButtonGroup->setTitle(QStringLiteral("other"));
    form.m_endCyclesRadioButton->setText(QStringLiteral("other"));
    QVERIFY(QMetaObject::invokeMethod(&form, "languageChange"));
    QCOMPARE(form.windowTitle(), QStringLiteral("Form1"));
    QCOMPARE(form.m_effectTable->horizontalHeaderItem(8)->text(), QStringLiteral("EID"));
    QCOMPARE(form.m_startLinkButtonGroup->title(), QString());
    QCOMPARE(form.m_endLinkButtonGroup->title(), QString());
    QCOMPARE(form.m_endCyclesRadioButton->text(), QStringLiteral("A fixed Duration of "));
}

// --- Table ---

void tst_MetaWidget::freshTableHasNineTitledColumnsAndNoRows()
{
    const MetaWidget form;
    const meta::TableWidget &table = *form.m_effectTable;
    QStringList titles;
    for (int column = 0; column < table.columnCount(); ++column)
        titles.append(table.horizontalHeaderItem(column)->text());
    QCOMPARE(titles, QStringList({"Name", "Type", "Group", "Priority", "Start", "End", "Fade In",
                                  "Fade Out", "EID"}));
    QCOMPARE(table.rowCount(), 0);
    QVERIFY(!table.currentIndex().isValid());
}

void tst_MetaWidget::tableSelectsSeveralWholeRows()
{
    const MetaWidget form;
    meta::TableWidget &table = *form.m_effectTable;
    table.setNumRows(3);
    table.selectRow(0);
    table.selectRow(2);
    QCOMPARE(table.selectedRows(), QList<int>({0, 2}));
    QVERIFY(table.selectionModel()->isRowSelected(0));
    QVERIFY(!table.selectionModel()->isRowSelected(1));
}

void tst_MetaWidget::tableDoesNotSortItself()
{
    MetaWidget form;
    meta::TableWidget &table = *form.m_effectTable;
    table.setNumRows(2);
    table.setText(0, 0, QStringLiteral("b"));
    table.setText(1, 0, QStringLiteral("a"));
    QVERIFY(showActive(form));

    const QHeaderView &header = *table.horizontalHeader();
    const QSignalSpy clicks(&header, &QHeaderView::sectionClicked);
    for (int click = 0; click < 2; ++click)
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          {header.sectionViewportPosition(0) + 20, header.height() / 2});
    QCOMPARE(clicks.count(), 2);
    QCOMPARE(table.text(0, 0), QStringLiteral("b"));
    QCOMPARE(table.text(1, 0), QStringLiteral("a"));
}

// --- Rules ---

void tst_MetaWidget::linkSidesStandWithoutAFrame()
{
    const MetaWidget form;
    for (QGroupBox *box : {form.m_startLinkButtonGroup, form.m_endLinkButtonGroup}) {
        for (QRadioButton *button : box->findChildren<QRadioButton *>())
            button->hide();
        QImage image(60, 30, QImage::Format_RGB32);
        image.fill(Qt::white);
        box->resize(image.size());
        box->render(&image, {}, {}, QWidget::DrawChildren);
        QImage blank(image.size(), image.format());
        blank.fill(Qt::white);
        QCOMPARE(image, blank);
    }
}

void tst_MetaWidget::freshRulesAreDisabledFixedAndLinkedToTheStart()
{
    const MetaWidget form;
    QVERIFY(!form.m_startButtonGroup->isEnabled());
    QVERIFY(!form.m_endButtonGroup->isEnabled());

    QStringList checked;
    for (const auto *button : form.findChildren<QRadioButton *>()) {
        if (button->isChecked())
            checked.append(button->objectName());
    }
    checked.sort();
    QCOMPARE(checked, QStringList({"m_endFixedRadioButton", "m_endLinkStartRadioButton",
                                   "m_startFixedRadioButton", "m_startLinkStartRadioButton"}));

    // It is the group alone that is disabled.
    for (const QGroupBox *group : {form.m_startButtonGroup, form.m_endButtonGroup}) {
        for (const auto *widget : group->findChildren<QWidget *>()) {
            if (widget->window() != &form) // the list of a chooser
                continue;
            QVERIFY(!widget->isEnabled());
            QVERIFY2(widget->isEnabledTo(group), qPrintable(widget->objectName()));
        }
    }
    for (const auto *edit : {form.m_startFixedLineEdit, form.m_startLinkOffsetLineEdit,
                             form.m_endFixedLineEdit, form.m_endLinkOffsetLineEdit})
        QCOMPARE(edit->text(), QString());
    for (const auto *chooser : form.findChildren<QComboBox *>()) {
        QCOMPARE(chooser->count(), 0);
        QVERIFY(!chooser->isEditable());
    }
    QCOMPARE(form.m_endCyclesSpinBox->value(), 1);
}

void tst_MetaWidget::rulesExcludeOneAnother_data()
{
    QTest::addColumn<QString>("first"); // checked at creation
    QTest::addColumn<QString>("second");
    QTest::addColumn<bool>("enabled");
    const std::pair<const char *, const char *> pairs[] = {
        {"m_startFixedRadioButton", "m_startLinkedRadioButton"},
        {"m_endFixedRadioButton", "m_endLinkedRadioButton"},
        {"m_endFixedRadioButton", "m_endCyclesRadioButton"},
        {"m_startLinkStartRadioButton", "m_startLinkEndRadioButton"},
        {"m_endLinkStartRadioButton", "m_endLinkEndRadioButton"}};
    for (const auto &[first, second] : pairs) {
        for (const bool enabled : {false, true}) {
            QTest::addRow("%s, %s", second, enabled ? "enabled" : "disabled")
                << QString::fromLatin1(first) << QString::fromLatin1(second) << enabled;
        }
    }
}

// The one that is left reports first; the other reads on by then.
void tst_MetaWidget::rulesExcludeOneAnother()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(bool, enabled);
    const MetaWidget form;
    form.m_startButtonGroup->setEnabled(enabled);
    form.m_endButtonGroup->setEnabled(enabled);
    auto *left = child<QRadioButton>(form, first);
    auto *chosen = child<QRadioButton>(form, second);
    Toggles toggles(left, chosen);

    chosen->setChecked(true);
    QCOMPARE(toggles.noted, QStringList({left->text() + QStringLiteral(" off, second"),
                                         chosen->text() + QStringLiteral(" on, second")}));
    toggles.noted.clear();
    chosen->setChecked(true);
    QCOMPARE(toggles.noted, QStringList());
    left->setChecked(true);
    QCOMPARE(toggles.noted, QStringList({chosen->text() + QStringLiteral(" off, first"),
                                         left->text() + QStringLiteral(" on, first")}));
}

void tst_MetaWidget::linkSidesLeaveTheRulesAlone_data()
{
    QTest::addColumn<QString>("chosen");
    for (const char *name :
         {"m_startFixedRadioButton", "m_startLinkedRadioButton", "m_startLinkStartRadioButton",
          "m_startLinkEndRadioButton", "m_endFixedRadioButton", "m_endLinkedRadioButton",
          "m_endCyclesRadioButton", "m_endLinkStartRadioButton", "m_endLinkEndRadioButton"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_MetaWidget::linkSidesLeaveTheRulesAlone()
{
    QFETCH(QString, chosen);
    const MetaWidget form;
    auto *button = child<QRadioButton>(form, chosen);
    const auto buttons = form.findChildren<QRadioButton *>();
    QCOMPARE(buttons.size(), 9);
    std::vector<bool> before;
    for (const auto *other : buttons)
        before.push_back(other->isChecked());

    button->setChecked(true);
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        if (buttons[i]->parentWidget() != button->parentWidget())
            QCOMPARE(buttons[i]->isChecked(), before[std::size_t(i)]);
        else
            QCOMPARE(buttons[i]->isChecked(), buttons[i] == button);
    }
}

void tst_MetaWidget::linkSidesKeepTheirPlaces()
{
    MetaWidget form;
    const auto verifyPlaces = [&form] {
        QCOMPARE(form.m_startLinkStartRadioButton->geometry(), QRect(0, 0, 77, 18));
        QCOMPARE(form.m_startLinkEndRadioButton->geometry(), QRect(76, 1, 76, 18));
        QCOMPARE(form.m_endLinkStartRadioButton->geometry(), QRect(10, 0, 63, 18));
        QCOMPARE(form.m_endLinkEndRadioButton->geometry(), QRect(80, 0, 63, 18));
    };
    verifyPlaces();
    QVERIFY(showActive(form));
    verifyPlaces();
    form.m_startButtonGroup->setEnabled(true);
    form.resize(1400, 1000);
    form.m_startLinkEndRadioButton->setText(QStringLiteral("The very end"));
    QCoreApplication::processEvents();
    verifyPlaces();
}

void tst_MetaWidget::linkSideBoxesAreAsLargeAsTheirButtons()
{
    MetaWidget form;
    QVERIFY(showActive(form));
    QCOMPARE(form.m_startLinkButtonGroup->sizeHint(), QSize(152, 19));
    QCOMPARE(form.m_endLinkButtonGroup->sizeHint(), QSize(143, 18));
    for (const QGroupBox *box : {form.m_startLinkButtonGroup, form.m_endLinkButtonGroup}) {
        QVERIFY(box->isVisible());
        QVERIFY(box->rect().contains(box->childrenRect()));
        QCOMPARE(box->height(), box->sizeHint().height());
    }
}

void tst_MetaWidget::cyclesOutOfRangeAreRefusedWhenSet_data()
{
    QTest::addColumn<int>("set");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("reports");
    QTest::newRow("below") << 0 << 1 << 1;
    QTest::newRow("negative") << -1 << 1 << 1;
    QTest::newRow("least") << 1 << 1 << 1;
    QTest::newRow("same") << 5 << 5 << 0;
    QTest::newRow("most") << 1000 << 1000 << 1;
    QTest::newRow("above") << 1001 << 1000 << 1;
}

void tst_MetaWidget::cyclesOutOfRangeAreRefusedWhenSet()
{
    QFETCH(int, set);
    const MetaWidget form;
    form.m_endCyclesSpinBox->setValue(5);
    const QSignalSpy reports(form.m_endCyclesSpinBox, &QSpinBox::valueChanged);
    form.m_endCyclesSpinBox->setValue(set);
    QTEST(form.m_endCyclesSpinBox->value(), "value");
    QTEST(int(reports.count()), "reports");
}

void tst_MetaWidget::cyclesOutOfRangeAreRefusedWhenTyped_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("shown"); // while typing
    QTest::addColumn<int>("value");     // once entered
    QTest::newRow("zero") << QStringLiteral("0") << QStringLiteral("0") << 1;
    QTest::newRow("least") << QStringLiteral("1") << QStringLiteral("1") << 1;
    QTest::newRow("most") << QStringLiteral("1000") << QStringLiteral("1000") << 1000;
    QTest::newRow("above") << QStringLiteral("1001") << QStringLiteral("100") << 100;
    QTest::newRow("far above") << QStringLiteral("2000") << QStringLiteral("200") << 200;
    QTest::newRow("negative") << QStringLiteral("-7") << QStringLiteral("7") << 7;
    QTest::newRow("no number") << QStringLiteral("x") << QStringLiteral("5") << 5;
}

void tst_MetaWidget::cyclesOutOfRangeAreRefusedWhenTyped()
{
    QFETCH(QString, keys);
    MetaWidget form;
    form.m_endButtonGroup->setEnabled(true);
    QSpinBox &box = *form.m_endCyclesSpinBox;
    box.setValue(5);
    QVERIFY(showActive(form));
    box.setFocus();
    box.selectAll();
    QTest::keyClicks(&box, keys);
    QTEST(box.text(), "shown");
    QTest::keyClick(&box, Qt::Key_Return);
    QTEST(box.value(), "value");
}

void tst_MetaWidget::typedCyclesAreReportedOnceEntered()
{
    MetaWidget form;
    form.m_endButtonGroup->setEnabled(true);
    QSpinBox &box = *form.m_endCyclesSpinBox;
    QVERIFY(showActive(form));
    box.setFocus();
    box.selectAll();
    QSignalSpy reports(&box, &QSpinBox::valueChanged);
    QTest::keyClicks(&box, QStringLiteral("123"));
    QCOMPARE(reports.count(), 0);
    QTest::keyClick(&box, Qt::Key_Tab);
    QCOMPARE(reports.count(), 1);
    QCOMPARE(reports.takeFirst().constFirst().toInt(), 123);
}

// --- Use ---

void tst_MetaWidget::tabVisitsTheFieldsInReadingOrder()
{
    MetaWidget form;
    form.m_startButtonGroup->setEnabled(true);
    form.m_endButtonGroup->setEnabled(true);
    QVERIFY(showActive(form));

    // Of radio buttons that exclude one another one is a stop; the arrow keys reach the others.
    const QStringList expected = {"m_effectTable",
                                  "m_deleteEffectButton",
                                  "m_newEffectButton",
                                  "m_effectComboBox",
                                  "m_startFixedRadioButton",
                                  "m_startFixedLineEdit",
                                  "m_startLinkStartRadioButton",
                                  "m_startLinkEffectComboBox",
                                  "m_startLinkOffsetLineEdit",
                                  "m_endFixedRadioButton",
                                  "m_endFixedLineEdit",
                                  "m_endLinkStartRadioButton",
                                  "m_endLinkEffectComboBox",
                                  "m_endLinkOffsetLineEdit",
                                  "m_endCyclesSpinBox"};
    QCOMPARE(tabStops(form, Qt::Key_Tab), expected);

    QStringList backwards = expected;
    std::reverse(backwards.begin() + 1, backwards.end());
    QCOMPARE(tabStops(form, Qt::Key_Backtab, Qt::ShiftModifier), backwards);
}

void tst_MetaWidget::tabPassesOverDisabledRules()
{
    MetaWidget form;
    QVERIFY(showActive(form));
    QCOMPARE(tabStops(form, Qt::Key_Tab), QStringList({"m_effectTable", "m_deleteEffectButton",
                                                       "m_newEffectButton", "m_effectComboBox"}));
}

void tst_MetaWidget::arrowKeysMoveAmongTheRulesOfOneGroup()
{
    MetaWidget form;
    form.m_endButtonGroup->setEnabled(true);
    QVERIFY(showActive(form));
    form.m_endFixedRadioButton->setFocus();
    for (const QRadioButton *next : {form.m_endLinkedRadioButton, form.m_endCyclesRadioButton}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        QCOMPARE(QApplication::focusWidget(), next);
        QVERIFY(next->isChecked());
    }
    QVERIFY(form.m_endLinkStartRadioButton->isChecked());
}

void tst_MetaWidget::fieldsAreNamedByTheWordsAroundThem_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("name");
    const std::pair<const char *, const char *> fields[] = {
        {"m_effectComboBox", "New Effect"},
        {"m_startFixedLineEdit", "Fixed at sec."},
        {"m_startLinkEffectComboBox", "of Effect"},
        {"m_startLinkOffsetLineEdit", "with an offset of sec."},
        {"m_endFixedLineEdit", "Fixed duration of sec."},
        {"m_endLinkEffectComboBox", "of Effect"},
        {"m_endLinkOffsetLineEdit", "with an offset of sec."},
        {"m_endCyclesSpinBox", "A fixed Duration of Cycles"}};
    for (const auto &[field, name] : fields)
        QTest::newRow(field) << QString::fromLatin1(field) << QString::fromLatin1(name);
}

void tst_MetaWidget::fieldsAreNamedByTheWordsAroundThem()
{
    QFETCH(QString, field);
    QTEST(child<QWidget>(MetaWidget(), field)->accessibleName(), "name");
}

void tst_MetaWidget::spareRoomGoesToTheTableAndTheParameters()
{
    MetaWidget form;
    QVERIFY(showActive(form));
    const QSize table = form.m_effectTable->size();
    const QSize parameters = form.m_effectGroupBox->size();
    const QSize rules = form.layout20->size();
    form.resize(form.size() + QSize(200, 100));
    QCoreApplication::processEvents();
    QCOMPARE(form.m_effectTable->size(), table + QSize(200, 100));
    QCOMPARE(form.m_effectGroupBox->size(), parameters + QSize(0, 100));
    QCOMPARE(form.layout20->size(), rules);
}

QTEST_MAIN(tst_MetaWidget)
#include "tst_MetaWidget.moc"
