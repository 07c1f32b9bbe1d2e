#include "GroupPickerBase.h"
#include "MetaWidget.h"
#include "SharedPropertyEditorWidget.h"
#include "WidgetDump.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTest>
#include <QTranslator>
#include <QTreeWidget>

#include <functional>
#include <memory>

using MakeForm = std::function<std::unique_ptr<QWidget>(QWidget *parent)>;

Q_DECLARE_METATYPE(MakeForm)

namespace {

template<typename Form>
MakeForm maker()
{
    return [](QWidget *parent) { return std::make_unique<Form>(parent); };
}

/// Puts the texts of one class into brackets.
class Bracketing : public QTranslator
{
public:
    explicit Bracketing(const QByteArray &context) : m_context(context) {}

    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        return context == m_context ? u'[' + QString::fromUtf8(source) + u']' : QString();
    }

private:
    QByteArray m_context;
};

/// Every text that the form shows, by child order: captions, titles, titles of columns, buttons,
/// labels.
QStringList visibleTexts(const QWidget &form)
{
    QStringList texts{form.windowTitle()};
    for (const auto *widget : form.findChildren<QWidget *>()) {
        if (const auto *box = qobject_cast<const QGroupBox *>(widget)) {
            texts.append(box->title());
        } else if (const auto *table = qobject_cast<const QTableWidget *>(widget)) {
            for (int column = 0; column < table->columnCount(); ++column)
                texts.append(table->horizontalHeaderItem(column)->text());
        } else if (const auto *tree = qobject_cast<const QTreeWidget *>(widget)) {
            for (int column = 0; column < tree->columnCount(); ++column)
                texts.append(tree->headerItem()->text(column));
        } else if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            texts.append(label->text());
        } else if (qobject_cast<const QPushButton *>(widget)
                   || qobject_cast<const QCheckBox *>(widget)
                   || qobject_cast<const QRadioButton *>(widget)) {
            texts.append(static_cast<const QAbstractButton *>(widget)->text());
        }
    }
    return texts;
}

void install(QTranslator &translator)
{
    QCoreApplication::installTranslator(&translator);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
}

void remove(QTranslator &translator)
{
    QCoreApplication::removeTranslator(&translator);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
}

QStringList bracketed(QStringList texts)
{
    for (QString &text : texts) {
        if (!text.isEmpty())
            text = u'[' + text + u']';
    }
    return texts;
}

} // namespace

// Compares the forms with their trees in tests/golden. With META_REFRESH_GOLDEN set (target
// refresh_golden) it writes the trees anew instead.
class tst_WidgetTrees : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".?"))); }

    void formIsBuiltAsItsGoldenTree_data() { addForms(); }
    void formIsBuiltAsItsGoldenTree();
    void everyTextFollowsTheTranslator_data() { addForms(); }
    void everyTextFollowsTheTranslator();
    void formBuiltWhileTranslatedIsTranslated_data() { addForms(); }
    void formBuiltWhileTranslatedIsTranslated();
    void formInsideAnotherFollowsTheTranslator_data() { addForms(); }
    void formInsideAnotherFollowsTheTranslator();
    void textsOfAnotherClassLeaveTheForm_data() { addForms(); }
    void textsOfAnotherClassLeaveTheForm();

private:
    static void addForms();
};

void tst_WidgetTrees::addForms()
{
    QTest::addColumn<MakeForm>("make");
    QTest::addColumn<int>("textCount"); // of those that are not empty
    QTest::newRow("MetaWidget") << maker<MetaWidget>() << 33;
    QTest::newRow("SharedPropertyEditorWidget") << maker<SharedPropertyEditorWidget>() << 3;
    QTest::newRow("GroupPickerBase") << maker<GroupPickerBase>() << 7;
}

void tst_WidgetTrees::formIsBuiltAsItsGoldenTree()
{
    QFETCH(MakeForm, make);
    const QByteArray tree = widgetDump(*make(nullptr)).toUtf8();

    QFile golden(QStringLiteral(META_SOURCE_DIR "/tests/golden/%1.widgets.txt")
                     .arg(QString::fromLatin1(QTest::currentDataTag())));
    if (qEnvironmentVariableIsSet("META_REFRESH_GOLDEN")) {
        QVERIFY(golden.open(QIODevice::WriteOnly));
        QCOMPARE(golden.write(tree), tree.size());
        golden.close();
    }
    QVERIFY2(golden.open(QIODevice::ReadOnly), qPrintable(golden.fileName()));
    const QList<QByteArray> expected = golden.readAll().split('\n');
    const QList<QByteArray> actual = tree.split('\n');
    for (qsizetype i = 0; i < qMin(actual.size(), expected.size()); ++i)
        QCOMPARE(actual[i], expected[i]);
    QCOMPARE(actual.size(), expected.size());
}

void tst_WidgetTrees::everyTextFollowsTheTranslator()
{
    QFETCH(MakeForm, make);
    QFETCH(int, textCount);
    const std::unique_ptr<QWidget> form = make(nullptr); // never shown
    const QStringList source = visibleTexts(*form);
    QStringList filled = source;
    filled.removeAll(QString());
    QCOMPARE(filled.size(), textCount);

    Bracketing translator(form->metaObject()->className());
    install(translator);
    QCOMPARE(visibleTexts(*form), bracketed(source));
    remove(translator);
    QCOMPARE(visibleTexts(*form), source);
}

void tst_WidgetTrees::formBuiltWhileTranslatedIsTranslated()
{
    QFETCH(MakeForm, make);
    const QStringList source = visibleTexts(*make(nullptr));

    Bracketing translator(QTest::currentDataTag());
    install(translator);
    QCOMPARE(visibleTexts(*make(nullptr)), bracketed(source));
}

void tst_WidgetTrees::formInsideAnotherFollowsTheTranslator()
{
    QFETCH(MakeForm, make);
    QWidget window;
    const std::unique_ptr<QWidget> form = make(&window);
    const QStringList source = visibleTexts(*form);

    Bracketing translator(QTest::currentDataTag());
    install(translator);
    QCOMPARE(visibleTexts(*form), bracketed(source));
}

void tst_WidgetTrees::textsOfAnotherClassLeaveTheForm()
{
    QFETCH(MakeForm, make);
    const std::unique_ptr<QWidget> form = make(nullptr);
    const QStringList source = visibleTexts(*form);

    Bracketing translator("QWidget");
    install(translator);
    QCOMPARE(visibleTexts(*form), source);
}

QTEST_MAIN(tst_WidgetTrees)
#include "tst_WidgetTrees.moc"
