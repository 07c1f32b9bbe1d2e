#include "Autosave.h"
#include "TestTypes.h"
#include "WindowEdits.h"

#include <QDir>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QRegularExpression>
#include <QSettings>
#include <QStatusBar>

#include <memory>

namespace {

const QByteArray sequence =
    "<xsequence>\n<ElementEffects>\n<Element type=\"model\" name=\"Tree\"><EffectLayer>\n"
    "<Effect name=\"On\" startTime=\"0\" endTime=\"1500\"/>\n"
    "</EffectLayer></Element>\n</ElementEffects>\n</xsequence>\n";

/// What a crash left of a show without a file.
QString leaveUntitled(const char *name, const QByteArray &content)
{
    const QDir data(rehearsal::Autosave::standardDataFolder());
    QFile left(data.filePath(QStringLiteral("untitled-%1.autosave").arg(QLatin1String(name))));
    if (!data.mkpath(".") || !left.open(QIODevice::WriteOnly)
        || left.write(content) != content.size())
        qFatal("nothing can be left behind");
    return left.fileName();
}

/// Whether the drop was taken.
bool drop(WindowScene &scene, const QStringList &files)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &file : files)
        urls.append(QUrl::fromLocalFile(file));
    data.setUrls(urls);
    const QPoint place = scene.window.rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&scene.window, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&scene.window, &event);
    QTest::qWait(20);
    return event.isAccepted();
}

/// A window on an edited show, and another show beside it.
struct Edited : WindowScene
{
    Edited()
    {
        typeIntoCell(1, meta::NameColumn, "Dawn");
        other = write("b.show", twoEffectsShow());
        if (!window.isWindowModified())
            qFatal("the edit is no edit");
    }

    /// Whether everything is as it was after the edit.
    bool isWhole()
    {
        return document().file() == file && window.isWindowModified()
               && childText(1, "name") == u"Dawn" && action("undoAction").isEnabled()
               && disagreement().isEmpty() && read(file) == minuteShow();
    }
    bool isSaved() const { return read(file).contains(">Dawn<"); }

    QString other;
};

enum Leaving { New, Open, Recent, Import, DropShow, DropSequence, Quit };

/// What asks before the show goes; without the question, and those to come.
void leave(Edited &scene, int leaving)
{
    switch (leaving) {
    case New: scene.action("newAction").trigger(); break;
    case Open: scene.action("openAction").trigger(); break;
    case Recent: scene.part<QMenu>("recentMenu").actions().first()->trigger(); break;
    case Import: scene.action("importAction").trigger(); break;
    case DropShow: drop(scene, {scene.other}); break;
    case DropSequence: drop(scene, {scene.write("s.xsq", sequence)}); break;
    default: scene.action("quitAction").trigger();
    }
    QTest::qWait(20);
}

void addLeavings()
{
    QTest::addColumn<int>("leaving");
    const char *const names[] = {"new", "open", "recent", "import", "drop", "drop .xsq", "quit"};
    for (int i = New; i <= Quit; ++i)
        QTest::newRow(names[i]) << i;
}

} // namespace

/// Files: new, open, save, import, drop, and what asks before edits are lost.
class tst_WindowDocuments : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useOwnHome(); }
    void init();

    void startsWithANewShow();
    void titleTellsFileAndMark();
    void newShowTakesThePlace();
    void opensByDialog();
    void savesInPlace();
    void savesWhatStillStandsInAField_data();
    void savesWhatStillStandsInAField();
    void replacesWhatAnotherProgramWroteOnlyWhenTold();
    void olderRemainsAreNotRecoveredByReturn();
    void remainsAreDiscardedOnceTheFileIsOpened_data();
    void remainsAreDiscardedOnceTheFileIsOpened();
    void remainsOfABadFileAreNotToBeDiscarded_data();
    void remainsOfABadFileAreNotToBeDiscarded();
    void newOffersWhatACrashLeftOfAnother();
    void newOffersTheNextIfOneCannotBeRecovered();
    void whatACrashLeftOfAnotherIsToldWithoutAQuestion();
    void missingAutosaveStaysInSight();
    void savesAs();
    void untitledIsSavedAs();
    void escapedSaveAsSavesNothing();

    void asksBeforeEditsAreLost_data() { addLeavings(); }
    void asksBeforeEditsAreLost();
    void keepsEverythingOnEscape_data() { addLeavings(); }
    void keepsEverythingOnEscape();
    void leavesWithoutSaving_data() { addLeavings(); }
    void leavesWithoutSaving();
    void savesBeforeLeaving_data() { addLeavings(); }
    void savesBeforeLeaving();
    void keepsEverythingWhenSavingFails_data() { addLeavings(); }
    void keepsEverythingWhenSavingFails();
    void asksNothingWithoutEdits_data() { addLeavings(); }
    void asksNothingWithoutEdits();
    void asksAboutWhatStillStandsInACell();

    void badFileIsToldAndChangesNothing_data();
    void badFileIsToldAndChangesNothing();
    void failedSaveIsTold();
    void unknownTypesAreToldAndKept();

    void recentFilesAreOffered();
    void missingRecentFileIsToldAndForgotten();
    void missingRecentFileWithRemainsIsKept();
    void whatIsBeingTypedIsLeftToRecover();
    void importsASequence();
    void dropsAShow();
    void dropsASequence();
    void otherDropsAreRefused();
    void dialogsOpenFromTheMenu();
};

void tst_WindowDocuments::init()
{
    clearHome();
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

// --- Plain sailing ---

void tst_WindowDocuments::startsWithANewShow()
{
    WindowScene scene(WindowScene::WithoutShow);
    rehearsal::FileFault fault;
    QVERIFY(scene.window.start(QString(), &fault));
    QVERIFY(scene.document().file().isEmpty());
    QVERIFY(!scene.window.isWindowModified());
    QCOMPARE(scene.table().rowCount(), 0);
    QVERIFY(scene.window.windowTitle().contains(scene.document().displayName()));
}

void tst_WindowDocuments::titleTellsFileAndMark()
{
    WindowScene scene;
    QVERIFY(scene.window.windowTitle().contains(QStringLiteral("a.show")));
    QVERIFY(scene.window.windowTitle().contains(QStringLiteral("[*]")));
    QVERIFY(!scene.window.isWindowModified());
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    QVERIFY(scene.window.isWindowModified());
    scene.typeIntoCell(1, meta::NameColumn, "Rise");
    QVERIFY(!scene.window.isWindowModified());
}

void tst_WindowDocuments::newShowTakesThePlace()
{
    WindowScene scene;
    scene.playback().seek(3000);
    scene.key(Qt::Key_N, Qt::ControlModifier);
    QVERIFY(scene.document().file().isEmpty());
    QVERIFY(!scene.window.windowTitle().contains(QStringLiteral("a.show")));
    QCOMPARE(scene.table().rowCount(), 0);
    QCOMPARE(scene.disagreement(), QString());
    QCOMPARE(scene.playback().position(), 0u);
    QVERIFY(!scene.action("undoAction").isEnabled());
    pickGroup("All in turn", [&] { press(scene, "m_newEffectButton"); });
    QCOMPARE(scene.timeline().model().rows().size(), 1u);
    QVERIFY(scene.window.isWindowModified());
}

void tst_WindowDocuments::opensByDialog()
{
    WindowScene scene;
    const QString other = scene.write("b.show", crowdedShow(5));
    const BoxUser user({BoxUser::choose(other)});
    scene.key(Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(scene.document().file(), other);
    QCOMPARE(scene.table().rowCount(), 5);
    QCOMPARE(scene.disagreement(), QString());
    QVERIFY(scene.window.windowTitle().contains(QStringLiteral("b.show")));
}

void tst_WindowDocuments::savesInPlace()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    const BoxUser user;
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(user.seen, QStringList());
    QVERIFY(WindowScene::read(scene.file).contains(">Dawn<"));
    QVERIFY(!scene.window.isWindowModified());
    QVERIFY(scene.window.statusBar()->currentMessage().contains(QStringLiteral("a.show")));
    QVERIFY(scene.action("undoAction").isEnabled());
}

void tst_WindowDocuments::savesWhatStillStandsInAField_data()
{
    QTest::addColumn<bool>("isCell");
    QTest::newRow("open cell") << true;
    QTest::newRow("number not entered") << false;
}

void tst_WindowDocuments::savesWhatStillStandsInAField()
{
    QFETCH(bool, isCell);
    WindowScene scene;
    if (isCell) {
        WindowScene::openCell(scene.form(), 1, meta::NameColumn);
        scene.type("Dawn");
    } else {
        scene.select(1);
        press(scene, "m_endCyclesRadioButton");
        scene.typeInto("m_endCyclesSpinBox", "37");
    }
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(WindowScene::read(scene.file)
                .contains(isCell ? ">Dawn<" : "<property key=\"endcyclecount\">37</property>"));
    QVERIFY(!scene.window.isWindowModified());
}

void tst_WindowDocuments::replacesWhatAnotherProgramWroteOnlyWhenTold()
{
    Edited scene;
    QTest::qSleep(20);
    scene.write("a.show", twoEffectsShow());
    {
        const BoxUser user;
        scene.key(Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(user.seen, QStringList({"changedBox"}));
    }
    QCOMPARE(WindowScene::read(scene.file), twoEffectsShow());
    QVERIFY(scene.window.isWindowModified());
    {
        const BoxUser user({BoxUser::click("replaceButton")});
        scene.key(Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(user.seen, QStringList({"changedBox"}));
    }
    QVERIFY(WindowScene::read(scene.file).contains(">Dawn<"));
    scene.typeIntoCell(1, meta::NameColumn, "Dusk");
    const BoxUser user;
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(user.seen, QStringList());
    QVERIFY(WindowScene::read(scene.file).contains(">Dusk<"));
}

void tst_WindowDocuments::olderRemainsAreNotRecoveredByReturn()
{
    WindowScene scene(WindowScene::WithoutShow);
    const QString left = scene.write("b.show.autosave", minuteShow());
    QTest::qSleep(20);
    const QString file = scene.write("b.show", twoEffectsShow());
    const BoxUser user({BoxUser::type(Qt::Key_Return)});
    rehearsal::FileFault fault;
    QVERIFY(scene.window.start(file, &fault));
    QCOMPARE(user.seen, QStringList({"recoverBox"}));
    QVERIFY(!scene.window.isWindowModified());
    QCOMPARE(WindowScene::read(left), minuteShow());
}

void tst_WindowDocuments::remainsAreDiscardedOnceTheFileIsOpened_data()
{
    QTest::addColumn<bool>("isOpened");
    QTest::newRow("whole") << true;
    QTest::newRow("damaged while the question is open") << false;
}

void tst_WindowDocuments::remainsAreDiscardedOnceTheFileIsOpened()
{
    QFETCH(bool, isOpened);
    WindowScene scene(WindowScene::WithoutShow);
    const QString file = scene.write("b.show", twoEffectsShow());
    const QString left = scene.write("b.show.autosave", minuteShow());
    const BoxUser user({[&](QDialog &dialog) {
        if (!isOpened)
            scene.write("b.show", twoEffectsShow().first(900));
        BoxUser::click("discardButton")(dialog);
    }});
    rehearsal::FileFault fault;
    QCOMPARE(scene.window.start(file, &fault), isOpened);
    QCOMPARE(user.seen, QStringList({"recoverBox"}));
    QCOMPARE(QFile::exists(left), !isOpened);
}

void tst_WindowDocuments::remainsOfABadFileAreNotToBeDiscarded_data()
{
    QTest::addColumn<bool>("isThere");
    QTest::newRow("missing") << false;
    QTest::newRow("damaged") << true;
}

void tst_WindowDocuments::remainsOfABadFileAreNotToBeDiscarded()
{
    QFETCH(bool, isThere);
    WindowScene scene(WindowScene::WithoutShow);
    const QString file = scene.path("b.show");
    scene.write("b.show.autosave", twoEffectsShow());
    QTest::qSleep(20);
    if (isThere)
        scene.write("b.show", twoEffectsShow().first(900));
    QString told;
    bool isOffered = true;
    const BoxUser user({[&](QDialog &dialog) {
        told = static_cast<QMessageBox &>(dialog).informativeText();
        isOffered = dialog.findChild<QPushButton *>("discardButton");
        QTest::keyClick(&dialog, Qt::Key_Return);
    }});
    rehearsal::FileFault fault;
    QVERIFY(scene.window.start(file, &fault));
    QCOMPARE(user.seen, QStringList({"recoverBox"}));
    QVERIFY2(told.contains("cannot be opened") && told.contains(file), qPrintable(told));
    QVERIFY(!isOffered);
    QCOMPARE(scene.document().show()->effects().size(), 2);
    QVERIFY(scene.window.isWindowModified());
}

void tst_WindowDocuments::newOffersWhatACrashLeftOfAnother()
{
    WindowScene scene;
    const QString left = leaveUntitled("left", twoEffectsShow());
    const BoxUser user({BoxUser::click("recoverButton")});
    scene.trigger("newAction");
    QCOMPARE(user.seen, QStringList({"recoverBox"}));
    QCOMPARE(scene.document().show()->effects().size(), 2);
    QCOMPARE(scene.document().file(), QString());
    QVERIFY(scene.window.isWindowModified());
    QVERIFY(QFile::remove(left));
}

void tst_WindowDocuments::newOffersTheNextIfOneCannotBeRecovered()
{
    WindowScene scene;
    const QString older = leaveUntitled("older", twoEffectsShow());
    QTest::qSleep(20);
    const QString newer = leaveUntitled("newer", twoEffectsShow().first(900));
    const BoxUser user({BoxUser::click("recoverButton"), BoxUser::press(QMessageBox::Ok),
                        BoxUser::click("recoverButton")});
    scene.trigger("newAction");
    QCOMPARE(user.seen, QStringList({"recoverBox", "faultBox", "recoverBox"}));
    QCOMPARE(scene.document().show()->effects().size(), 2);
    QVERIFY(scene.window.isWindowModified());
    QVERIFY(QFile::remove(older));
    QVERIFY(QFile::remove(newer));
}

void tst_WindowDocuments::whatACrashLeftOfAnotherIsToldWithoutAQuestion()
{
    const QString left = leaveUntitled("left", twoEffectsShow());
    const BoxUser user({BoxUser::click("recoverButton")});
    WindowScene scene;
    const auto &note = scene.part<QLabel>("untitledNote");
    QVERIFY(note.isVisible());
    QCOMPARE(user.seen, QStringList());
    QCOMPARE(scene.document().file(), scene.file);
    scene.trigger("newAction");
    QCOMPARE(user.seen, QStringList({"recoverBox"}));
    QVERIFY(!note.isVisible());
    QVERIFY(QFile::remove(left));
}

void tst_WindowDocuments::missingAutosaveStaysInSight()
{
    const WindowScene first;
    rehearsal::MainWindow second(allTypes());
    const auto *warning = second.findChild<QLabel *>("autosaveWarning");
    QVERIFY(warning->isHidden());
    rehearsal::FileFault fault;
    QVERIFY(second.start(first.file, &fault));
    QTRY_VERIFY(!warning->isHidden());
    QVERIFY(Qt::mightBeRichText(warning->toolTip())); // which shows every letter as it is
    QVERIFY(second.document().open(first.write("b.show", twoEffectsShow()), &fault));
    QVERIFY(warning->isHidden());
}

void tst_WindowDocuments::savesAs()
{
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    const QString other = scene.path("c.show");
    const BoxUser user({BoxUser::choose(scene.path("c"))});
    scene.key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(user.seen, QStringList("saveDialog"));
    QCOMPARE(scene.document().file(), other);
    QVERIFY(WindowScene::read(other).contains(">Dawn<"));
    QCOMPARE(WindowScene::read(scene.file), minuteShow());
    QVERIFY(!scene.window.isWindowModified());
    QVERIFY(scene.window.windowTitle().contains(QStringLiteral("c.show")));
    scene.typeIntoCell(1, meta::NameColumn, "Dusk");
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(WindowScene::read(other).contains(">Dusk<"));
}

void tst_WindowDocuments::untitledIsSavedAs()
{
    WindowScene scene;
    scene.trigger("newAction");
    const BoxUser user({BoxUser::choose(scene.path("new.show"))});
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(user.seen, QStringList("saveDialog"));
    QCOMPARE(scene.document().file(), scene.path("new.show"));
    QVERIFY(WindowScene::read(scene.path("new.show")).contains("<show"));
}

void tst_WindowDocuments::escapedSaveAsSavesNothing()
{
    Edited scene;
    const BoxUser user({BoxUser::type(Qt::Key_Escape)});
    scene.key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(user.seen, QStringList("saveDialog"));
    QVERIFY(scene.isWhole());
}

// --- Before edits are lost ---

void tst_WindowDocuments::asksBeforeEditsAreLost()
{
    QFETCH(int, leaving);
    Edited scene;
    const BoxUser user({BoxUser::press(QMessageBox::Cancel)});
    leave(scene, leaving);
    QCOMPARE(user.seen, QStringList("saveQuestion"));
    QVERIFY(user.texts.first().contains(QStringLiteral("a.show")));
    QVERIFY(scene.isWhole());
    QVERIFY(scene.window.isVisible());
}

void tst_WindowDocuments::keepsEverythingOnEscape()
{
    QFETCH(int, leaving);
    Edited scene;
    const BoxUser user({BoxUser::type(Qt::Key_Escape)});
    leave(scene, leaving);
    QCOMPARE(user.seen, QStringList("saveQuestion"));
    QVERIFY(scene.isWhole());
    QVERIFY(scene.window.isVisible());
}

void tst_WindowDocuments::leavesWithoutSaving()
{
    QFETCH(int, leaving);
    Edited scene;
    const BoxUser::Answer importing = [](QDialog &dialog) {
        auto *open = dialog.findChild<QPushButton *>(QStringLiteral("m_openButton"));
        BoxUser::click("m_importButton")(dialog);
        QVERIFY(QTest::qWaitFor([&] { return open->isVisible() && open->isEnabled(); }));
        BoxUser::click("m_openButton")(dialog);
    };
    QList<BoxUser::Answer> answers{BoxUser::press(QMessageBox::Discard)};
    if (leaving == Open)
        answers.append(BoxUser::choose(scene.other));
    else if (leaving == DropSequence)
        answers.append(importing);
    const BoxUser user(answers);
    leave(scene, leaving);
    QCOMPARE(user.seen.first(), QStringLiteral("saveQuestion"));
    QCOMPARE(WindowScene::read(scene.file), minuteShow());
    switch (leaving) {
    case New: QVERIFY(scene.document().file().isEmpty()); break;
    case Open:
    case DropShow: QCOMPARE(scene.document().file(), scene.other); break;
    case Recent:
        QCOMPARE(scene.document().file(), scene.file);
        QCOMPARE(scene.childText(1, "name"), QStringLiteral("Rise"));
        QVERIFY(!scene.window.isWindowModified());
        break;
    case Import: // was left with Escape after the question
        QCOMPARE(user.seen, QStringList({"saveQuestion", "ImportDialog"}));
        QCOMPARE(scene.document().file(), scene.file);
        break;
    case DropSequence:
        QVERIFY(scene.document().file().isEmpty());
        QCOMPARE(scene.document().displayName(), QStringLiteral("s"));
        break;
    default: QVERIFY(!scene.window.isVisible());
    }
}

void tst_WindowDocuments::savesBeforeLeaving()
{
    QFETCH(int, leaving);
    Edited scene;
    QList<BoxUser::Answer> answers{BoxUser::press(QMessageBox::Save)};
    if (leaving == Open)
        answers.append(BoxUser::choose(scene.other));
    const BoxUser user(answers);
    leave(scene, leaving);
    QCOMPARE(user.seen.first(), QStringLiteral("saveQuestion"));
    QVERIFY(scene.isSaved());
    if (leaving == Open || leaving == DropShow)
        QCOMPARE(scene.document().file(), scene.other);
    if (leaving == Quit)
        QVERIFY(!scene.window.isVisible());
}

void tst_WindowDocuments::keepsEverythingWhenSavingFails()
{
    QFETCH(int, leaving);
    Edited scene;
    // A folder in the place of the file: that cannot be overwritten by anybody.
    QVERIFY(QFile::remove(scene.file));
    QVERIFY(QDir().mkdir(scene.file));
    const BoxUser user({BoxUser::press(QMessageBox::Save), BoxUser::press(QMessageBox::Ok)});
    leave(scene, leaving);
    QCOMPARE(user.seen, QStringList({"saveQuestion", "faultBox"}));
    QCOMPARE(scene.document().file(), scene.file);
    QVERIFY(scene.window.isWindowModified());
    QVERIFY(scene.window.isVisible());
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Dawn"));
    QVERIFY(scene.action("undoAction").isEnabled());
    QCOMPARE(scene.disagreement(), QString());
}

void tst_WindowDocuments::asksNothingWithoutEdits()
{
    QFETCH(int, leaving);
    Edited scene;
    scene.undo();
    const BoxUser user;
    leave(scene, leaving);
    QVERIFY(!user.seen.contains(QStringLiteral("saveQuestion")));
    if (leaving == Quit)
        QVERIFY(!scene.window.isVisible());
}

void tst_WindowDocuments::asksAboutWhatStillStandsInACell()
{
    WindowScene scene;
    WindowScene::openCell(scene.form(), 1, meta::NameColumn);
    scene.type("Dawn");
    const BoxUser user({BoxUser::press(QMessageBox::Save)});
    scene.key(Qt::Key_Q, Qt::ControlModifier);
    QTest::qWait(20);
    QCOMPARE(user.seen, QStringList("saveQuestion"));
    QVERIFY(WindowScene::read(scene.file).contains(">Dawn<"));
}

// --- Faults ---

void tst_WindowDocuments::badFileIsToldAndChangesNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isDropped");
    for (const bool isDropped : {false, true}) {
        const char *how = isDropped ? "dropped" : "opened";
        QTest::addRow("%s: cut short", how) << minuteShow().first(900) << isDropped;
        QTest::addRow("%s: no show", how) << QByteArray("<map/>") << isDropped;
        QTest::addRow("%s: empty", how) << QByteArray() << isDropped;
        QTest::addRow("%s: two lights with one uid", how)
            << minuteShow().replace("uid=\"2\"", "uid=\"1\"") << isDropped;
    }
}

void tst_WindowDocuments::badFileIsToldAndChangesNothing()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isDropped);
    WindowScene scene;
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.key(Qt::Key_S, Qt::ControlModifier);
    scene.playback().seek(2500);
    const QString bad = scene.write("bad.show", content);
    QList<BoxUser::Answer> answers;
    if (!isDropped)
        answers.append(BoxUser::choose(bad));
    const BoxUser user(answers);
    if (isDropped)
        drop(scene, {bad});
    else
        scene.trigger("openAction");
    QTest::qWait(20);
    QCOMPARE(user.seen.count(QStringLiteral("faultBox")), 1);
    QCOMPARE(user.seen.last(), QStringLiteral("faultBox"));
    QVERIFY2(user.texts.last().contains(QStringLiteral("bad.show")), qPrintable(user.texts.last()));
    QCOMPARE(scene.document().file(), scene.file);
    QVERIFY(scene.action("undoAction").isEnabled());
    QCOMPARE(scene.childText(1, "name"), QStringLiteral("Dawn"));
    QCOMPARE(scene.playback().position(), 2500u);
    QCOMPARE(scene.light(2), 1.0);
    QCOMPARE(scene.disagreement(), QString());
    QVERIFY(!QSettings().value(QStringLiteral("recentFiles")).toStringList().contains(bad));
}

void tst_WindowDocuments::failedSaveIsTold()
{
    Edited scene;
    QVERIFY(QFile::remove(scene.file));
    QVERIFY(QDir().mkdir(scene.file));
    const BoxUser user({BoxUser::press(QMessageBox::Ok)});
    scene.key(Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(user.seen, QStringList("faultBox"));
    QVERIFY2(user.texts.first().contains(QStringLiteral("a.show")), qPrintable(user.texts.first()));
    QVERIFY(scene.window.isWindowModified());
}

void tst_WindowDocuments::unknownTypesAreToldAndKept()
{
    const QByteArray fog = "<effect type=\"Fog\" depth='7'><property key=\"name\">Mist</property>"
                           "<thick>yes</thick></effect>";
    WindowScene scene(minuteShow().replace("</show>", fog + "\n</show>"));
    QVERIFY(scene.window.statusBar()->currentMessage().contains(QStringLiteral("Fog")));
    scene.typeIntoCell(1, meta::NameColumn, "Dawn");
    scene.undo();
    scene.typeIntoCell(1, meta::NameColumn, "Dusk");
    scene.key(Qt::Key_S, Qt::ControlModifier);
    const QByteArray saved = WindowScene::read(scene.file);
    QVERIFY(saved.contains(">Dusk<"));
    QVERIFY(saved.contains(fog));
}

// --- Other ways in ---

void tst_WindowDocuments::recentFilesAreOffered()
{
    WindowScene scene;
    auto &menu = scene.part<QMenu>("recentMenu");
    QVERIFY(menu.isEnabled());
    QVERIFY(menu.actions().first()->text().contains(QStringLiteral("a.show")));
    const QString other = scene.write("b.show", crowdedShow(5));
    {
        const BoxUser user({BoxUser::choose(other)});
        scene.trigger("openAction");
    }
    QVERIFY(menu.actions().at(0)->text().contains(QStringLiteral("b.show")));
    QVERIFY(menu.actions().at(1)->text().contains(QStringLiteral("a.show")));
    menu.actions().at(1)->trigger();
    QTest::qWait(10);
    QCOMPARE(scene.document().file(), scene.file);
    QVERIFY(menu.actions().at(0)->text().contains(QStringLiteral("a.show")));
    {
        const BoxUser user({BoxUser::choose(scene.path("c.show"))});
        scene.trigger("saveAsAction");
    }
    QVERIFY(menu.actions().at(0)->text().contains(QStringLiteral("c.show")));
}

void tst_WindowDocuments::missingRecentFileIsToldAndForgotten()
{
    WindowScene scene;
    const QString other = scene.write("b.show", crowdedShow(5));
    drop(scene, {other});
    drop(scene, {scene.file});
    QVERIFY(QFile::remove(other));
    auto &menu = scene.part<QMenu>("recentMenu");
    QVERIFY(menu.actions().at(1)->text().contains(QStringLiteral("b.show")));
    const BoxUser user({BoxUser::press(QMessageBox::Ok)});
    menu.actions().at(1)->trigger();
    QTest::qWait(10);
    QCOMPARE(user.seen, QStringList("faultBox"));
    QCOMPARE(scene.document().file(), scene.file);
    for (const QAction *action : menu.actions())
        QVERIFY(!action->text().contains(QStringLiteral("b.show")));
}

// The menu is the only way to what a crash left of it.
void tst_WindowDocuments::missingRecentFileWithRemainsIsKept()
{
    WindowScene scene;
    const QString other = scene.write("b.show", crowdedShow(5));
    drop(scene, {other});
    drop(scene, {scene.file});
    QVERIFY(QFile::rename(other, other + QStringLiteral(".autosave")));
    auto &menu = scene.part<QMenu>("recentMenu");
    const BoxUser user({BoxUser::click("laterButton"), BoxUser::press(QMessageBox::Ok)});
    menu.actions().at(1)->trigger();
    QTest::qWait(10);
    QCOMPARE(user.seen, QStringList({"recoverBox", "faultBox"}));
    QVERIFY(menu.actions().at(1)->text().contains(QStringLiteral("b.show")));
}

void tst_WindowDocuments::whatIsBeingTypedIsLeftToRecover()
{
    WindowScene scene;
    scene.openCell(scene.form(), 1, meta::NameColumn);
    scene.type("Dawn");
    scene.window.leaveToRecover();
    QVERIFY(WindowScene::read(scene.file + QStringLiteral(".autosave")).contains(">Dawn<"));
}

void tst_WindowDocuments::importsASequence()
{
    WindowScene scene;
    const QString file = scene.write("lights.xsq", sequence);
    const BoxUser user({[&](QDialog &dialog) {
        auto *name = dialog.findChild<QLineEdit *>(QStringLiteral("m_sequenceLineEdit"));
        QVERIFY(name);
        QTest::keyClicks(name, file);
        BoxUser::click("m_importButton")(dialog);
        auto *open = dialog.findChild<QPushButton *>(QStringLiteral("m_openButton"));
        QVERIFY(QTest::qWaitFor([&] { return open->isVisible(); }));
        BoxUser::click("m_openButton")(dialog);
    }});
    scene.key(Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(user.seen, QStringList("ImportDialog"));
    QVERIFY(scene.document().file().isEmpty());
    QCOMPARE(scene.document().displayName(), QStringLiteral("lights"));
    QVERIFY(scene.window.isWindowModified());
    QCOMPARE(scene.table().rowCount(), 1);
    QCOMPARE(scene.childText(1, "end"), QStringLiteral("1500"));
    QCOMPARE(scene.disagreement(), QString());
}

void tst_WindowDocuments::dropsAShow()
{
    WindowScene scene;
    const QString other = scene.write("b.show", crowdedShow(5));
    const BoxUser user;
    QVERIFY(drop(scene, {other}));
    QCOMPARE(user.seen, QStringList());
    QCOMPARE(scene.document().file(), other);
    QCOMPARE(scene.table().rowCount(), 5);
}

void tst_WindowDocuments::dropsASequence()
{
    WindowScene scene;
    const QString file = scene.write("lights.XSQ", sequence);
    QString shown;
    const BoxUser user({[&](QDialog &dialog) {
        const auto *name = dialog.findChild<QLineEdit *>(QStringLiteral("m_sequenceLineEdit"));
        shown = name ? name->text() : QString();
        QTest::keyClick(&dialog, Qt::Key_Escape);
    }});
    QVERIFY(drop(scene, {file}));
    QCOMPARE(user.seen, QStringList("ImportDialog"));
    QCOMPARE(QFileInfo(shown).fileName(), QStringLiteral("lights.XSQ"));
    QCOMPARE(scene.document().file(), scene.file);
}

void tst_WindowDocuments::otherDropsAreRefused()
{
    WindowScene scene;
    const BoxUser user;
    const QString other = scene.write("b.show", crowdedShow(5));
    QVERIFY(!drop(scene, {other, scene.file}));
    QMimeData words;
    words.setText(QStringLiteral("words"));
    QDragEnterEvent enter({10, 10}, Qt::CopyAction, &words, Qt::LeftButton, {});
    enter.ignore();
    QApplication::sendEvent(&scene.window, &enter);
    QVERIFY(!enter.isAccepted());
    QCOMPARE(scene.document().file(), scene.file);
}

void tst_WindowDocuments::dialogsOpenFromTheMenu()
{
    Edited scene;
    scene.trigger("renderAction");
    auto *render = scene.window.findChild<QDialog *>(QStringLiteral("RenderDialog"));
    QVERIFY(render);
    QVERIFY(render->isVisible());
    QVERIFY(!render->isModal());
    render->close();
    const BoxUser user({BoxUser::press(QMessageBox::Ok)});
    scene.action("aboutAction").trigger();
    QTest::qWait(10);
    QCOMPARE(user.seen.size(), 1);
}

QTEST_MAIN(tst_WindowDocuments)
#include "tst_WindowDocuments.moc"
