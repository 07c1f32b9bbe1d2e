#include "DialogUser.h"
#include "FileDialogs.h"
#include "FileDialogsMac.h"
#include "PanelUser.h"
#include "SystemShim.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <limits>
#include <memory>

namespace {

const QString caption = QStringLiteral("Confirm");
const QStringList buttons = {QStringLiteral("Yes"), QStringLiteral("Yes, and Don't Ask Again"),
                             QStringLiteral("No")};

enum Selector : OSType { Packed = 0x73797376, Major = 0x73797331, Minor = 0x73797332 };

void setSystem(SInt32 packed, SInt32 major, SInt32 minor)
{
    shim::systemAnswers = {{Packed, packed}, {Major, major}, {Minor, minor}};
}

int warn(const QString &text, int defaultButton = 0, int escapeButton = 2)
{
    return FileDialogs::warning(nullptr, caption, text, buttons[0], buttons[1], buttons[2],
                                defaultButton, escapeButton);
}

/// What the system's own panels do not heed.
struct Unheeded
{
    QString startWith;
    QString filter;
    QWidget *parent = nullptr;
    QString name;
    QString caption;
    bool dirOnly = true;
    QString *selectedFilter = nullptr;
    bool resolveSymlinks = true;
};

QString openFile(const QString &types = QStringLiteral("txt csv"), const Unheeded &given = {})
{
    return FileDialogs::getOpenFileName(given.startWith, given.filter, given.parent, given.name,
                                        given.caption, types, given.selectedFilter,
                                        given.resolveSymlinks);
}

QStringList openFiles(const QString &types = QStringLiteral("txt csv"), const Unheeded &given = {})
{
    return FileDialogs::getOpenFileNames(given.startWith, given.filter, given.parent, given.name,
                                         given.caption, types, given.selectedFilter,
                                         given.resolveSymlinks);
}

QString openDirectory(const Unheeded &given = {})
{
    return FileDialogs::getExistingDirectory(given.startWith, given.parent, given.name,
                                             given.caption, given.dirOnly, given.resolveSymlinks);
}

QString saveFile(const Unheeded &given = {})
{
    return FileDialogs::getSaveFileName(given.startWith, given.filter, given.parent, given.name,
                                        given.caption, given.selectedFilter, given.resolveSymlinks);
}

/// One of the four, with its answer left away.
using FileDialog = std::function<void(const Unheeded &given)>;

void addFileDialogs()
{
    QTest::addColumn<FileDialog>("show");

    const QString types = QStringLiteral("txt");
    QTest::newRow("one file") << FileDialog([=](const Unheeded &given) { openFile(types, given); });
    QTest::newRow("several files")
        << FileDialog([=](const Unheeded &given) { openFiles(types, given); });
    QTest::newRow("directory") << FileDialog([](const Unheeded &given) { openDirectory(given); });
    QTest::newRow("file to save") << FileDialog([](const Unheeded &given) { saveFile(given); });
}

/// All that can be seen of the file panel that is up.
QStringList look()
{
    return QStringList{PanelUser::title(), PanelUser::folder()} + PanelUser::texts()
           + PanelUser::buttons() + PanelUser::allowedFileTypes() + PanelUser::files();
}

} // namespace

/// The panels of AppKit, used with the mouse and the keyboard.
class tst_FileDialogsMac : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void systemIsAskedEveryTime();
    void warningIsPortableBeforeTenSeven();
    void warningIsNativeFromTenSevenOn_data();
    void warningIsNativeFromTenSevenOn();
    void fileDialogIsPortableBeforeTenSeven_data();
    void fileDialogIsPortableBeforeTenSeven();

    void alertReturnsTheIndexOfTheButton_data();
    void alertReturnsTheIndexOfTheButton();
    void endOfAnAlertStandsForAButton_data();
    void endOfAnAlertStandsForAButton();
    void returnKeyPressesTheFirstButtonWhateverTheDefault_data();
    void returnKeyPressesTheFirstButtonWhateverTheDefault();
    void escapeKeyIsTheFirstButtonWhateverTheEscapeButton_data();
    void escapeKeyIsTheFirstButtonWhateverTheEscapeButton();
    void alertShowsCaptionTextAndButtons();
    void alertTextIsAFormat();
    void alertTextsAreEightBit();

    void oneFileIsOpened();
    void onlyTheTypesAreOffered();
    void twoBlanksHaveAnEmptyTypeBetweenThem();
    void severalFilesAreOpened();
    void directoryIsChosen();
    void pathToSaveToIsTyped();
    void cancelledPanelsReturnNothing();
    void panelsHeedTheTypesAlone_data();
    void panelsHeedTheTypesAlone();

    void systemStringsAreConvertedWhole_data();
    void systemStringsAreConvertedWhole();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    QTemporaryDir m_settings;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileDialogsMac::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
}

void tst_FileDialogsMac::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    setSystem(0x1090, 11, 0);
    shim::exposesCharacters = true;

    m_folder = std::make_unique<QTemporaryDir>();
    for (const char *name : {"a.txt", "b.csv", "c", "d.png"}) {
        QFile file(path(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    // A folder without a suffix would count as a file of the empty type here.
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("sub.d")));
}

// --- Which dialogs ---

void tst_FileDialogsMac::systemIsAskedEveryTime()
{
    setSystem(0x1068, 10, 6);
    QCOMPARE(FileDialogs::mac_useNativeDialogs(), 0);
    QVERIFY(!FileDialogs::macLionOrGreater());
    setSystem(0x1070, 10, 7);
    QCOMPARE(FileDialogs::mac_useNativeDialogs(), 1);
    QVERIFY(FileDialogs::macLionOrGreater());
    shim::systemAnswers.clear();
    QCOMPARE(FileDialogs::mac_useNativeDialogs(), 0);
    QVERIFY(!FileDialogs::macLionOrGreater());
}

void tst_FileDialogsMac::warningIsPortableBeforeTenSeven()
{
    setSystem(0x1068, 10, 6);
    QString seen;
    QTimer::singleShot(0, this, [&seen] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        seen = box->text();
        box->buttons().at(1)->click();
    });

    QCOMPARE(warn(QStringLiteral("Sure?")), 1);
    QCOMPARE(seen, QStringLiteral("Sure?"));
}

void tst_FileDialogsMac::warningIsNativeFromTenSevenOn_data()
{
    QTest::addColumn<int>("packed");
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");

    QTest::newRow("10.7") << 0x1070 << 10 << 7;
    QTest::newRow("11.0") << 0x1090 << 11 << 0;
}

void tst_FileDialogsMac::warningIsNativeFromTenSevenOn()
{
    QFETCH(int, packed);
    QFETCH(int, major);
    QFETCH(int, minor);
    setSystem(packed, major, minor);
    PanelUser user;
    user.click(buttons[1]);

    QCOMPARE(warn(QStringLiteral("Sure?")), 1);
    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
}

void tst_FileDialogsMac::fileDialogIsPortableBeforeTenSeven_data()
{
    addFileDialogs();
}

void tst_FileDialogsMac::fileDialogIsPortableBeforeTenSeven()
{
    QFETCH(FileDialog, show);
    setSystem(0x1068, 10, 6);
    const PanelUser nobody; // who has the system's own panel ended
    const DialogUser<QFileDialog> user([](QFileDialog &dialog) { press(dialog, Qt::Key_Escape); });

    show({});
    QCOMPARE(nobody.fault(), QString());
    QVERIFY(user.isDone());
}

// --- The alert ---

void tst_FileDialogsMac::alertReturnsTheIndexOfTheButton_data()
{
    QTest::addColumn<int>("button");

    for (int i = 0; i < 3; ++i)
        QTest::addRow("button %d", i) << i;
}

void tst_FileDialogsMac::alertReturnsTheIndexOfTheButton()
{
    QFETCH(int, button);
    PanelUser user;
    user.click(buttons[button]);

    QCOMPARE(warn(QStringLiteral("Sure?")), button);
    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
}

void tst_FileDialogsMac::endOfAnAlertStandsForAButton_data()
{
    QTest::addColumn<long>("result");
    QTest::addColumn<int>("button");

    QTest::newRow("default") << 1L << 0;
    QTest::newRow("alternate") << 0L << 1;
    QTest::newRow("other") << -1L << 2;
    QTest::newRow("error") << -2L << 0;
    QTest::newRow("stopped") << -1000L << 0;
    QTest::newRow("first of a later kind") << 1000L << 0;
    QTest::newRow("anything") << std::numeric_limits<long>::max() << 0;
}

void tst_FileDialogsMac::endOfAnAlertStandsForAButton()
{
    QFETCH(long, result);
    QTEST(meta::alertButton(result), "button");
}

void tst_FileDialogsMac::returnKeyPressesTheFirstButtonWhateverTheDefault_data()
{
    QTest::addColumn<int>("defaultButton");

    for (int i = 0; i < 3; ++i)
        QTest::addRow("default %d", i) << i;
}

void tst_FileDialogsMac::returnKeyPressesTheFirstButtonWhateverTheDefault()
{
    QFETCH(int, defaultButton);
    PanelUser user;
    user.press(QStringLiteral("Return"));

    QCOMPARE(warn(QStringLiteral("Sure?"), defaultButton, 1), 0);
    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
}

void tst_FileDialogsMac::escapeKeyIsTheFirstButtonWhateverTheEscapeButton_data()
{
    QTest::addColumn<int>("escapeButton");

    for (int i = 0; i < 3; ++i)
        QTest::addRow("escape %d", i) << i;
}

void tst_FileDialogsMac::escapeKeyIsTheFirstButtonWhateverTheEscapeButton()
{
    QFETCH(int, escapeButton);
    PanelUser user;
    user.press(QStringLiteral("Escape")); // which stops the alert

    QCOMPARE(warn(QStringLiteral("Sure?"), 2, escapeButton), 0);
    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
}

void tst_FileDialogsMac::alertShowsCaptionTextAndButtons()
{
    QStringList texts;
    QStringList shown;
    PanelUser user;
    user.look([&] {
            texts = PanelUser::texts();
            shown = PanelUser::buttons();
        })
        .click(buttons[2]);

    QCOMPARE(warn(QStringLiteral("Are you sure?\nAll will be discarded.")), 2);
    QCOMPARE(user.fault(), QString());
    QVERIFY(texts.contains(caption));
    QVERIFY(texts.contains(QStringLiteral("Are you sure?\nAll will be discarded.")));
    for (const QString &button : buttons)
        QVERIFY2(shown.contains(button), qPrintable(button));
}

void tst_FileDialogsMac::alertTextIsAFormat()
{
    QStringList texts;
    PanelUser user;
    user.look([&] { texts = PanelUser::texts(); }).click(buttons[0]);

    QCOMPARE(warn(QStringLiteral("100%% of it")), 0);
    QCOMPARE(user.fault(), QString());
    QVERIFY2(texts.contains(QStringLiteral("100% of it")), qPrintable(texts.join(u'|')));
}

void tst_FileDialogsMac::alertTextsAreEightBit()
{
    const auto given = [](const char *what) {
        return QStringLiteral("\u00fcber \u2192 ") + QString::fromLatin1(what);
    };
    const auto shown = [](const char *what) {
        return QStringLiteral("\u00fcber ? ") + QString::fromLatin1(what);
    };
    QStringList seen;
    PanelUser user;
    user.look([&] { seen = PanelUser::texts() + PanelUser::buttons(); }).click(shown("second"));

    QCOMPARE(FileDialogs::warning(nullptr, given("caption"), given("text"), given("first"),
                                  given("second"), given("third"), 0, 2),
             1);
    QCOMPARE(user.fault(), QString());
    for (const char *what : {"caption", "text", "first", "second", "third"})
        QVERIFY2(seen.contains(shown(what)), qPrintable(seen.join(u'|')));
}

// --- The file panels ---

void tst_FileDialogsMac::oneFileIsOpened()
{
    PanelUser::OpenPanelState panel = {};
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.look([&] { panel = PanelUser::openPanel(); })
        .clickFile(QStringLiteral("b.csv"))
        .click(QStringLiteral("OK"));

    QCOMPARE(openFile(), path(QStringLiteral("b.csv")));
    QCOMPARE(user.fault(), QString());
    QVERIFY(panel.canChooseFiles);
    QVERIFY(!panel.canChooseDirectories);
    QVERIFY(!panel.allowsMultipleSelection);
    QCOMPARE(panel.presetFileTypes, QStringList({"txt", "csv"}));
    QCOMPARE(panel.allowedFileTypes, QStringList({"txt", "csv"}));
}

void tst_FileDialogsMac::onlyTheTypesAreOffered()
{
    QStringList files;
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.look([&] { files = PanelUser::files(); }).click(QStringLiteral("Cancel"));

    QCOMPARE(openFile(), QString());
    QCOMPARE(user.fault(), QString());
    QCOMPARE(files, QStringList({"a.txt", "b.csv", "sub.d"}));
}

void tst_FileDialogsMac::twoBlanksHaveAnEmptyTypeBetweenThem()
{
    QStringList files;
    PanelUser::OpenPanelState panel = {};
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.look([&] {
            files = PanelUser::files();
            panel = PanelUser::openPanel();
        })
        .clickFile(QStringLiteral("c"))
        .click(QStringLiteral("OK"));

    QCOMPARE(openFile(QStringLiteral("txt  csv")), path(QStringLiteral("c")));
    QCOMPARE(user.fault(), QString());
    QCOMPARE(panel.presetFileTypes, QStringList({"txt", "", "csv"}));
    QCOMPARE(panel.allowedFileTypes, QStringList({"txt", "", "csv"}));
    QCOMPARE(files, QStringList({"a.txt", "b.csv", "c", "sub.d"}));
}

void tst_FileDialogsMac::severalFilesAreOpened()
{
    PanelUser::OpenPanelState panel = {};
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.look([&] { panel = PanelUser::openPanel(); })
        .clickFile(QStringLiteral("a.txt"))
        .hold(QStringLiteral("shift"))
        .clickFile(QStringLiteral("b.csv"))
        .release(QStringLiteral("shift"))
        .click(QStringLiteral("OK"));

    QCOMPARE(openFiles(),
             QStringList({path(QStringLiteral("a.txt")), path(QStringLiteral("b.csv"))}));
    QCOMPARE(user.fault(), QString());
    QVERIFY(panel.canChooseFiles);
    QVERIFY(!panel.canChooseDirectories);
    QVERIFY(panel.allowsMultipleSelection);
    QCOMPARE(panel.presetFileTypes, QStringList({"txt", "csv"}));
    QCOMPARE(panel.allowedFileTypes, QStringList({"txt", "csv"}));
}

void tst_FileDialogsMac::directoryIsChosen()
{
    QStringList files;
    PanelUser::OpenPanelState panel = {};
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.look([&] {
            files = PanelUser::files();
            panel = PanelUser::openPanel();
        })
        .clickFile(QStringLiteral("sub.d"))
        .click(QStringLiteral("OK"));

    QCOMPARE(openDirectory(), path(QStringLiteral("sub.d")));
    QCOMPARE(user.fault(), QString());
    QCOMPARE(files, QStringList({"sub.d"}));
    QVERIFY(!panel.canChooseFiles);
    QVERIFY(panel.canChooseDirectories);
    QVERIFY(!panel.allowsMultipleSelection);
    QCOMPARE(panel.presetFileTypes, QStringList({""}));
    QCOMPARE(panel.allowedFileTypes, QStringList({""}));
}

void tst_FileDialogsMac::pathToSaveToIsTyped()
{
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.type(QStringLiteral("new.txt")).press(QStringLiteral("Return"));

    QCOMPARE(saveFile(), path(QStringLiteral("new.txt")));
    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
}

void tst_FileDialogsMac::cancelledPanelsReturnNothing()
{
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    const QString cancel = QStringLiteral("Cancel");

    user.clickFile(QStringLiteral("a.txt")).click(cancel);
    QCOMPARE(openFile(), QString());
    user.clickFile(QStringLiteral("a.txt")).click(cancel);
    QCOMPARE(openFiles(), QStringList());
    user.clickFile(QStringLiteral("sub.d")).click(cancel);
    QCOMPARE(openDirectory(), QString());
    user.type(QStringLiteral("new.txt")).click(cancel);
    QCOMPARE(saveFile(), QString());
    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
}

void tst_FileDialogsMac::panelsHeedTheTypesAlone_data()
{
    addFileDialogs();
}

void tst_FileDialogsMac::panelsHeedTheTypesAlone()
{
    QFETCH(FileDialog, show);
    QStringList plain;
    QStringList seen;
    PanelUser user;
    PanelUser::setFolder(m_folder->path());
    user.look([&] { plain = look(); }).click(QStringLiteral("Cancel"));
    show({});
    user.look([&] { seen = look(); }).click(QStringLiteral("Cancel"));
    QWidget parent;
    QString selectedFilter = QStringLiteral("Pictures (*.png)");
    show({.startWith = path(QStringLiteral("sub.d/new.png")),
          .filter = QStringLiteral("Tables (*.csv);;Pictures (*.png)"),
          .parent = &parent,
          .name = QStringLiteral("A name"),
          .caption = QStringLiteral("A caption"),
          .dirOnly = false,
          .selectedFilter = &selectedFilter,
          .resolveSymlinks = false});

    QCOMPARE(user.fault(), QString());
    QVERIFY(user.isDone());
    QVERIFY(plain.contains(m_folder->path()));
    QCOMPARE(seen, plain);
    QCOMPARE(selectedFilter, QStringLiteral("Pictures (*.png)"));
}

// --- Strings ---

void tst_FileDialogsMac::systemStringsAreConvertedWhole_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("exposed");

    for (const bool exposed : {true, false}) {
        const char *how = exposed ? "exposed" : "copied";
        QTest::addRow("empty, %s", how) << QString() << exposed;
        QTest::addRow("ASCII, %s", how) << QStringLiteral("a b") << exposed;
        QTest::addRow("beyond Latin-1, %s", how) << QStringLiteral("\u2192\u00fc") << exposed;
        QTest::addRow("a pair of units, %s", how) << QStringLiteral("\U0001F4A1") << exposed;
        QTest::addRow("a zero within, %s", how) << QString(QLatin1String("a\0b", 3)) << exposed;
    }
}

void tst_FileDialogsMac::systemStringsAreConvertedWhole()
{
    QFETCH(QString, text);
    QFETCH(bool, exposed);
    shim::exposesCharacters = exposed;
    const CFStringRef string =
        shim::newString(reinterpret_cast<const char16_t *>(text.utf16()), text.size());

    shim::copiedStrings = 0;
    QCOMPARE(FileDialogs::cfstring2qstring(string), text);
    QCOMPARE(shim::copiedStrings, exposed ? 0 : 1);
    CFRelease(string);
}

QTEST_MAIN(tst_FileDialogsMac)
#include "tst_FileDialogsMac.moc"
