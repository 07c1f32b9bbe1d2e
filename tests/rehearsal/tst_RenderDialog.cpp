#include "FileField.h"
#include "MessageLine.h"
#include "RenderDialog.h"
#include "Show.h"
#include "ShowFile.h"
#include "ShowRender.h"
#include "TestTypes.h"

#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>

#ifdef Q_OS_LINUX
#include <dlfcn.h>
#endif

using rehearsal::MessageLine;
using rehearsal::RenderDialog;

namespace {

const QString goldenRate = QStringLiteral("8"); // of tests/golden/minimal.csv
const QString source = QStringLiteral(META_SOURCE_DIR);

QByteArray contentOf(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
}

/// While there is one, a sync of the disk lasts until it is let go, or some seconds where nobody
/// lives to do so.
class SlowDisk
{
public:
#ifdef Q_OS_LINUX
    static constexpr bool isKnown = true;
#else
    static constexpr bool isKnown = false; // how this system is asked for a sync
#endif

    SlowDisk()
    {
        present = this;
    }
    ~SlowDisk()
    {
        present = nullptr;
        letGo();
        while (m_isSyncing)
            QThread::yieldCurrentThread();
    }
    Q_DISABLE_COPY_MOVE(SlowDisk)

    bool isSyncing() const
    {
        return m_isSyncing;
    }
    void letGo()
    {
        m_gate.release(100);
    }

    static void sync()
    {
        constexpr int patienceMs = 2000;
        SlowDisk *const disk = present;
        if (!disk)
            return;
        disk->m_isSyncing = true;
        disk->m_gate.tryAcquire(1, patienceMs);
        disk->m_isSyncing = false;
    }

private:
    static inline std::atomic<SlowDisk *> present = nullptr;

    std::atomic_bool m_isSyncing = false;
    QSemaphore m_gate;
};

} // namespace

#ifdef Q_OS_LINUX
// These stand before the system's own.
#define META_EXPORT extern "C" __attribute__((visibility("default")))

META_EXPORT int fdatasync(int file)
{
    SlowDisk::sync();
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fdatasync"))(file);
}

META_EXPORT int fsync(int file)
{
    SlowDisk::sync();
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"))(file);
}
#endif

/// Somebody at the dialog, with a folder of shows.
class tst_RenderDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }
    void init();
    void cleanup() { m_dialog.reset(); }

    void suggestsAPictureBesideTheShow();
    void writesWhatTheCommandLineDoes();
    void pictureIsThatOfTheCommandLine();
    void writesThePictureAlone();
    void rateAndLengthAreHeeded();
    void namesWithoutAFolderAreMeantBesideTheShow();
    void choicesAreKeptAndNamesFollowTheShow();
    void theTextCountsAndNotTheFile();
    void editsMadeMeanwhileDoNotDisturb();

    void refusesWhatMakesNoSense_data();
    void refusesWhatMakesNoSense();
    void asksBeforeItReplacesAFile();
    void asksAgainForAnotherShow();
    void rendersTheShowAsItIsThen();
    void browsedFilesAreNotAskedAboutAgain();
    void folderThatIsNotThereIsAFault();
    void brokenShowIsAFault();

    void otherEventsAreServedWhileItRenders();
    void progressGrowsToTheEnd();
    void cancelLeavesTheOldFilesAndNoOthers_data();
    void cancelLeavesTheOldFilesAndNoOthers();
    void rendersAgainAfterACancel();
    void otherEventsAreServedWhileItWrites();
    void closedWhileItWritesItLeavesTheFilesWhole_data();
    void closedWhileItWritesItLeavesTheFilesWhole();
    void faultOfAClosedDialogIsShown();

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
    QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
    }
    QString message() const { return widget<MessageLine>("m_message")->text(); }
    bool saysFault() const { return widget<MessageLine>("m_message")->isFault(); }
    void write(const char *file, const QByteArray &content) const;

    void type(const char *name, const QString &text) const;
    void click(const char *name) const
    {
        QTest::mouseClick(widget<QAbstractButton>(name), Qt::LeftButton);
    }
    void setChecked(const char *name, bool on) const;
    void makeItLong() const;
    void renderToTheEnd() const;
    /// Renders the golden table and a picture until the disk is asked to keep the first of them.
    void renderUntilItWrites(const SlowDisk &disk) const;
    /// The table is what the command line gives.
    void verifyGoldenTable() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<RenderDialog> m_dialog;
    QByteArray m_text;
};

void tst_RenderDialog::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QFile::copy(source + "/examples/minimal.show", path("minimal.show")));
    m_text = contentOf(path("minimal.show"));
    m_dialog = std::make_unique<RenderDialog>(allTypes());
    m_dialog->setShow(m_text, path("minimal.show"));
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
}

void tst_RenderDialog::write(const char *file, const QByteArray &content) const
{
    QFile output(path(file));
    QVERIFY(output.open(QIODevice::WriteOnly));
    output.write(content);
}

void tst_RenderDialog::type(const char *name, const QString &text) const
{
    auto *field = widget<QWidget>(name);
    if (auto *line = qobject_cast<QLineEdit *>(field))
        line->selectAll();
    else if (auto *box = qobject_cast<QDoubleSpinBox *>(field))
        box->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
}

void tst_RenderDialog::setChecked(const char *name, bool on) const
{
    auto *box = widget<QCheckBox>(name);
    box->setFocus();
    if (box->isChecked() != on)
        QTest::keyClick(box, Qt::Key_Space);
    QCOMPARE(box->isChecked(), on);
}

// A day: many seconds of work.
void tst_RenderDialog::makeItLong() const
{
    setChecked("m_pictureCheckBox", true);
    setChecked("m_tableCheckBox", true);
    widget<QRadioButton>("m_secondsRadioButton")->click();
    type("m_secondsSpinBox",
         QLocale().toString(86400.0, 'f', 3).remove(QLocale().groupSeparator()));
    QCOMPARE(widget<QDoubleSpinBox>("m_secondsSpinBox")->value(), 86400.0);
}

void tst_RenderDialog::renderToTheEnd() const
{
    click("m_renderButton");
    QTRY_VERIFY_WITH_TIMEOUT(!m_dialog->isRendering(), 60000);
    QVERIFY2(!saysFault(), qPrintable(message()));
}

void tst_RenderDialog::renderUntilItWrites(const SlowDisk &disk) const
{
    setChecked("m_tableCheckBox", true);
    type("m_fpsSpinBox", goldenRate);
    click("m_renderButton");
    QTRY_VERIFY(disk.isSyncing());
    QVERIFY(m_dialog->isRendering());
}

void tst_RenderDialog::verifyGoldenTable() const
{
    QCOMPARE(contentOf(path("minimal.csv")), contentOf(source + "/tests/golden/minimal.csv"));
}

// --- What is written ---

void tst_RenderDialog::suggestsAPictureBesideTheShow()
{
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("Render minimal.show"));
    QVERIFY(widget<QCheckBox>("m_pictureCheckBox")->isChecked());
    QVERIFY(!widget<QCheckBox>("m_tableCheckBox")->isChecked());
    QCOMPARE(widget<QLineEdit>("m_pictureLineEdit")->text(), path("minimal.png"));
    QCOMPARE(widget<QLineEdit>("m_tableLineEdit")->text(), path("minimal.csv"));
    QVERIFY(!widget<QLineEdit>("m_tableLineEdit")->isEnabled());
    QCOMPARE(widget<QDoubleSpinBox>("m_fpsSpinBox")->value(), 40.0);
    QVERIFY(widget<QRadioButton>("m_wholeRunRadioButton")->isChecked());

    m_dialog->setShow(m_text, {});
    QCOMPARE(widget<QLineEdit>("m_pictureLineEdit")->text(), QDir::home().filePath("untitled.png"));
}

void tst_RenderDialog::writesWhatTheCommandLineDoes()
{
    setChecked("m_tableCheckBox", true);
    type("m_fpsSpinBox", goldenRate);
    renderToTheEnd();
    verifyGoldenTable();
    QVERIFY(!QImage(path("minimal.png")).isNull());
    QCOMPARE(files(), QStringList({"minimal.csv", "minimal.png", "minimal.show"}));
    QVERIFY2(message().startsWith(QLocale().toString(contentOf(path("minimal.csv")).count('\n') - 1)
                                  + " frames in "),
             qPrintable(message()));
    QVERIFY(message().endsWith(path("minimal.png") + '\n' + path("minimal.csv")));
}

void tst_RenderDialog::pictureIsThatOfTheCommandLine()
{
    renderToTheEnd();
    rehearsal::RenderPlan plan;
    plan.pictureFile = path("other.png");
    rehearsal::FileFault fault;
    const auto render = rehearsal::ShowRender::begin(
        rehearsal::parseShow(m_text, "minimal.show", allTypes(), &fault), "minimal.show", plan,
        &fault);
    while (!render->isPlayed())
        render->playFrame();
    QVERIFY(render->finish(&fault));
    QCOMPARE(contentOf(path("minimal.png")), contentOf(path("other.png")));
}

void tst_RenderDialog::writesThePictureAlone()
{
    renderToTheEnd();
    QCOMPARE(files(), QStringList({"minimal.png", "minimal.show"}));
    QVERIFY(message().endsWith(path("minimal.png")));
}

void tst_RenderDialog::rateAndLengthAreHeeded()
{
    setChecked("m_pictureCheckBox", false);
    setChecked("m_tableCheckBox", true);
    type("m_fpsSpinBox", "10");
    widget<QRadioButton>("m_secondsRadioButton")->click();
    type("m_secondsSpinBox", QLocale().toString(0.25));
    renderToTheEnd();
    const QList<QByteArray> rows = contentOf(path("minimal.csv")).split('\n');
    QCOMPARE(rows.size(), 1 + 3 + 1);
    QVERIFY(rows[1].startsWith("0,") && rows[2].startsWith("100,") && rows[3].startsWith("200,"));
    QVERIFY2(message().startsWith("3 frames in 0.25 s"), qPrintable(message()));
}

void tst_RenderDialog::namesWithoutAFolderAreMeantBesideTheShow()
{
    type("m_pictureLineEdit", "other.png");
    renderToTheEnd();
    QCOMPARE(files(), QStringList({"minimal.show", "other.png"}));
}

void tst_RenderDialog::choicesAreKeptAndNamesFollowTheShow()
{
    setChecked("m_tableCheckBox", true);
    type("m_fpsSpinBox", "25");
    type("m_pictureLineEdit", path("mine.png"));
    m_dialog->close();

    m_dialog->setShow(m_text, path("minimal.show"));
    m_dialog->show();
    QCOMPARE(widget<QLineEdit>("m_pictureLineEdit")->text(), path("mine.png"));
    m_dialog->close();

    m_dialog->setShow(m_text, path("other.show"));
    m_dialog->show();
    QCOMPARE(widget<QLineEdit>("m_pictureLineEdit")->text(), path("other.png"));
    QCOMPARE(widget<QLineEdit>("m_tableLineEdit")->text(), path("other.csv"));
    QVERIFY(widget<QCheckBox>("m_tableCheckBox")->isChecked());
    QCOMPARE(widget<QDoubleSpinBox>("m_fpsSpinBox")->value(), 25.0);
}

void tst_RenderDialog::theTextCountsAndNotTheFile()
{
    write("minimal.show", "no show at all");
    renderToTheEnd();
    QVERIFY(!QImage(path("minimal.png")).isNull());
}

void tst_RenderDialog::editsMadeMeanwhileDoNotDisturb()
{
    setChecked("m_pictureCheckBox", false);
    setChecked("m_tableCheckBox", true);
    type("m_fpsSpinBox", goldenRate);
    click("m_renderButton");
    QVERIFY(m_dialog->isRendering());
    m_dialog->setShow("broken", path("other.show"));
    QTRY_VERIFY(!m_dialog->isRendering());
    verifyGoldenTable();
    QCOMPARE(files(), QStringList({"minimal.csv", "minimal.show"}));
}

// --- What is refused ---

void tst_RenderDialog::refusesWhatMakesNoSense_data()
{
    QTest::addColumn<bool>("picture");
    QTest::addColumn<QString>("pictureName");
    QTest::addColumn<bool>("table");
    QTest::addColumn<QString>("tableName");
    QTest::addColumn<QString>("fault");

    const QString nothing = "Nothing is to be written: choose a picture, a table or both.";
    const QString same = "The picture and the table cannot be the same file.";
    const QString show = "%1 is the show itself, which would be overwritten.";
    QTest::newRow("nothing") << false << "a.png" << false << "a.csv" << nothing;
    QTest::newRow("no picture's name") << true << "" << true << "a.csv"
                                       << "There is no name for the file.";
    QTest::newRow("no table's name") << true << "a.png" << true << "  "
                                     << "There is no name for the file.";
    QTest::newRow("same") << true << "a.out" << true << "a.out" << same;
    QTest::newRow("same by another name")
        << true << "a.out" << true << "../%FOLDER%/./a.out" << same;
    QTest::newRow("the show") << true << "minimal.show" << false << "a.csv" << show;
    QTest::newRow("the show by a link") << false << "a.png" << true << "link.show" << show;
}

void tst_RenderDialog::refusesWhatMakesNoSense()
{
    QFETCH(bool, picture);
    QFETCH(QString, pictureName);
    QFETCH(bool, table);
    QFETCH(QString, tableName);
    QFETCH(QString, fault);
    QVERIFY(QFile::link(path("minimal.show"), path("link.show")));
    tableName.replace("%FOLDER%", QDir(m_folder->path()).dirName());
    setChecked("m_pictureCheckBox", true);
    setChecked("m_tableCheckBox", true);
    type("m_pictureLineEdit", pictureName);
    type("m_tableLineEdit", tableName);
    setChecked("m_pictureCheckBox", picture);
    setChecked("m_tableCheckBox", table);
    const QStringList before = files();

    click("m_renderButton");
    QVERIFY(!m_dialog->isRendering());
    QVERIFY(saysFault());
    QCOMPARE(message(), fault.contains("%1")
                            ? fault.arg(path(qPrintable(picture ? pictureName : tableName)))
                            : fault);
    QCOMPARE(files(), before);
    QCOMPARE(contentOf(path("minimal.show")), m_text);
}

void tst_RenderDialog::asksBeforeItReplacesAFile()
{
    write("minimal.png", "old");
    click("m_renderButton");
    auto *box = widget<QMessageBox>("m_replaceBox");
    QVERIFY(box->text().contains(path("minimal.png")));
    QTest::keyClick(box, Qt::Key_Escape);
    QTest::qWait(50);
    QVERIFY(!m_dialog->isRendering());
    QCOMPARE(contentOf(path("minimal.png")), QByteArray("old"));

    click("m_renderButton");
    QTRY_VERIFY(m_dialog->findChildren<QMessageBox *>("m_replaceBox").size() == 1);
    box = widget<QMessageBox>("m_replaceBox");
    for (QAbstractButton *button : box->buttons()) {
        if (box->buttonRole(button) == QMessageBox::AcceptRole)
            QTest::mouseClick(button, Qt::LeftButton);
    }
    QTRY_VERIFY(!m_dialog->isRendering());
    QVERIFY(!QImage(path("minimal.png")).isNull());

    // What it wrote itself it writes again.
    click("m_renderButton");
    QVERIFY(m_dialog->isRendering());
    QTRY_VERIFY(!m_dialog->isRendering());
    QVERIFY(!saysFault());
}

void tst_RenderDialog::asksAgainForAnotherShow()
{
    renderToTheEnd();
    QVERIFY(QFile::exists(path("minimal.png")));
    m_dialog->forgetPermissions();
    click("m_renderButton");
    QVERIFY(!m_dialog->isRendering());
    QVERIFY(widget<QMessageBox>("m_replaceBox")->text().contains(path("minimal.png")));
}

// An open dialog does not know what was edited since.
void tst_RenderDialog::rendersTheShowAsItIsThen()
{
    QByteArray now = m_text;
    m_dialog->setShow("no show at all", path("minimal.show"));
    connect(m_dialog.get(), &RenderDialog::showWanted, m_dialog.get(),
            [&] { m_dialog->setShow(now, path("minimal.show")); });
    renderToTheEnd();
    QVERIFY(!saysFault());
    now = "no show either";
    click("m_renderButton");
    QVERIFY(saysFault());
}

void tst_RenderDialog::browsedFilesAreNotAskedAboutAgain()
{
    write("there.png", "old");
    click("m_pictureBrowseButton");
    auto *browser = widget<QFileDialog>("m_pictureFileDialog");
    QCOMPARE(browser->acceptMode(), QFileDialog::AcceptSave);
    emit browser->fileSelected(path("there.png"));
    browser->close();
    QCOMPARE(widget<QLineEdit>("m_pictureLineEdit")->text(), path("there.png"));
    renderToTheEnd();
    QVERIFY(!QImage(path("there.png")).isNull());
}

void tst_RenderDialog::folderThatIsNotThereIsAFault()
{
    type("m_pictureLineEdit", "no/such/folder/a.png");
    click("m_renderButton");
    QVERIFY(!m_dialog->isRendering());
    QVERIFY(saysFault());
    QVERIFY2(message().startsWith(path("no/such/folder/a.png") + ": cannot be written"),
             qPrintable(message()));
    QCOMPARE(files(), QStringList("minimal.show"));
}

void tst_RenderDialog::brokenShowIsAFault()
{
    write("minimal.png", "old");
    m_dialog->setShow("<show version=\"1\">\n<map>\n", path("minimal.show"));
    type("m_pictureLineEdit", "new.png");
    click("m_renderButton");
    QVERIFY(!m_dialog->isRendering());
    QVERIFY(saysFault());
    QVERIFY2(message().startsWith("minimal.show:"), qPrintable(message()));
    QCOMPARE(files(), QStringList({"minimal.png", "minimal.show"}));
}

// --- Meanwhile ---

void tst_RenderDialog::otherEventsAreServedWhileItRenders()
{
    makeItLong();
    int turns = 0;
    QTimer others;
    connect(&others, &QTimer::timeout, this, [&] { ++turns; });
    click("m_renderButton");
    others.start(16);
    QTest::qWait(500);
    QVERIFY(m_dialog->isRendering());
    QVERIFY2(turns >= 8, qPrintable(QString::number(turns)));
    QVERIFY(!widget<QPushButton>("m_renderButton")->isEnabled());
    QVERIFY(!widget<QLineEdit>("m_pictureLineEdit")->isEnabled());
    QVERIFY(widget<QPushButton>("m_cancelButton")->isVisible());
}

void tst_RenderDialog::progressGrowsToTheEnd()
{
    auto *bar = widget<QProgressBar>("m_progressBar");
    QList<int> values;
    connect(bar, &QProgressBar::valueChanged, this, [&](int value) { values.append(value); });
    m_dialog->setShow(contentOf(source + "/examples/facade.show"), path("facade.show"));
    renderToTheEnd();
    values.removeAll(bar->minimum() - 1); // of a bar at rest
    QVERIFY(values.size() >= 2);
    QVERIFY(std::is_sorted(values.begin(), values.end()));
    QCOMPARE(values.last(), bar->maximum());
}

void tst_RenderDialog::cancelLeavesTheOldFilesAndNoOthers_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("button") << "button";
    QTest::newRow("escape") << "escape";
    QTest::newRow("close") << "close";
    QTest::newRow("delete") << "delete";
}

void tst_RenderDialog::cancelLeavesTheOldFilesAndNoOthers()
{
    QFETCH(QString, how);
    makeItLong();
    type("m_pictureLineEdit", "old.png");
    type("m_tableLineEdit", "old.csv");
    click("m_renderButton");
    // Somebody else puts the files there in the meantime.
    write("old.png", "old picture");
    write("old.csv", "old table");
    QTRY_VERIFY(widget<QProgressBar>("m_progressBar")->value() > 0);
    QVERIFY(m_dialog->isRendering());

    if (how == "button")
        click("m_cancelButton");
    else if (how == "escape")
        QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
    else if (how == "close")
        m_dialog->close();
    else
        m_dialog.reset();

    if (m_dialog) {
        QVERIFY(!m_dialog->isRendering());
        QCOMPARE(m_dialog->isVisible(), how == "button");
        QVERIFY(!saysFault());
        QCOMPARE(message(), QStringLiteral("Cancelled: nothing was written."));
    }
    QCOMPARE(files(), QStringList({"minimal.show", "old.csv", "old.png"}));
    QCOMPARE(contentOf(path("old.png")), QByteArray("old picture"));
    QCOMPARE(contentOf(path("old.csv")), QByteArray("old table"));
}

void tst_RenderDialog::rendersAgainAfterACancel()
{
    makeItLong();
    click("m_renderButton");
    QTest::qWait(50);
    click("m_cancelButton");
    widget<QRadioButton>("m_wholeRunRadioButton")->click();
    type("m_fpsSpinBox", goldenRate);
    renderToTheEnd();
    verifyGoldenTable();
}

void tst_RenderDialog::otherEventsAreServedWhileItWrites()
{
    if (!SlowDisk::isKnown)
        QSKIP("no disk can be made slow here");
    SlowDisk disk;
    renderUntilItWrites(disk);
    int turns = 0;
    QTimer others;
    connect(&others, &QTimer::timeout, this, [&] { ++turns; });
    others.start(16);
    QTest::qWait(500);
    QVERIFY(disk.isSyncing());
    QVERIFY2(turns >= 8, qPrintable(QString::number(turns)));
    QCOMPARE(widget<QProgressBar>("m_progressBar")->text(), QStringLiteral("writing"));
    QCOMPARE(files(), QStringList("minimal.show"));

    QVERIFY(!widget<QPushButton>("m_cancelButton")->isEnabled());
    QVERIFY(!widget<QPushButton>("m_renderButton")->isEnabled());
    click("m_cancelButton");
    QVERIFY(m_dialog->isRendering());
    disk.letGo();
    QTRY_VERIFY(!m_dialog->isRendering());
    QVERIFY2(!saysFault(), qPrintable(message()));
    verifyGoldenTable();
    QVERIFY(!QImage(path("minimal.png")).isNull());
}

void tst_RenderDialog::closedWhileItWritesItLeavesTheFilesWhole_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("escape") << "escape";
    QTest::newRow("close") << "close";
    QTest::newRow("delete") << "delete";
}

void tst_RenderDialog::closedWhileItWritesItLeavesTheFilesWhole()
{
    if (!SlowDisk::isKnown)
        QSKIP("no disk can be made slow here");
    QFETCH(QString, how);
    SlowDisk disk;
    renderUntilItWrites(disk);

    if (how == "delete") {
        const std::unique_ptr<QThread> later(QThread::create([&disk] {
            QThread::msleep(100);
            disk.letGo();
        }));
        later->start();
        m_dialog.reset();
        later->wait();
    } else {
        if (how == "escape")
            QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        else
            m_dialog->close();
        QVERIFY(disk.isSyncing());
        QVERIFY(!m_dialog->isVisible());
        disk.letGo();
        QTRY_VERIFY(!m_dialog->isRendering());
        QVERIFY(!m_dialog->isVisible());
        QVERIFY2(message().contains("written to"), qPrintable(message()));
    }
    verifyGoldenTable();
    QVERIFY(!QImage(path("minimal.png")).isNull());
    QCOMPARE(files(), QStringList({"minimal.csv", "minimal.png", "minimal.show"}));
}

void tst_RenderDialog::faultOfAClosedDialogIsShown()
{
    if (!SlowDisk::isKnown || !QFile::exists("/dev/full"))
        QSKIP("no disk can be made slow here, or there is no device that is always full");
    type("m_pictureLineEdit", "/dev/full");
    SlowDisk disk;
    renderUntilItWrites(disk);
    m_dialog->close();
    QVERIFY(!m_dialog->isVisible());
    disk.letGo();
    QTRY_VERIFY(m_dialog->isVisible());
    QVERIFY(saysFault());
    QVERIFY2(message().startsWith("/dev/full: cannot be written"), qPrintable(message()));
}

QTEST_MAIN(tst_RenderDialog)
#include "tst_RenderDialog.moc"
