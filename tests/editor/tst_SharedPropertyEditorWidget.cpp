#include "SharedPropertyEditorWidget.h"

#include <QHBoxLayout>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTest>

class tst_SharedPropertyEditorWidget : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void formIsNamedAsGivenOrAsItsClass_data();
    void formIsNamedAsGivenOrAsItsClass();
    void parentAndFlagsAreTaken();
    void membersAreTheObjectsOfTheirNames();
    void freshFormShowsAnEmptyTableOfTwoColumns();
    void freshFormIsAtLeastOfItsSize();
    void formHasNoSignals();
    void languageChangeSetsTheTextsAgain();
};

void tst_SharedPropertyEditorWidget::formIsNamedAsGivenOrAsItsClass_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QString() << QStringLiteral("SharedPropertyEditorWidget");
    QTest::newRow("empty") << QStringLiteral("") << QStringLiteral("SharedPropertyEditorWidget");
    QTest::newRow("given") << QStringLiteral("properties") << QStringLiteral("properties");
}

void tst_SharedPropertyEditorWidget::formIsNamedAsGivenOrAsItsClass()
{
    QFETCH(QString, given);
    QTEST(SharedPropertyEditorWidget(nullptr, given).objectName(), "name");
}

void tst_SharedPropertyEditorWidget::parentAndFlagsAreTaken()
{
    QWidget parent;
    const auto *child = new SharedPropertyEditorWidget(&parent);
    QCOMPARE(child->parentWidget(), &parent);
    QVERIFY(!child->isWindow());

    const auto *window = new SharedPropertyEditorWidget(&parent, QString(), Qt::Tool);
    QCOMPARE(window->parentWidget(), &parent);
    QCOMPARE(window->windowType(), Qt::Tool);
}

void tst_SharedPropertyEditorWidget::membersAreTheObjectsOfTheirNames()
{
    const SharedPropertyEditorWidget form;
    QCOMPARE(form.findChild<QTableWidget *>(QStringLiteral("m_propertyTable")),
             form.m_propertyTable);
    QCOMPARE(form.findChild<QHBoxLayout *>(QStringLiteral("SharedPropertyEditorWidgetLayout")),
             form.SharedPropertyEditorWidgetLayout);
    QCOMPARE(form.layout(), form.SharedPropertyEditorWidgetLayout);
}

void tst_SharedPropertyEditorWidget::freshFormShowsAnEmptyTableOfTwoColumns()
{
    const SharedPropertyEditorWidget form;
    const QTableWidget &table = *form.m_propertyTable;
    QCOMPARE(table.rowCount(), 0);
    QCOMPARE(table.columnCount(), 2);
    QCOMPARE(table.horizontalHeaderItem(0)->text(), QStringLiteral("Property"));
    QCOMPARE(table.horizontalHeaderItem(1)->text(), QStringLiteral("Value"));
    QCOMPARE(form.windowTitle(), QStringLiteral("Form1"));
}

void tst_SharedPropertyEditorWidget::freshFormIsAtLeastOfItsSize()
{
    const SharedPropertyEditorWidget form;
    QCOMPARE(form.size(), QSize(330, 356).expandedTo(form.minimumSizeHint()));
}

void tst_SharedPropertyEditorWidget::formHasNoSignals()
{
    const QMetaObject &meta = SharedPropertyEditorWidget::staticMetaObject;
    QCOMPARE(meta.className(), "SharedPropertyEditorWidget");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod slot = meta.method(meta.methodOffset());
    QCOMPARE(slot.methodSignature(), QByteArray("languageChange()"));
    QCOMPARE(slot.methodType(), QMetaMethod::Slot);
    QCOMPARE(slot.access(), QMetaMethod::Public);
}

void tst_SharedPropertyEditorWidget::languageChangeSetsTheTextsAgain()
{
    SharedPropertyEditorWidget form;
    form.setWindowTitle(QStringLiteral("other"));
    form.m_propertyTable->setHorizontalHeaderLabels({QStringLiteral("a"), QStringLiteral("b")});
    QVERIFY(QMetaObject::invokeMethod(&form, "languageChange"));
    QCOMPARE(form.windowTitle(), QStringLiteral("Form1"));
    QCOMPARE(form.m_propertyTable->horizontalHeaderItem(0)->text(), QStringLiteral("Property"));
    QCOMPARE(form.m_propertyTable->horizontalHeaderItem(1)->text(), QStringLiteral("Value"));
}

QTEST_MAIN(tst_SharedPropertyEditorWidget)
#include "tst_SharedPropertyEditorWidget.moc"
