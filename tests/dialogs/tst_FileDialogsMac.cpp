#include "FileDialogs.h"
#include "FileDialogsMac.h"
#include "PanelUser.h"
#include "SystemShim.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

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

QString openFile(const QString &types = QStringLiteral("txt csv"))
{
    return FileDialogs::getOpenFileName({}, {}, nullptr, {}, {}, types, nullptr, true);
}

QStringList openFiles(const QString &types = QStringLiteral("txt csv"))
{
    return FileDialogs::getOpenFileNames({}, {}, nullptr, {}, {}, types, nullptr, true);
}

QString openDirectory()
{
    return FileDialogs::getExistingDirectory({}, nullptr, {}, {}, true, true);
}

QString saveFile()
{
    return FileDialogs::getSaveFileName({}, {}, nullptr, {}, {}, nullptr, true);
}

} // namespace

/// The panels of AppKit, used with the mouse and the keyboard.
class tst_FileDialogsMac : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void systemIsAskedEveryTime();
    void warningIsPortableBeforeTenSeven();
    void warningIsNativeFromTenSevenOn_data();
    void warningIsNativeFromTenSevenOn();

    void alertReturnsTheIndexOfTheButton_data();
    void alertReturnsTheIndexOfTheButton();
    void endOfAnAlertStandsForAButton_data();
    void endOfAnAlertStandsForAButton();
    void returnKeyPressesTheFirstButtonWhateverTheDefault();
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

    void systemStringsAreConvertedWhole_data();
    void systemStringsAreConvertedWhole();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

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

void tst_FileDialogsMac::returnKeyPressesTheFirstButtonWhateverTheDefault()
{
    PanelUser user;
    user.press(QStringLiteral("Return"));

    QCOMPARE(warn(QStringLiteral("Sure?"), 2, 1), 0);
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
    QStringList texts;
    PanelUser user;
    user.look([&] { texts = PanelUser::texts(); }).click(buttons[0]);

    QCOMPARE(warn(QStringLiteral("\u00fcber \u2192 all")), 0);
    QCOMPARE(user.fault(), QString());
    QVERIFY2(texts.contains(QStringLiteral("\u00fcber ? all")), qPrintable(texts.join(u'|')));
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
