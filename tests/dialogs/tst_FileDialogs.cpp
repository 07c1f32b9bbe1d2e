#include "DialogUser.h"
#include "FileDialogs.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <type_traits>

namespace {

const QString caption = QStringLiteral("A caption");
const QString textFilter = QStringLiteral("Texts (*.txt)");
const QString tableFilter = QStringLiteral("Tables (*.csv)");
const QString filters = textFilter + QStringLiteral(";;") + tableFilter;

static_assert(std::has_virtual_destructor_v<FileDialogs>);
static_assert(sizeof(FileDialogs) == sizeof(void *)); // that of its virtual functions

using BoxUser = DialogUser<QMessageBox>;
using FileUser = DialogUser<QFileDialog>;

QLineEdit *nameField(const QFileDialog &dialog)
{
    return dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
}

/// Types names in place of what is there, and Return.
void enter(QFileDialog &dialog, const QString &names)
{
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QLineEdit *field = nameField(dialog);
    field->selectAll();
    QTest::keyClicks(field, names);
    QTest::keyClick(field, Qt::Key_Return);
}

/// What a file dialog was given.
struct Given
{
    explicit Given(const QFileDialog &dialog)
        : parent(dialog.parentWidget()),
          title(dialog.windowTitle()),
          folder(dialog.directory().absolutePath()),
          filters(dialog.nameFilters()),
          filter(dialog.selectedNameFilter()),
          fileMode(dialog.fileMode()),
          acceptMode(dialog.acceptMode()),
          options(dialog.options())
    {
    }

    QWidget *parent;
    QString title;
    QString folder;
    QStringList filters;
    QString filter;
    QFileDialog::FileMode fileMode;
    QFileDialog::AcceptMode acceptMode;
    QFileDialog::Options options;
};

/// One of the four file dialogs with all of its arguments.
using FileDialog = std::function<QStringList(const QString &startWith, QWidget *parent,
                                             QString *selectedFilter, bool resolveSymlinks)>;

QStringList openFile(const QString &startWith, QWidget *parent, QString *selectedFilter,
                     bool resolveSymlinks)
{
    return {FileDialogs::getOpenFileName(startWith, filters, parent, QStringLiteral("name"),
                                         caption, QStringLiteral("png"), selectedFilter,
                                         resolveSymlinks)};
}

QStringList openFiles(const QString &startWith, QWidget *parent, QString *selectedFilter,
                      bool resolveSymlinks)
{
    return FileDialogs::getOpenFileNames(startWith, filters, parent, QStringLiteral("name"),
                                         caption, QStringLiteral("png"), selectedFilter,
                                         resolveSymlinks);
}

QStringList openDirectory(const QString &startWith, QWidget *parent, QString *,
                          bool resolveSymlinks)
{
    return {FileDialogs::getExistingDirectory(startWith, parent, QStringLiteral("name"), caption,
                                              true, resolveSymlinks)};
}

QStringList saveFile(const QString &startWith, QWidget *parent, QString *selectedFilter,
                     bool resolveSymlinks)
{
    return {FileDialogs::getSaveFileName(startWith, filters, parent, QStringLiteral("name"),
                                         caption, selectedFilter, resolveSymlinks)};
}

} // namespace

/// The toolkit's file dialogs, which every system but one shows.
class tst_FileDialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void portableDialogsAreUsed();

    void fileDialogShowsWhatItIsGiven_data();
    void fileDialogShowsWhatItIsGiven();
    void filtersMayBeLines_data();
    void filtersMayBeLines();
    void cancelledFileDialogReturnsNothing_data();
    void cancelledFileDialogReturnsNothing();
    void onlyFoldersAreShownOnRequest_data();
    void onlyFoldersAreShownOnRequest();
    void fileToStartWithIsNamed();
    void filterOfTheUserIsTold_data();
    void filterOfTheUserIsTold();
    void oneFileIsOpened();
    void severalFilesAreOpened();
    void directoryIsChosen();
    void newFileIsSavedWithoutAQuestion();
    void existingFileIsSavedOverOnlyIfTheUserAgrees_data();
    void existingFileIsSavedOverOnlyIfTheUserAgrees();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    static void addFileDialogs();

    QTemporaryDir m_settings;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileDialogs::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void tst_FileDialogs::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_folder = std::make_unique<QTemporaryDir>();
    for (const auto *name : {"a.txt", "b.txt", "c.csv"}) {
        QFile file(path(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("sub")));
}

void tst_FileDialogs::portableDialogsAreUsed()
{
    QCOMPARE(FileDialogs::mac_useNativeDialogs(), 0);
    QVERIFY(!FileDialogs::macLionOrGreater());
}

void tst_FileDialogs::addFileDialogs()
{
    QTest::addColumn<FileDialog>("show");
    QTest::addColumn<QFileDialog::FileMode>("fileMode");

    QTest::newRow("one file") << FileDialog(openFile) << QFileDialog::ExistingFile;
    QTest::newRow("several files") << FileDialog(openFiles) << QFileDialog::ExistingFiles;
    QTest::newRow("directory") << FileDialog(openDirectory) << QFileDialog::Directory;
    QTest::newRow("file to save") << FileDialog(saveFile) << QFileDialog::AnyFile;
}

void tst_FileDialogs::fileDialogShowsWhatItIsGiven_data()
{
    addFileDialogs();
}

void tst_FileDialogs::fileDialogShowsWhatItIsGiven()
{
    QFETCH(FileDialog, show);
    QFETCH(QFileDialog::FileMode, fileMode);
    const bool saves = fileMode == QFileDialog::AnyFile;
    const bool hasFilters = fileMode != QFileDialog::Directory;

    for (const bool resolveSymlinks : {false, true}) {
        QWidget parent;
        QString selectedFilter = tableFilter;
        std::unique_ptr<Given> given;
        const FileUser user([&given](QFileDialog &dialog) {
            given = std::make_unique<Given>(dialog);
            press(dialog, Qt::Key_Escape);
        });

        show(m_folder->path(), &parent, &selectedFilter, resolveSymlinks);

        QVERIFY(user.isDone());
        QCOMPARE(given->parent, &parent);
        QCOMPARE(given->title, caption);
        QCOMPARE(given->folder, m_folder->path());
        QCOMPARE(given->fileMode, fileMode);
        QCOMPARE(given->acceptMode, saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        QCOMPARE(given->options.testFlag(QFileDialog::DontResolveSymlinks), !resolveSymlinks);
        QVERIFY(!given->options.testFlag(QFileDialog::DontConfirmOverwrite));
        if (hasFilters) {
            QCOMPARE(given->filters, QStringList({textFilter, tableFilter}));
            QCOMPARE(given->filter, tableFilter);
        }
    }
}

void tst_FileDialogs::filtersMayBeLines_data()
{
    using Show = std::function<void(const QString &filter)>;
    QTest::addColumn<Show>("show");

    QTest::newRow("one file") << Show([](const QString &filter) {
        FileDialogs::getOpenFileName({}, filter, nullptr, {}, {}, {}, nullptr, true);
    });
    QTest::newRow("several files") << Show([](const QString &filter) {
        FileDialogs::getOpenFileNames({}, filter, nullptr, {}, {}, {}, nullptr, true);
    });
    QTest::newRow("file to save") << Show([](const QString &filter) {
        FileDialogs::getSaveFileName({}, filter, nullptr, {}, {}, nullptr, true);
    });
}

void tst_FileDialogs::filtersMayBeLines()
{
    QFETCH(std::function<void(const QString &)>, show);
    QStringList shown;
    const FileUser user([&shown](QFileDialog &dialog) {
        shown = dialog.nameFilters();
        press(dialog, Qt::Key_Escape);
    });

    show(textFilter + u'\n' + tableFilter);

    QVERIFY(user.isDone());
    QCOMPARE(shown, QStringList({textFilter, tableFilter}));
}

void tst_FileDialogs::cancelledFileDialogReturnsNothing_data()
{
    addFileDialogs();
}

void tst_FileDialogs::cancelledFileDialogReturnsNothing()
{
    QFETCH(FileDialog, show);
    QFETCH(QFileDialog::FileMode, fileMode);
    const FileUser user([](QFileDialog &dialog) {
        nameField(dialog)->setText(QStringLiteral("a.txt"));
        press(dialog, Qt::Key_Escape);
    });

    const QStringList chosen = show(m_folder->path(), nullptr, nullptr, true);

    QVERIFY(user.isDone());
    if (fileMode == QFileDialog::ExistingFiles)
        QCOMPARE(chosen, QStringList());
    else
        QCOMPARE(chosen, QStringList({QString()}));
}

void tst_FileDialogs::onlyFoldersAreShownOnRequest_data()
{
    QTest::addColumn<bool>("dirOnly");

    QTest::newRow("folders alone") << true;
    QTest::newRow("files too") << false;
}

void tst_FileDialogs::onlyFoldersAreShownOnRequest()
{
    QFETCH(bool, dirOnly);
    bool showsDirsOnly = !dirOnly;
    const FileUser user([&](QFileDialog &dialog) {
        showsDirsOnly = dialog.testOption(QFileDialog::ShowDirsOnly);
        press(dialog, Qt::Key_Escape);
    });

    FileDialogs::getExistingDirectory(m_folder->path(), nullptr, {}, {}, dirOnly, true);

    QVERIFY(user.isDone());
    QCOMPARE(showsDirsOnly, dirOnly);
}

void tst_FileDialogs::fileToStartWithIsNamed()
{
    QString named;
    const FileUser user([&named](QFileDialog &dialog) {
        named = nameField(dialog)->text();
        press(dialog, Qt::Key_Return);
    });

    QCOMPARE(openFile(path(QStringLiteral("b.txt")), nullptr, nullptr, true),
             QStringList({path(QStringLiteral("b.txt"))}));
    QVERIFY(user.isDone());
    QCOMPARE(named, QStringLiteral("b.txt"));
}

void tst_FileDialogs::filterOfTheUserIsTold_data()
{
    QTest::addColumn<FileDialog>("show");
    QTest::addColumn<QString>("name");

    QTest::newRow("one file") << FileDialog(openFile) << "c.csv";
    QTest::newRow("several files") << FileDialog(openFiles) << "c.csv";
    QTest::newRow("file to save") << FileDialog(saveFile) << "new.csv";
}

void tst_FileDialogs::filterOfTheUserIsTold()
{
    QFETCH(FileDialog, show);
    QFETCH(QString, name);
    QString selectedFilter = textFilter;
    const FileUser user([&name](QFileDialog &dialog) {
        auto *chooser = dialog.findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
        chooser->setFocus();
        QTest::keyClick(chooser, Qt::Key_Down);
        enter(dialog, name);
    });

    QCOMPARE(show(m_folder->path(), nullptr, &selectedFilter, true), QStringList({path(name)}));
    QVERIFY(user.isDone());
    QCOMPARE(selectedFilter, tableFilter);
}

void tst_FileDialogs::oneFileIsOpened()
{
    const FileUser user([](QFileDialog &dialog) { enter(dialog, QStringLiteral("a.txt")); });

    QCOMPARE(openFile(m_folder->path(), nullptr, nullptr, true),
             QStringList({path(QStringLiteral("a.txt"))}));
    QVERIFY(user.isDone());
}

void tst_FileDialogs::severalFilesAreOpened()
{
    const FileUser user(
        [](QFileDialog &dialog) { enter(dialog, QStringLiteral("\"b.txt\" \"a.txt\"")); });

    QCOMPARE(openFiles(m_folder->path(), nullptr, nullptr, true),
             QStringList({path(QStringLiteral("b.txt")), path(QStringLiteral("a.txt"))}));
    QVERIFY(user.isDone());
}

void tst_FileDialogs::directoryIsChosen()
{
    const FileUser user([](QFileDialog &dialog) { enter(dialog, QStringLiteral("sub")); });

    QCOMPARE(openDirectory(m_folder->path(), nullptr, nullptr, true),
             QStringList({path(QStringLiteral("sub"))}));
    QVERIFY(user.isDone());
}

void tst_FileDialogs::newFileIsSavedWithoutAQuestion()
{
    const BoxUser questions([](QMessageBox &) {});
    const FileUser user([](QFileDialog &dialog) { enter(dialog, QStringLiteral("new.txt")); });

    QCOMPARE(saveFile(m_folder->path(), nullptr, nullptr, true),
             QStringList({path(QStringLiteral("new.txt"))}));
    QVERIFY(user.isDone());
}

void tst_FileDialogs::existingFileIsSavedOverOnlyIfTheUserAgrees_data()
{
    QTest::addColumn<bool>("agrees");

    QTest::newRow("yes") << true;
    QTest::newRow("no") << false;
}

void tst_FileDialogs::existingFileIsSavedOverOnlyIfTheUserAgrees()
{
    QFETCH(bool, agrees);
    const BoxUser question([agrees](QMessageBox &box) {
        QTest::mouseClick(box.button(agrees ? QMessageBox::Yes : QMessageBox::No), Qt::LeftButton);
    });
    bool staysOpen = false;
    const FileUser user([&staysOpen](QFileDialog &dialog) {
        const QPointer<QFileDialog> guard(&dialog);
        enter(dialog, QStringLiteral("a.txt"));
        staysOpen = guard && guard->isVisible();
        if (staysOpen)
            press(dialog, Qt::Key_Escape);
    });

    QCOMPARE(saveFile(m_folder->path(), nullptr, nullptr, true),
             QStringList({agrees ? path(QStringLiteral("a.txt")) : QString()}));
    QVERIFY(question.isDone());
    QVERIFY(user.isDone());
    QCOMPARE(staysOpen, !agrees);
}

QTEST_MAIN(tst_FileDialogs)
#include "tst_FileDialogs.moc"
