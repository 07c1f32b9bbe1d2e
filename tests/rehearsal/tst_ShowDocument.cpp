#include "Effect.h"
#include "EffectHost.h"
#include "EffectTypes.h"
#include "MetaEffect.h"
#include "Player.h"
#include "ShowDocument.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QFile>
#include <QPointer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using rehearsal::FileFault;
using rehearsal::Show;
using rehearsal::ShowDocument;
using rehearsal::StageGroup;
using Replacement = ShowDocument::Replacement;

namespace {

const QByteArray fog = "<effect type=\"Fog\"  build='old' ><property key=\"gid\">7</property>"
                       "<x:thick><![CDATA[<effect>]]></x:thick></effect>";

QByteArray property(const char *key, const QByteArray &text)
{
    return QByteArray("<property key=\"") + key + "\">" + text + "</property>\n";
}

QByteArray solid(int eid, int begin, int end)
{
    return "<effect type=\"Solid\">\n" + property("name", "Solid " + QByteArray::number(eid))
           + property("eid", QByteArray::number(eid)) + property("gid", "7")
           + property("begin", QByteArray::number(begin)) + property("end", QByteArray::number(end))
           + property("fadein", "400") + property("fadeout", "400") + "</effect>\n";
}

QByteArray showOf(const QByteArray &children)
{
    return "<show version=\"1\">\n<map>\n"
           "<light uid=\"1\" name=\"Left\" x=\"0\" y=\"0\"/>\n"
           "<light uid=\"2\" name=\"Right\" x=\"1\" y=\"0\"/>\n"
           "<group uid=\"7\" name=\"Both\" type=\"chasing\" lights=\"1 2\"/>\n"
           "</map>\n<effect type=\"Meta Effect\">\n"
           + children + "</effect>\n</show>\n";
}

const QByteArray twoChildren = showOf(solid(1, 0, 1000) + solid(2, 500, 2000));

MetaEffect &topOf(const ShowDocument &document)
{
    return *qobject_cast<MetaEffect *>(document.show()->effects().first());
}

/// In the list's order, from 0.
Effect &childOf(const ShowDocument &document, int index)
{
    return *topOf(document).getEffects().at(index);
}

void set(Effect &effect, const char *key, const QString &text)
{
    effect.setProperty(QString::fromLatin1(key), text);
}

QString textOf(const Effect &effect, const char *key)
{
    return effect.getPropertyString(QString::fromLatin1(key));
}

/// An edit in a turn of the event loop of its own.
void edit(ShowDocument &document, const char *key, const QString &text)
{
    set(childOf(document, 0), key, text);
    QCoreApplication::processEvents();
}

QByteArray contentOf(const QString &file)
{
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("(unreadable)");
}

bool write(const QString &file, const QByteArray &text)
{
    QFile output(file);
    return output.open(QIODevice::WriteOnly) && output.write(text) == text.size();
}

/// A document of its own, opened, with all that it tells.
struct Opened
{
    explicit Opened(const QByteArray &text = twoChildren)
    {
        FileFault fault;
        if (!folder.isValid() || !write(file, text) || !document.open(file, &fault))
            qFatal("the show cannot be opened: %s", qPrintable(fault.message()));
        for (QSignalSpy *spy : {&edited, &about, &replaced, &modified, &fileChanged, &history})
            spy->clear();
    }

    QTemporaryDir folder;
    QString file = folder.filePath(QStringLiteral("a.show"));
    ShowDocument document{allTypes()};
    QSignalSpy edited{&document, &ShowDocument::edited};
    QSignalSpy about{&document, &ShowDocument::showAboutToBeReplaced};
    QSignalSpy replaced{&document, &ShowDocument::showReplaced};
    QSignalSpy modified{&document, &ShowDocument::modifiedChanged};
    QSignalSpy fileChanged{&document, &ShowDocument::fileChanged};
    QSignalSpy history{&document, &ShowDocument::historyChanged};
};

/// How many steps can be undone; the document is back where it was.
int undoableSteps(ShowDocument &document)
{
    int steps = 0;
    while (document.undo())
        ++steps;
    for (int step = 0; step < steps; ++step)
        document.redo();
    return steps;
}

} // namespace

class tst_ShowDocument : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void newShowIsAGridOfNamedLights();
    void newShowHasGroupsOfRowsColumnsAllAndSingleLights();
    void newShowHasOneEmptyMetaEffect();
    void newShowIsUnmodifiedAndUntitled();
    void newShowWithoutItsEffectTypeIsAFault();

    void emptyDocumentHasNothing();
    void openedShowIsUnmodified();
    void replacementIsToldBeforeAndAfter();
    void replacedShowIsDeletedByTheEventLoop();
    void failedOpenLeavesTheDocumentAlone_data();
    void failedOpenLeavesTheDocumentAlone();
    void textIsModifiedFromTheStartAndKeepsItsFile();
    void adoptedShowIsModifiedAndUntitled();

    void saveWritesTheDefinition();
    void saveSeesWhatWasChangedInThisTurn();
    void saveWithoutAFileIsAFault();
    void saveOfNothingIsAFault();
    void fileThatAnotherProgramWroteIsNoticed();
    void saveAsTakesTheFile();
    void failedSaveLeavesTheDocumentModified();
    void failedSaveAsKeepsTheFile();

    void editIsSeenInTheNextTurn();
    void changesOfOneTurnAreOneEdit();
    void changeTakenBackWithinATurnIsNoEdit();
    void flushLooksNow();
    void editsOfTheReplacedShowAreNotSeen();

    void undoAndRedoGoThroughTheSteps();
    void undoSeesWhatWasChangedInThisTurn();
    void editAfterUndoDropsRedo();
    void undoBackToWhatWasSavedIsUnmodified();
    void editBackToWhatWasSavedIsUnmodified();
    void undoOfAnAddedADeletedAndAReplacedChild();
    void hundredAndTwentyStepsBackAndForth();
    void stepThatCannotBeBuiltIsAFault();
    void ruleSettingThatAppearsAsZeroIsNoEdit();
    void randomEditsAgreeWithAListOfTexts_data();
    void randomEditsAgreeWithAListOfTexts();
    void unknownTypesAreKeptByteForByte();

    void editsUnderOneTokenAreOneStep();
    void editsUnderOtherTokensAreOtherSteps();
    void editsUnderNoTokenAreStepsOfTheirOwn();
    void editBackToTheStartOfATokensStepRemovesIt();
    void tokensStepThatWasRemovedTakesNoOtherStepAlong();
    void saveUndoAndOtherEditsCompleteATokensStep();
    void editsUnderTwoTokensInOneTurnAreAStepOfTheirOwn();

    void playingIsNoEdit();
    void editWhilePlayingIsOneStepWithoutTracesOfPlaying();

    void settledChangesAreNoEdit();
    void settlingKeepsRedo();
    void settlingKeepsAModifiedDocumentModified();
    void whatIsWrittenWhileReplacedIsNoEdit();
    void stepsAreWalkedThoughRebuiltShowsDiffer();
    void savedStepIsUnmodifiedThoughRebuiltShowsDiffer();
    void changesThatNobodyToldAreSaved();
};

void tst_ShowDocument::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
}

// --- A new show ---

void tst_ShowDocument::newShowIsAGridOfNamedLights()
{
    ShowDocument document(allTypes());
    FileFault fault;
    QVERIFY2(document.startNew(&fault), qPrintable(fault.message()));
    const auto lights = document.show()->map().lights();
    QCOMPARE(lights.size(), 40u);
    for (int row = 1; row <= 5; ++row) {
        for (int column = 1; column <= 8; ++column) {
            const auto *light = lights[static_cast<std::size_t>((row - 1) * 8 + column - 1)];
            QCOMPARE(light->name(), QStringLiteral("Light %1.%2").arg(row).arg(column));
            QCOMPARE(light->place(), QPointF((column - 0.5) / 8, (row - 0.5) / 5));
        }
    }
}

void tst_ShowDocument::newShowHasGroupsOfRowsColumnsAllAndSingleLights()
{
    ShowDocument document(allTypes());
    FileFault fault;
    QVERIFY2(document.startNew(&fault), qPrintable(fault.message()));
    QMap<QString, const StageGroup *> groups;
    for (const StageGroup *group : document.show()->map().groups())
        groups.insert(group->name(), group);
    QCOMPARE(groups.size(), 2 + 5 + 8 + 40);
    const auto verify = [&groups](const QString &name, GroupTypeEnum type,
                                  const QStringList &lights) {
        QVERIFY2(groups.contains(name), qPrintable(name));
        QCOMPARE(groups[name]->groupType(), type);
        QStringList names;
        for (const auto *light : groups[name]->lights())
            names.append(light->name().remove(QStringLiteral("Light ")));
        QCOMPARE(names, lights);
    };
    QStringList all;
    for (int row = 1; row <= 5; ++row) {
        QStringList lights;
        for (int column = 1; column <= 8; ++column)
            lights.append(QStringLiteral("%1.%2").arg(row).arg(column));
        verify(QStringLiteral("Row %1").arg(row), ChasingGroup, lights);
        for (const QString &light : std::as_const(lights))
            verify(QStringLiteral("Light ") + light, LeafGroup, {light});
        all += lights;
    }
    for (int column = 1; column <= 8; ++column) {
        QStringList lights;
        for (int row = 1; row <= 5; ++row)
            lights.append(QStringLiteral("%1.%2").arg(row).arg(column));
        verify(QStringLiteral("Column %1").arg(column), SynchronizedGroup, lights);
    }
    verify(QStringLiteral("All"), SynchronizedGroup, all);
    verify(QStringLiteral("All in turn"), ChasingGroup, all);
}

void tst_ShowDocument::newShowHasOneEmptyMetaEffect()
{
    ShowDocument document(allTypes());
    FileFault fault;
    QVERIFY2(document.startNew(&fault), qPrintable(fault.message()));
    QCOMPARE(document.show()->effects().size(), 1);
    QCOMPARE(textOf(topOf(document), "name"), QStringLiteral("Show"));
    QVERIFY(topOf(document).getEffects().isEmpty());
}

void tst_ShowDocument::newShowIsUnmodifiedAndUntitled()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY2(opened.document.startNew(&fault), qPrintable(fault.message()));
    QVERIFY(!opened.document.isModified());
    QVERIFY(!opened.document.canUndo());
    QCOMPARE(opened.document.file(), QString());
    QCOMPARE(opened.document.displayName(), QStringLiteral("Untitled"));
}

void tst_ShowDocument::newShowWithoutItsEffectTypeIsAFault()
{
    ShowDocument document(&rehearsal::addHostTypes);
    FileFault fault;
    QVERIFY(!document.startNew(&fault));
    QVERIFY2(fault.message().contains(QStringLiteral("the effect type \"Meta Effect\" is missing")),
             qPrintable(fault.message()));
    QVERIFY(!document.show());
}

// --- Another show ---

void tst_ShowDocument::emptyDocumentHasNothing()
{
    ShowDocument document(allTypes());
    QVERIFY(!document.show());
    QVERIFY(!document.isModified());
    QVERIFY(!document.undo());
    QVERIFY(!document.redo());
    document.flush();
    document.settle();
    QCOMPARE(document.text(), QByteArray());
}

void tst_ShowDocument::openedShowIsUnmodified()
{
    Opened opened;
    QVERIFY(!opened.document.isModified());
    QVERIFY(!opened.document.canUndo());
    QVERIFY(!opened.document.canRedo());
    QCOMPARE(opened.document.file(), opened.file);
    QCOMPARE(opened.document.displayName(), QStringLiteral("a.show"));
    QCOMPARE(opened.document.text(), rehearsal::definitionText(*opened.document.show()));
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 0);
}

void tst_ShowDocument::replacementIsToldBeforeAndAfter()
{
    Opened opened;
    const QString other = opened.folder.filePath(QStringLiteral("b.show"));
    QVERIFY(write(other, twoChildren));
    const Show *before = opened.document.show();
    QStringList told;
    connect(&opened.document, &ShowDocument::showAboutToBeReplaced, this, [&](Replacement kind) {
        QCOMPARE(kind, Replacement::AnotherShow);
        QCOMPARE(opened.document.show(), before);
        QCOMPARE(textOf(childOf(opened.document, 0), "name"), QStringLiteral("Solid 1"));
        told.append(QStringLiteral("about"));
    });
    connect(&opened.document, &ShowDocument::showReplaced, this, [&](Replacement kind) {
        QCOMPARE(kind, Replacement::AnotherShow);
        QVERIFY(opened.document.show() != before);
        QCOMPARE(opened.document.file(), other);
        QVERIFY(!opened.document.isModified());
        told.append(QStringLiteral("replaced"));
    });
    FileFault fault;
    QVERIFY2(opened.document.open(other, &fault), qPrintable(fault.message()));
    QCOMPARE(told, QStringList({QStringLiteral("about"), QStringLiteral("replaced")}));
    QCOMPARE(opened.fileChanged.count(), 1);
}

void tst_ShowDocument::replacedShowIsDeletedByTheEventLoop()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    const QPointer<Effect> old = &childOf(opened.document, 0);
    QVERIFY(opened.document.undo());
    QVERIFY(old);
    QTRY_VERIFY(!old);
    QCOMPARE(opened.edited.count(), 1);
}

void tst_ShowDocument::failedOpenLeavesTheDocumentAlone_data()
{
    QTest::addColumn<bool>("isText");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("missing file") << false << QByteArray();
    QTest::newRow("no show") << false << QByteArray("<map/>");
    QTest::newRow("cut short") << false << twoChildren.first(twoChildren.size() / 2);
    QTest::newRow("text that is no show") << true << QByteArray("what?");
}

void tst_ShowDocument::failedOpenLeavesTheDocumentAlone()
{
    QFETCH(bool, isText);
    QFETCH(QByteArray, text);
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    const Show *before = opened.document.show();
    const QString other = opened.folder.filePath(QStringLiteral("b.show"));
    QVERIFY(text.isEmpty() || write(other, text));
    FileFault fault;
    QVERIFY(!(isText ? opened.document.openText(text, other, other, &fault)
                     : opened.document.open(other, &fault)));
    QCOMPARE(fault.file, other);
    QCOMPARE(opened.document.show(), before);
    QCOMPARE(opened.document.file(), opened.file);
    QVERIFY(opened.document.isModified());
    QVERIFY(opened.document.canUndo());
    QCOMPARE(opened.about.count(), 0);
}

void tst_ShowDocument::textIsModifiedFromTheStartAndKeepsItsFile()
{
    Opened opened;
    FileFault fault;
    QVERIFY(opened.document.openText(showOf(solid(5, 0, 10)), QStringLiteral("kept"), opened.file,
                                     &fault));
    QVERIFY(opened.document.isModified());
    QVERIFY(!opened.document.canUndo());
    QCOMPARE(opened.document.file(), opened.file);
    edit(opened.document, "level", QStringLiteral("0.5"));
    QVERIFY(opened.document.undo());
    QVERIFY(opened.document.isModified());
    QVERIFY2(opened.document.save(&fault), qPrintable(fault.message()));
    QVERIFY(!opened.document.isModified());
    QVERIFY(contentOf(opened.file).contains("Solid 5"));
}

void tst_ShowDocument::adoptedShowIsModifiedAndUntitled()
{
    Opened opened;
    FileFault fault;
    opened.document.adopt(
        rehearsal::parseShow(twoChildren, QStringLiteral("import"), allTypes(), &fault),
        QStringLiteral("Carol.show"));
    QVERIFY(opened.document.isModified());
    QCOMPARE(opened.document.file(), QString());
    QCOMPARE(opened.document.displayName(), QStringLiteral("Carol.show"));
    QVERIFY(!opened.document.save(&fault));
    edit(opened.document, "level", QStringLiteral("0.5"));
    QCOMPARE(opened.edited.count(), 1);
}

// --- The file ---

void tst_ShowDocument::saveWritesTheDefinition()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    QVERIFY(opened.document.isModified());
    FileFault fault;
    QVERIFY2(opened.document.save(&fault), qPrintable(fault.message()));
    QCOMPARE(contentOf(opened.file), rehearsal::definitionText(*opened.document.show()));
    QVERIFY(contentOf(opened.file).contains(">0.5<"));
    QVERIFY(!opened.document.isModified());
    QCOMPARE(opened.modified, QList<QVariantList>({{true}, {false}}));
    QCOMPARE(opened.fileChanged.count(), 0);
}

void tst_ShowDocument::saveSeesWhatWasChangedInThisTurn()
{
    Opened opened;
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY2(opened.document.save(&fault), qPrintable(fault.message()));
    QVERIFY(contentOf(opened.file).contains(">0.5<"));
    QVERIFY(opened.document.canUndo());
    QVERIFY(!opened.document.isModified());
}

void tst_ShowDocument::saveWithoutAFileIsAFault()
{
    ShowDocument document(allTypes());
    FileFault fault;
    QVERIFY(document.startNew(&fault));
    QVERIFY(!document.save(&fault));
    QCOMPARE(fault.message(), QStringLiteral("Untitled: the show has no file yet"));
}

void tst_ShowDocument::saveOfNothingIsAFault()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a.show"));
    ShowDocument document(allTypes());
    FileFault fault;
    QVERIFY(!document.saveAs(file, &fault));
    QVERIFY(!QFile::exists(file));
}

void tst_ShowDocument::fileThatAnotherProgramWroteIsNoticed()
{
    Opened opened;
    QVERIFY(!opened.document.isFileChanged());
    QTest::qSleep(20);
    QVERIFY(write(opened.file, twoChildren));
    QVERIFY(opened.document.isFileChanged());
    FileFault fault;
    QVERIFY(opened.document.save(&fault));
    QVERIFY(!opened.document.isFileChanged());
    QVERIFY(QFile::remove(opened.file));
    QVERIFY(!opened.document.isFileChanged());
}

void tst_ShowDocument::saveAsTakesTheFile()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    const QByteArray before = contentOf(opened.file);
    const QString other = opened.folder.filePath(QStringLiteral("b.show"));
    FileFault fault;
    QVERIFY2(opened.document.saveAs(other, &fault), qPrintable(fault.message()));
    QCOMPARE(opened.document.file(), other);
    QCOMPARE(opened.document.displayName(), QStringLiteral("b.show"));
    QVERIFY(!opened.document.isModified());
    QCOMPARE(opened.fileChanged.count(), 1);
    QCOMPARE(contentOf(opened.file), before);
    QCOMPARE(contentOf(other), opened.document.text());

    edit(opened.document, "level", QStringLiteral("0.25"));
    QVERIFY2(opened.document.save(&fault), qPrintable(fault.message()));
    QVERIFY(contentOf(other).contains(">0.25<"));
}

void tst_ShowDocument::failedSaveLeavesTheDocumentModified()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    QVERIFY(QFile::remove(opened.file));
    QVERIFY(QDir().mkdir(opened.file));
    FileFault fault;
    QVERIFY(!opened.document.save(&fault));
    QVERIFY(opened.document.isModified());
}

void tst_ShowDocument::failedSaveAsKeepsTheFile()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY(!opened.document.saveAs(opened.file + QStringLiteral("/b.show"), &fault));
    QCOMPARE(opened.document.file(), opened.file);
    QVERIFY(opened.document.isModified());
    QCOMPARE(opened.fileChanged.count(), 0);
}

// --- Edits ---

void tst_ShowDocument::editIsSeenInTheNextTurn()
{
    Opened opened;
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    QCOMPARE(opened.edited.count(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 1);
    QVERIFY(opened.document.isModified());
    QVERIFY(opened.document.canUndo());
    QVERIFY(opened.document.text().contains(">0.5<"));
    QCOMPARE(opened.history.count(), 1);
}

void tst_ShowDocument::changesOfOneTurnAreOneEdit()
{
    Opened opened;
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    set(childOf(opened.document, 1), "level", QStringLiteral("0.25"));
    set(topOf(opened.document), "name", QStringLiteral("Other"));
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 1);
    QCOMPARE(undoableSteps(opened.document), 1);
}

void tst_ShowDocument::changeTakenBackWithinATurnIsNoEdit()
{
    Opened opened;
    set(childOf(opened.document, 0), "name", QStringLiteral("Other"));
    set(childOf(opened.document, 0), "name", QStringLiteral("Solid 1"));
    delete opened.document.show()->factory().make(QStringLiteral("Solid"));
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 0);
    QVERIFY(!opened.document.canUndo());
}

void tst_ShowDocument::flushLooksNow()
{
    Opened opened;
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    opened.document.flush();
    QCOMPARE(opened.edited.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 1);
}

void tst_ShowDocument::editsOfTheReplacedShowAreNotSeen()
{
    Opened opened;
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY(opened.document.startNew(&fault));
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 0);
    QVERIFY(!opened.document.isModified());
    QVERIFY(!opened.document.canUndo());
}

// --- Undo ---

void tst_ShowDocument::undoAndRedoGoThroughTheSteps()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    edit(opened.document, "level", QStringLiteral("0.25"));
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("0.5"));
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("1"));
    QVERIFY(!opened.document.canUndo());
    QVERIFY(!opened.document.undo());
    QVERIFY(opened.document.redo());
    QVERIFY(opened.document.redo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("0.25"));
    QVERIFY(!opened.document.redo());
    QCOMPARE(opened.about.count(), 4);
    QCOMPARE(opened.replaced.count(), 4);
    for (const QVariantList &arguments : std::as_const(opened.replaced))
        QCOMPARE(arguments.first().value<Replacement>(), Replacement::SameShowRebuilt);
    QCOMPARE(opened.document.file(), opened.file);
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 2);
}

void tst_ShowDocument::undoSeesWhatWasChangedInThisTurn()
{
    Opened opened;
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("1"));
    QVERIFY(opened.document.redo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("0.5"));
}

void tst_ShowDocument::editAfterUndoDropsRedo()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    QVERIFY(opened.document.undo());
    QVERIFY(opened.document.canRedo());
    edit(opened.document, "level", QStringLiteral("0.75"));
    QVERIFY(!opened.document.canRedo());
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("1"));
}

void tst_ShowDocument::undoBackToWhatWasSavedIsUnmodified()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY(opened.document.save(&fault));
    edit(opened.document, "level", QStringLiteral("0.25"));
    QVERIFY(opened.document.isModified());
    QVERIFY(opened.document.undo());
    QVERIFY(!opened.document.isModified());
    QVERIFY(opened.document.undo());
    QVERIFY(opened.document.isModified());
    QVERIFY(opened.document.redo());
    QVERIFY(!opened.document.isModified());
    QCOMPARE(opened.modified,
             QList<QVariantList>({{true}, {false}, {true}, {false}, {true}, {false}}));
}

void tst_ShowDocument::editBackToWhatWasSavedIsUnmodified()
{
    Opened opened;
    edit(opened.document, "name", QStringLiteral("Other"));
    edit(opened.document, "name", QStringLiteral("Solid 1"));
    QVERIFY(!opened.document.isModified());
    QCOMPARE(undoableSteps(opened.document), 2);
}

void tst_ShowDocument::undoOfAnAddedADeletedAndAReplacedChild()
{
    Opened opened;
    ShowDocument &document = opened.document;
    const auto names = [&document] {
        QStringList all;
        for (int index = 0; index < topOf(document).getEffects().count(); ++index)
            all.append(textOf(childOf(document, index), "type") + u' '
                       + textOf(childOf(document, index), "name"));
        return all.join(u',');
    };
    const QString start = QStringLiteral("Solid Solid 1,Solid Solid 2");
    QCOMPARE(names(), start);

    topOf(document).deleteEffect(&childOf(document, 0));
    QCoreApplication::processEvents();
    const QString deleted = QStringLiteral("Solid Solid 2");
    QCOMPARE(names(), deleted);

    Effect *added = document.show()->factory().make(QStringLiteral("Pulse"));
    set(*added, "name", QStringLiteral("New"));
    topOf(document).addChild(added);
    QCoreApplication::processEvents();
    const QString grown = QStringLiteral("Solid Solid 2,Pulse New");
    QCOMPARE(names(), grown);

    QString text;
    QTextStream stream(&text);
    childOf(document, 0).save(stream);
    stream.flush();
    text.replace(QStringLiteral("type=\"Solid\""), QStringLiteral("type=\"Twinkle\""));
    topOf(document).deleteEffect(&childOf(document, 0));
    topOf(document).addChild(document.show()->factory().createEffect(text));
    QCoreApplication::processEvents();
    const QString replaced = QStringLiteral("Pulse New,Twinkle Solid 2");
    QCOMPARE(names(), replaced);

    QCOMPARE(opened.edited.count(), 3);
    for (const QString &expected : {grown, deleted, start}) {
        QVERIFY(document.undo());
        QCOMPARE(names(), expected);
    }
    QVERIFY(!document.isModified());
    for (const QString &expected : {deleted, grown, replaced}) {
        QVERIFY(document.redo());
        QCOMPARE(names(), expected);
    }
}

void tst_ShowDocument::hundredAndTwentyStepsBackAndForth()
{
    Opened opened;
    QList<QByteArray> texts{opened.document.text()};
    for (int step = 1; step <= 120; ++step) {
        edit(opened.document, "name", QString::number(step));
        texts.append(opened.document.text());
    }
    for (int step = 119; step >= 0; --step) {
        QVERIFY(opened.document.undo());
        QCOMPARE(opened.document.text(), texts[step]);
    }
    QVERIFY(!opened.document.canUndo());
    QVERIFY(!opened.document.isModified());
    for (int step = 1; step <= 120; ++step) {
        QVERIFY(opened.document.redo());
        QCOMPARE(opened.document.text(), texts[step]);
    }
    QVERIFY(!opened.document.canRedo());
}

void tst_ShowDocument::stepThatCannotBeBuiltIsAFault()
{
    QByteArray nested;
    for (int depth = 0; depth < 255; ++depth)
        nested = "<effect type=\"Meta Effect\">\n" + nested + "</effect>\n";
    Opened opened(showOf(nested));
    Effect *innermost = &topOf(opened.document);
    for (int depth = 0; depth < 255; ++depth)
        innermost = EffectHost::nested(*innermost).front();
    auto &holder = *qobject_cast<MetaEffect *>(innermost);
    holder.addChild(opened.document.show()->factory().make(QStringLiteral("Solid")));
    QCoreApplication::processEvents();
    holder.deleteEffect(EffectHost::nested(holder).front());
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 2);

    const Show *before = opened.document.show();
    const QByteArray text = opened.document.text();
    FileFault fault;
    QVERIFY(!opened.document.undo(&fault));
    QVERIFY2(fault.what.contains(QStringLiteral("deeper than 256")), qPrintable(fault.message()));
    QVERIFY(!opened.document.undo());
    QCOMPARE(opened.document.show(), before);
    QCOMPARE(opened.document.text(), text);
    QVERIFY(!opened.document.canRedo());
    QCOMPARE(opened.about.count(), 0);
}

// As when an editor shows a rule and writes back what it shows.
void tst_ShowDocument::ruleSettingThatAppearsAsZeroIsNoEdit()
{
    Opened opened(showOf(solid(1, 0, 1000)));
    ShowDocument &document = opened.document;
    edit(document, "name", "other");
    QVERIFY(document.undo());
    set(childOf(document, 0), "startlinkoffset", "0");
    set(childOf(document, 0), "endlinkeid", "0");
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 1);
    QVERIFY(!document.isModified());
    QVERIFY(document.canRedo());
    QVERIFY(document.text().contains("<property key=\"endlinkeid\">0</property>"));

    set(childOf(document, 0), "endlinkeid", "1");
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 2);
    QVERIFY(document.isModified());
    set(childOf(document, 0), "name", "0");
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 3);
}

void tst_ShowDocument::randomEditsAgreeWithAListOfTexts_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void tst_ShowDocument::randomEditsAgreeWithAListOfTexts()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    Opened opened(showOf(solid(1, 0, 1000) + fog + solid(2, 10, 900)));
    ShowDocument &document = opened.document;
    QList<QByteArray> texts{document.text()};
    qsizetype position = 0;
    const auto randomEdit = [&] {
        MetaEffect &top = topOf(document);
        const int count = top.getEffects().count();
        Effect *child = count > 0 ? &childOf(document, random.bounded(count)) : nullptr;
        const QString number = QString::number(random.bounded(4));
        switch (child ? random.bounded(6) : 0) {
        case 0: {
            const QStringList types = document.show()->factory().typeNames();
            Effect *added = document.show()->factory().make(
                types.at(random.bounded(static_cast<int>(types.size()))));
            set(*added, "end", number);
            top.addChild(added);
            break;
        }
        case 1: top.deleteEffect(child); break;
        case 2: set(*child, "name", number); break;
        case 3: set(*child, "priority", number); break;
        case 4: set(*child, "transparency", number); break;
        default: set(*child, "end", number);
        }
        top.init(); // the order and the end as they are when the show is built
    };
    for (int action = 0; action < 150; ++action) {
        switch (random.bounded(5)) {
        case 0:
        case 1:
            QCOMPARE(document.undo(), position > 0);
            position -= position > 0 ? 1 : 0;
            break;
        case 2:
            QCOMPARE(document.redo(), position + 1 < texts.size());
            position += position + 1 < texts.size() ? 1 : 0;
            break;
        default:
            randomEdit();
            QCoreApplication::processEvents();
            const QByteArray text = rehearsal::definitionText(*document.show());
            if (text == texts[position])
                break;
            texts.resize(position + 1);
            texts.append(text);
            ++position;
        }
        QCOMPARE(rehearsal::definitionText(*document.show()), texts[position]);
        QCOMPARE(document.text(), texts[position]);
        QCOMPARE(document.canUndo(), position > 0);
        QCOMPARE(document.canRedo(), position + 1 < texts.size());
        QCOMPARE(document.isModified(), texts[position] != texts[0]);
    }
}

void tst_ShowDocument::unknownTypesAreKeptByteForByte()
{
    Opened opened(showOf(fog + solid(1, 0, 1000)));
    ShowDocument &document = opened.document;
    QCOMPARE(document.show()->unknownTypes().size(), 1u);
    QVERIFY(document.text().contains(fog));
    set(topOf(document), "name", QStringLiteral("Other"));
    QCoreApplication::processEvents();
    QVERIFY(document.undo());
    QCOMPARE(document.show()->unknownTypes().size(), 1u);
    QVERIFY(document.text().contains(fog));
    QVERIFY(document.redo());
    FileFault fault;
    QVERIFY(document.save(&fault));
    QVERIFY(contentOf(opened.file).contains(fog));
}

// --- Steps of several edits ---

void tst_ShowDocument::editsUnderOneTokenAreOneStep()
{
    Opened opened;
    edit(opened.document, "name", QStringLiteral("before"));
    opened.document.setStepToken(7);
    for (const char *text : {"n", "na", "nam"})
        edit(opened.document, "name", QString::fromLatin1(text));
    QCOMPARE(opened.edited.count(), 4);
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "name"), QStringLiteral("before"));
    QVERIFY(opened.document.redo());
    QCOMPARE(textOf(childOf(opened.document, 0), "name"), QStringLiteral("nam"));
}

void tst_ShowDocument::editsUnderOtherTokensAreOtherSteps()
{
    Opened opened;
    for (const quint64 token : {7u, 8u, 7u}) {
        opened.document.setStepToken(token);
        edit(opened.document, "name", QString::number(token));
        edit(opened.document, "name", QString::number(token + 10));
    }
    QCOMPARE(undoableSteps(opened.document), 3);
}

void tst_ShowDocument::editsUnderNoTokenAreStepsOfTheirOwn()
{
    Opened opened;
    edit(opened.document, "name", QStringLiteral("a"));
    edit(opened.document, "name", QStringLiteral("b"));
    opened.document.setStepToken(7);
    edit(opened.document, "name", QStringLiteral("c"));
    opened.document.setStepToken(0);
    edit(opened.document, "name", QStringLiteral("d"));
    opened.document.setStepToken(7);
    edit(opened.document, "name", QStringLiteral("e"));
    QCOMPARE(undoableSteps(opened.document), 5);
}

void tst_ShowDocument::editBackToTheStartOfATokensStepRemovesIt()
{
    Opened opened;
    opened.document.setStepToken(7);
    edit(opened.document, "name", QStringLiteral("Solid 12"));
    edit(opened.document, "name", QStringLiteral("Solid 1"));
    QVERIFY(!opened.document.canUndo());
    QVERIFY(!opened.document.canRedo());
    QVERIFY(!opened.document.isModified());
}

void tst_ShowDocument::tokensStepThatWasRemovedTakesNoOtherStepAlong()
{
    Opened opened;
    edit(opened.document, "name", QStringLiteral("first"));
    opened.document.setStepToken(7);
    edit(opened.document, "name", QStringLiteral("second"));
    edit(opened.document, "name", QStringLiteral("first"));
    edit(opened.document, "name", QStringLiteral("third"));
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "name"), QStringLiteral("first"));
    QVERIFY(opened.document.undo());
    QCOMPARE(textOf(childOf(opened.document, 0), "name"), QStringLiteral("Solid 1"));
}

void tst_ShowDocument::saveUndoAndOtherEditsCompleteATokensStep()
{
    Opened opened;
    opened.document.setStepToken(7);
    edit(opened.document, "name", QStringLiteral("a"));
    FileFault fault;
    QVERIFY(opened.document.save(&fault));
    edit(opened.document, "name", QStringLiteral("b"));
    QCOMPARE(undoableSteps(opened.document), 2);
    edit(opened.document, "name", QStringLiteral("c"));
    QCOMPARE(undoableSteps(opened.document), 3);
    QVERIFY(opened.document.undo());
    QVERIFY(opened.document.undo());
    QVERIFY(!opened.document.isModified());
}

void tst_ShowDocument::editsUnderTwoTokensInOneTurnAreAStepOfTheirOwn()
{
    Opened opened;
    opened.document.setStepToken(7);
    edit(opened.document, "name", QStringLiteral("a"));
    set(childOf(opened.document, 0), "name", QStringLiteral("b"));
    opened.document.setStepToken(8);
    edit(opened.document, "level", QStringLiteral("0.5"));
    edit(opened.document, "level", QStringLiteral("0.25"));
    QCOMPARE(undoableSteps(opened.document), 3);
}

// --- Playing ---

void tst_ShowDocument::playingIsNoEdit()
{
    Opened opened;
    ShowDocument &document = opened.document;
    set(topOf(document), "priority", QStringLiteral("3"));
    set(topOf(document), "transparency", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY(document.save(&fault));
    opened.edited.clear();
    const QByteArray before = document.text();
    rehearsal::Player player(document.show()->map(), document.show()->effects());
    player.start();
    bool hasFaded = false;
    for (int ms = 0; ms < 2500; ms += 40) {
        player.frame(QTime(0, 0).addMSecs(ms), 0);
        QCoreApplication::processEvents();
        hasFaded = hasFaded || textOf(childOf(document, 0), "transparency") != u"0";
    }
    player.stop();
    QCoreApplication::processEvents();
    QVERIFY(hasFaded);
    QCOMPARE(opened.edited.count(), 0);
    QVERIFY(!document.isModified());
    QVERIFY(document.save(&fault));
    QCOMPARE(contentOf(opened.file), before);
}

void tst_ShowDocument::editWhilePlayingIsOneStepWithoutTracesOfPlaying()
{
    Opened opened;
    ShowDocument &document = opened.document;
    QByteArray expected = document.text();
    rehearsal::Player player(document.show()->map(), document.show()->effects());
    player.start();
    for (int ms = 0; ms < 2000; ms += 40) {
        player.frame(QTime(0, 0).addMSecs(ms), 0);
        if (ms == 200)
            set(childOf(document, 1), "name", QStringLiteral("Edited"));
        QCoreApplication::processEvents();
    }
    QCOMPARE(opened.edited.count(), 1);
    QCOMPARE(document.text(), expected.replace("Solid 2", "Edited"));
    QVERIFY(document.undo());
    QVERIFY(!document.isModified());
}

// --- Settling ---

void tst_ShowDocument::settledChangesAreNoEdit()
{
    Opened opened;
    set(childOf(opened.document, 0), "shown", QStringLiteral("1"));
    opened.document.settle();
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 0);
    QVERIFY(!opened.document.canUndo());
    QVERIFY(!opened.document.isModified());

    edit(opened.document, "name", QStringLiteral("Other"));
    QCOMPARE(opened.edited.count(), 1);
    QVERIFY(opened.document.isModified());
    edit(opened.document, "name", QStringLiteral("Solid 1"));
    QVERIFY(!opened.document.isModified());
}

void tst_ShowDocument::settlingKeepsRedo()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    QVERIFY(opened.document.undo());
    set(childOf(opened.document, 0), "shown", QStringLiteral("1"));
    opened.document.settle();
    QCoreApplication::processEvents();
    QVERIFY(!opened.document.isModified());
    QVERIFY(opened.document.canRedo());
    QVERIFY(opened.document.redo());
    QCOMPARE(textOf(childOf(opened.document, 0), "level"), QStringLiteral("0.5"));
}

void tst_ShowDocument::settlingKeepsAModifiedDocumentModified()
{
    Opened opened;
    edit(opened.document, "level", QStringLiteral("0.5"));
    set(childOf(opened.document, 0), "shown", QStringLiteral("1"));
    opened.document.settle();
    QVERIFY(opened.document.isModified());
    QCOMPARE(undoableSteps(opened.document), 1);
}

void tst_ShowDocument::whatIsWrittenWhileReplacedIsNoEdit()
{
    Opened opened;
    connect(&opened.document, &ShowDocument::showReplaced, this,
            [&] { set(childOf(opened.document, 0), "shown", QStringLiteral("1")); });
    FileFault fault;
    QVERIFY(opened.document.open(opened.file, &fault));
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 0);
    QVERIFY(!opened.document.isModified());
    QVERIFY(opened.document.text().contains("shown"));

    edit(opened.document, "level", QStringLiteral("0.5"));
    QVERIFY(opened.document.undo());
    QCoreApplication::processEvents();
    QCOMPARE(opened.edited.count(), 1);
    QVERIFY(!opened.document.isModified());
    QVERIFY(opened.document.canRedo());
    QVERIFY(opened.document.text().contains("shown"));
}

// A form that writes back what it shows does so after every replacement, each time something else.
void tst_ShowDocument::stepsAreWalkedThoughRebuiltShowsDiffer()
{
    Opened opened;
    int filled = 0;
    connect(&opened.document, &ShowDocument::showReplaced, this, [&] {
        set(childOf(opened.document, 0), "shown", QString::number(++filled));
        opened.document.settle();
    });
    opened.document.setStepToken(7);
    for (int step = 1; step <= 5; ++step) {
        opened.document.setStepToken(static_cast<quint64>(step));
        edit(opened.document, "level", QStringLiteral("0.1"));
        edit(opened.document, "level", QStringLiteral("0.%1").arg(step + 1));
    }
    for (int round = 0; round < 3; ++round) {
        for (int step = 4; step >= 0; --step) {
            QVERIFY(opened.document.undo());
            QCoreApplication::processEvents();
            QCOMPARE(textOf(childOf(opened.document, 0), "level"),
                     step == 0 ? QStringLiteral("1") : QStringLiteral("0.%1").arg(step + 1));
            QCOMPARE(opened.document.isModified(), step != 0);
        }
        QVERIFY(!opened.document.canUndo());
        for (int step = 1; step <= 5; ++step) {
            QVERIFY(opened.document.redo());
            QCoreApplication::processEvents();
            QCOMPARE(textOf(childOf(opened.document, 0), "level"),
                     QStringLiteral("0.%1").arg(step + 1));
        }
        QVERIFY(!opened.document.canRedo());
    }
    QCOMPARE(filled, 30);

    opened.document.setStepToken(9);
    edit(opened.document, "level", QStringLiteral("0.01"));
    edit(opened.document, "level", QStringLiteral("0.6"));
    QCOMPARE(undoableSteps(opened.document), 5);
}

void tst_ShowDocument::savedStepIsUnmodifiedThoughRebuiltShowsDiffer()
{
    Opened opened;
    int filled = 0;
    connect(&opened.document, &ShowDocument::showReplaced, this,
            [&] { set(childOf(opened.document, 0), "shown", QString::number(++filled)); });
    edit(opened.document, "level", QStringLiteral("0.5"));
    edit(opened.document, "level", QStringLiteral("0.25"));
    QVERIFY(opened.document.undo());
    FileFault fault;
    QVERIFY(opened.document.save(&fault));
    QVERIFY(opened.document.redo());
    QVERIFY(opened.document.isModified());
    QVERIFY(opened.document.undo());
    QVERIFY(!opened.document.isModified());
    QVERIFY(opened.document.undo());
    QVERIFY(opened.document.isModified());
}

void tst_ShowDocument::changesThatNobodyToldAreSaved()
{
    Opened opened;
    opened.document.show()->map().setWatch(nullptr);
    set(childOf(opened.document, 0), "level", QStringLiteral("0.5"));
    FileFault fault;
    QVERIFY(opened.document.save(&fault));
    QVERIFY(contentOf(opened.file).contains(">0.5<"));
    QVERIFY(!opened.document.isModified());
}

QTEST_GUILESS_MAIN(tst_ShowDocument)
#include "tst_ShowDocument.moc"
