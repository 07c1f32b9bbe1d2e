#include "Effect.h"
#include "FileField.h"
#include "ImportDialog.h"
#include "MessageLine.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <functional>

using rehearsal::FileFault;
using rehearsal::ImportDialog;
using rehearsal::ImportSummary;
using rehearsal::MessageLine;
using rehearsal::Show;

namespace {

/// Models of effects that touch each other; every third has a type without a counterpart.
QByteArray sequence(int models, int effectsOfEach)
{
    QByteArray text = "<xsequence>\n<ElementEffects>\n";
    for (int model = 0; model < models; ++model) {
        text +=
            "<Element type=\"model\" name=\"M" + QByteArray::number(model) + "\"><EffectLayer>\n";
        for (int i = 0; i < effectsOfEach; ++i) {
            text += QByteArray("<Effect name=\"") + (i % 3 == 2 ? "Spirals" : "On")
                    + "\" startTime=\"" + QByteArray::number(i * 100) + "\" endTime=\""
                    + QByteArray::number(i * 100 + 100) + "\"/>\n";
        }
        text += "</EffectLayer></Element>\n";
    }
    return text + "</ElementEffects>\n</xsequence>\n";
}

} // namespace

/// Somebody at the dialog, with a folder of sequences.
class tst_ImportDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }
    void init();
    void cleanup() { delete m_dialog; }

    void importsAndTellsWhatBecameOfTheEffects();
    void theShowIsThatOfTheCommandLine();
    void linksOnRequestOnly();
    void theShowIsHandedOutOnce();
    void changedChoicesDropTheShow();
    void leavingWithoutOpeningDropsTheShow();
    void listsReplacedTypesMostFirst();
    void browsesForASequence();

    void faultsAreToldInTheDialog_data();
    void faultsAreToldInTheDialog();
    void importsAfterAFault();

    void otherEventsAreServedWhileItImports();
    void cancelsInTheMiddle_data();
    void cancelsInTheMiddle();
    void mayBeDeletedInTheMiddle();
    void importsAgainAfterACancel();

private:
    template<typename Widget>
    Widget *widget(const char *name) const
    {
        auto *found = m_dialog->findChild<Widget *>(QString::fromLatin1(name));
        if (!found)
            qFatal("no widget %s", name);
        return found;
    }
    QString path(const char *file) const { return m_folder->filePath(QString::fromLatin1(file)); }
    void write(const char *file, const QByteArray &content) const;
    QString message() const { return widget<MessageLine>("m_message")->text(); }
    bool saysFault() const { return widget<MessageLine>("m_message")->isFault(); }
    void click(const char *name) const
    {
        QTest::mouseClick(widget<QAbstractButton>(name), Qt::LeftButton);
    }
    void import(const char *file) const
    {
        m_dialog->setSequenceFile(path(file));
        click("m_importButton");
    }

    /// Does it in a turn of the event loop, once an import is a third done.
    void meanwhile(const std::function<void()> &what) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QPointer<ImportDialog> m_dialog;
};

void tst_ImportDialog::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    write("small.xsq", sequence(2, 6));
    m_dialog = new ImportDialog(allTypes());
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog));
}

void tst_ImportDialog::write(const char *file, const QByteArray &content) const
{
    QFile output(path(file));
    QVERIFY(output.open(QIODevice::WriteOnly));
    output.write(content);
}

void tst_ImportDialog::meanwhile(const std::function<void()> &what) const
{
    auto *bar = widget<QProgressBar>("m_progressBar");
    connect(bar, &QProgressBar::valueChanged, bar, [bar, what](int value) {
        if (value < 33)
            return;
        bar->disconnect(SIGNAL(valueChanged(int)));
        QTimer::singleShot(0, qApp, what);
    });
}

// --- What is imported ---

void tst_ImportDialog::importsAndTellsWhatBecameOfTheEffects()
{
    QVERIFY(widget<QCheckBox>("m_linkAdjacentCheckBox")->isChecked());
    QVERIFY(!widget<QPushButton>("m_openButton")->isVisible());
    import("small.xsq");
    QVERIFY(!saysFault());
    QCOMPARE(message(),
             QStringLiteral("Lights: 2, effects: 12, linked: 10.\n"
                            "Effects without a counterpart, which became a Solid at full: 4."));
    auto *replaced = widget<QTreeWidget>("m_replacedTree");
    QVERIFY(replaced->isVisible());
    QCOMPARE(replaced->topLevelItemCount(), 1);
    QCOMPARE(replaced->topLevelItem(0)->text(0), QStringLiteral("4"));
    QCOMPARE(replaced->topLevelItem(0)->text(1), QStringLiteral("Spirals"));

    QVERIFY(!widget<QPushButton>("m_importButton")->isVisible());
    click("m_openButton");
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QVERIFY(!m_dialog->isVisible());
    const std::unique_ptr<Show> show = m_dialog->takeShow();
    QVERIFY(show);
    QCOMPARE(show->effects().size(), 1);
    QCOMPARE(show->loadedEffects().size(), std::size_t{13});
}

void tst_ImportDialog::theShowIsThatOfTheCommandLine()
{
    import("small.xsq");
    const std::unique_ptr<Show> show = m_dialog->takeShow();
    QVERIFY(show);
    ImportSummary summary;
    FileFault fault;
    const std::unique_ptr<Show> expected = rehearsal::importSequence(
        path("small.xsq"), allTypes(), {.linkAdjacent = true}, &summary, &fault);
    QCOMPARE(rehearsal::showText(*show), rehearsal::showText(*expected));
}

void tst_ImportDialog::linksOnRequestOnly()
{
    auto *box = widget<QCheckBox>("m_linkAdjacentCheckBox");
    QTest::keyClick(box, Qt::Key_Space);
    QVERIFY(!box->isChecked());
    import("small.xsq");
    QVERIFY2(message().contains("linked: 0."), qPrintable(message()));
    QCOMPARE(m_dialog->takeShow()->loadedEffects().at(1)->getPropertyString("starttype"),
             QStringLiteral("0"));
}

void tst_ImportDialog::theShowIsHandedOutOnce()
{
    QVERIFY(!m_dialog->takeShow());
    import("small.xsq");
    QVERIFY(m_dialog->takeShow());
    QVERIFY(!m_dialog->takeShow());
}

void tst_ImportDialog::changedChoicesDropTheShow()
{
    import("small.xsq");
    QTest::keyClick(widget<QCheckBox>("m_linkAdjacentCheckBox"), Qt::Key_Space);
    QVERIFY(widget<QPushButton>("m_importButton")->isVisible());
    QVERIFY(!widget<QPushButton>("m_openButton")->isVisible());
    QVERIFY(!widget<QTreeWidget>("m_replacedTree")->isVisible());
    QCOMPARE(message(), QString());
    QVERIFY(!m_dialog->takeShow());

    click("m_importButton");
    QTest::keyClicks(widget<QLineEdit>("m_sequenceLineEdit"), "x");
    QVERIFY(!m_dialog->takeShow());
}

void tst_ImportDialog::leavingWithoutOpeningDropsTheShow()
{
    import("small.xsq");
    click("m_cancelButton");
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
    QVERIFY(!m_dialog->takeShow());
}

void tst_ImportDialog::listsReplacedTypesMostFirst()
{
    QByteArray text = sequence(1, 30); // ten Spirals
    const qsizetype first = text.indexOf("Spirals");
    text.replace(first, 7, "Fan&#10;cy");
    text.replace(text.indexOf("Spirals"), 7, "");
    write("mixed.xsq", text);
    import("mixed.xsq");
    auto *replaced = widget<QTreeWidget>("m_replacedTree");
    QCOMPARE(replaced->topLevelItemCount(), 3);
    QCOMPARE(replaced->topLevelItem(0)->text(1), QStringLiteral("Spirals"));
    QCOMPARE(replaced->topLevelItem(0)->text(0), QStringLiteral("8"));
    QStringList others{replaced->topLevelItem(1)->text(1), replaced->topLevelItem(2)->text(1)};
    others.sort();
    QCOMPARE(others, QStringList({"(no name)", "Fan cy"}));
}

void tst_ImportDialog::browsesForASequence()
{
    click("m_sequenceBrowseButton");
    auto *browser = widget<QFileDialog>("m_sequenceFileDialog");
    QCOMPARE(browser->acceptMode(), QFileDialog::AcceptOpen);
    QCOMPARE(browser->nameFilters().first(), QStringLiteral("Sequences (*.xsq)"));
    emit browser->fileSelected(path("small.xsq"));
    browser->close();
    QCOMPARE(m_dialog->sequenceFile(), path("small.xsq"));
}

// --- Faults ---

void tst_ImportDialog::faultsAreToldInTheDialog_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("fault"); // behind the file's name
    QTest::newRow("cut short") << sequence(2, 6).first(200) << ":6: the file is cut short";
    QTest::newRow("no sequence") << QByteArray("<show/>") << ":1: this is not a sequence";
    QTest::newRow("no effects") << QByteArray("<xsequence/>") << ":1: the sequence has no effect";
    QTest::newRow("empty") << QByteArray() << ": the file is empty";
    QTest::newRow("ends before it starts")
        << sequence(1, 1).replace("startTime=\"0\"", "startTime=\"900\"")
        << ":4: an effect ends at 100 before it starts at 900";
}

void tst_ImportDialog::faultsAreToldInTheDialog()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, fault);
    write("bad.xsq", content);
    import("bad.xsq");
    QVERIFY(saysFault());
    QVERIFY2(message().startsWith(path("bad.xsq") + fault), qPrintable(message()));
    QVERIFY(!message().contains('\n'));
    QVERIFY(m_dialog->isVisible());
    QVERIFY(!widget<QPushButton>("m_openButton")->isVisible());
    QVERIFY(!m_dialog->takeShow());
}

void tst_ImportDialog::importsAfterAFault()
{
    click("m_importButton");
    QCOMPARE(message(), QStringLiteral("There is no name for the sequence."));
    import("missing.xsq");
    QVERIFY2(saysFault() && message().startsWith(path("missing.xsq")), qPrintable(message()));
    import("small.xsq");
    QVERIFY(!saysFault());
    QVERIFY(m_dialog->takeShow());
}

// --- Meanwhile ---

void tst_ImportDialog::otherEventsAreServedWhileItImports()
{
    write("large.xsq", sequence(20, 500));
    auto *bar = widget<QProgressBar>("m_progressBar");
    QList<int> values;
    bool couldImport = true;
    QTimer others;
    connect(&others, &QTimer::timeout, this, [&] {
        values.append(bar->value());
        couldImport = widget<QPushButton>("m_importButton")->isEnabled();
    });
    others.start(0);
    import("large.xsq");
    others.stop();
    QVERIFY(!saysFault());
    QVERIFY(values.size() >= 4);
    QVERIFY(std::is_sorted(values.begin(), values.end()));
    QVERIFY(values.last() > 50 && values.last() <= 100);
    QVERIFY(!couldImport);
}

void tst_ImportDialog::cancelsInTheMiddle_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("button") << "button";
    QTest::newRow("escape") << "escape";
    QTest::newRow("close") << "close";
}

void tst_ImportDialog::cancelsInTheMiddle()
{
    QFETCH(QString, how);
    write("large.xsq", sequence(20, 500));
    bool isDone = false;
    meanwhile([&] {
        isDone = true;
        if (how == "button")
            click("m_cancelButton");
        else if (how == "escape")
            QTest::keyClick(m_dialog, Qt::Key_Escape);
        else
            m_dialog->close();
    });
    import("large.xsq");
    QVERIFY(isDone);
    QCOMPARE(m_dialog->isVisible(), how == "button");
    QVERIFY(!m_dialog->takeShow());
    QCOMPARE(message(), QStringLiteral("Cancelled: there is no show."));
}

void tst_ImportDialog::mayBeDeletedInTheMiddle()
{
    write("large.xsq", sequence(20, 500));
    m_dialog->setSequenceFile(path("large.xsq"));
    meanwhile([&] { delete m_dialog; });
    QMetaObject::invokeMethod(widget<QPushButton>("m_importButton"), "click", Qt::QueuedConnection);
    QTRY_VERIFY(!m_dialog);
}

void tst_ImportDialog::importsAgainAfterACancel()
{
    write("large.xsq", sequence(20, 500));
    meanwhile([&] { click("m_cancelButton"); });
    import("large.xsq");
    QVERIFY(!m_dialog->takeShow());
    import("large.xsq");
    QVERIFY(m_dialog->takeShow());
}

QTEST_MAIN(tst_ImportDialog)
#include "tst_ImportDialog.moc"
