#include "ClipboardScene.h"
#include "EffectHost.h"
#include "EffectPictures.h"

#include <QLoggingCategory>
#include <QRegularExpression>

using namespace meta;

namespace {

// --- Witnesses ---

/// Tells what happens to an open editor, step by step: "saved" and "deleted" of the children it
/// made, "row removed", "refreshed" when nothing is selected, "ready" when the meta effect is made
/// ready.
class Journal
{
public:
    explicit Journal(OpenStage &stage)
        : m_stage(stage), m_sensor(*stage.form().m_startFixedLineEdit)
    {
        // Blanking the panel shows in a field that is filled again after every step.
        m_sensor.disconnect(&stage.effect);
        QObject::connect(&m_sensor, &QLineEdit::textChanged, &m_listener, [this](const auto &text) {
            if (text.isEmpty())
                note(QStringLiteral("refreshed"));
        });
        QObject::connect(stage.table().model(), &QAbstractItemModel::rowsRemoved, &m_listener,
                         [this] { note(QStringLiteral("row removed")); });
        EffectHost::setObserver(stage.effect, [this](const QString &key, const QString &) {
            if (key == u"begin" && m_stage.effect.text("begin") == u"0")
                note(QStringLiteral("ready"));
        });
        fill();
        lines.clear();
    }
    ~Journal() { EffectHost::setObserver(m_stage.effect, {}); }
    Q_DISABLE_COPY_MOVE(Journal)

    /// Watches the end of a child.
    void watch(StubEffect &child)
    {
        child.whileDying = [this](StubEffect &dying) {
            note(QStringLiteral("%1 deleted from among %2")
                     .arg(dying.text("eid"), m_stage.eids().join(u' ')));
            m_stage.effect.with("begin", 7); // making ready sets it to 0 again
        };
    }
    void note(const QString &line)
    {
        lines.append(line);
        fill();
    }

    QStringList lines;

private:
    void fill()
    {
        const QSignalBlocker blocker(m_sensor);
        m_sensor.setText(QStringLiteral("9"));
    }

    OpenStage &m_stage;
    QLineEdit &m_sensor;
    QObject m_listener;
};

/// A child that tells when it is saved and when its parameters are asked for.
class TellingStub final : public WidgetStub
{
public:
    using WidgetStub::WidgetStub;

    void internalSave(QTextStream &) override { tell("saved"); }
    QWidget *internalGetEffectWidget() override
    {
        tell("shown");
        return WidgetStub::internalGetEffectWidget();
    }

    Journal *listener = nullptr; ///< not owned; may be null

private:
    void tell(const char *what)
    {
        if (listener)
            listener->note(text("eid") + u' ' + QString::fromLatin1(what));
    }
};

} // namespace

/// Children cut and deleted in an open editor, step by step.
class tst_ChildRemoval : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // Removing.
    void cuttingGoesStepByStep();
    void deletingTheSelectedChildGoesStepByStep_data();
    void deletingTheSelectedChildGoesStepByStep();
    void deletingOneChildGoesStepByStep();
    void deletingAnotherChildShowsTheSelectedOneAnewFirst();
    void deletingWithTwoSelectedRowsOnlyRefreshesAndMakesReady_data();
    void deletingWithTwoSelectedRowsOnlyRefreshesAndMakesReady();
    void cuttingAnEmptySelectionStillRefreshes();
    void removalLeavesTheEffectDirty_data();
    void removalLeavesTheEffectDirty();
    void removalRestartsTheNumbersOfNewNames_data() { addRemovals(); }
    void removalRestartsTheNumbersOfNewNames();
    void eidOfARemovedChildIsNotGivenAgain_data() { addRemovals(); }
    void eidOfARemovedChildIsNotGivenAgain();
    void selectedRowOfASortedTableIsRemoved_data() { addRemovals(); }
    void selectedRowOfASortedTableIsRemoved();
    void allChildrenAreRemovedOneByOne_data() { addRemovals(); }
    void allChildrenAreRemovedOneByOne();
    void endLinkedToARemovedChildIsFixedAt0AtTheNextPass_data() { addRemovals(); }
    void endLinkedToARemovedChildIsFixedAt0AtTheNextPass();
    void ownEndShrinksWithTheLongestChild_data() { addRemovals(); }
    void ownEndShrinksWithTheLongestChild();
    void childMayTurnToItsParentWhileDying_data() { addRemovals(); }
    void childMayTurnToItsParentWhileDying();
    void childThatPlaysMayGo_data() { addRemovals(); }
    void childThatPlaysMayGo();
    void childWithItsEditorInTheFormMayGo_data() { addRemovals(); }
    void childWithItsEditorInTheFormMayGo();
    void buttonDeletesTheChildInWhoseCellTheUserTypes();
    void removalWhileTheUserIsAtSomething_data();
    void removalWhileTheUserIsAtSomething();
};

void tst_ChildRemoval::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_ChildRemoval::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- Removing ---

namespace {

TellingStub *addTelling(OpenStage &stage, quint32 eid)
{
    auto *child = new TellingStub(&stage.map, QStringLiteral("Stub"), eid);
    stage.effect.addChild(child);
    return child;
}

} // namespace

void tst_ChildRemoval::cuttingGoesStepByStep()
{
    OpenStage stage;
    TellingStub *child = addTelling(stage, 8); // and it is selected
    Journal journal(stage);
    journal.watch(*child);
    child->listener = &journal;

    stage.effect.handleCutEffect();

    QCOMPARE(journal.lines,
             QStringList({"8 saved", "refreshed", "row removed", "8 deleted from among 1 2 3",
                          "refreshed", "ready", "refreshed"}));
    QVERIFY(stage.effect.ownDirty());
    QVERIFY(clipboardText().startsWith(entry));
}

void tst_ChildRemoval::deletingTheSelectedChildGoesStepByStep_data()
{
    QTest::addColumn<int>("removal");

    QTest::newRow("button") << int(Button);
    QTest::newRow("slot, delete") << int(SlotDelete);
    QTest::newRow("slot, delete selected") << int(SlotDeleteSelected);
}

void tst_ChildRemoval::deletingTheSelectedChildGoesStepByStep()
{
    QFETCH(int, removal);
    OpenStage stage;
    stage.selectEid(2);
    Journal journal(stage);
    journal.watch(*stage.stub(2));

    QVERIFY(remove(stage, removal));

    QCOMPARE(journal.lines, QStringList({"refreshed", "row removed", "2 deleted from among 1 3",
                                         "refreshed", "ready"}));
    QVERIFY(stage.effect.ownDirty());
}

// Its row is the caller's business.
void tst_ChildRemoval::deletingOneChildGoesStepByStep()
{
    OpenStage stage;
    stage.selectEid(2);
    Journal journal(stage);
    journal.watch(*stage.stub(2));

    stage.effect.deleteEffect(stage.stub(2));

    QCOMPARE(journal.lines, QStringList({"2 deleted from among 1 3", "refreshed", "ready"}));
    QCOMPARE(stage.selectedEids(), QStringList());
    QVERIFY(stage.effect.ownDirty());
}

void tst_ChildRemoval::deletingAnotherChildShowsTheSelectedOneAnewFirst()
{
    OpenStage stage;
    TellingStub *selected = addTelling(stage, 8);
    Journal journal(stage);
    journal.watch(*stage.stub(1));
    selected->listener = &journal;

    stage.effect.deleteEffect(stage.stub(1));

    QCOMPARE(journal.lines, QStringList({"1 deleted from among 2 3 8", "8 shown", "ready"}));
    QVERIFY(stage.effect.ownDirty());
    selected->listener = nullptr;
    QCOMPARE(stage.selectedEids(), QStringList({"8"}));
}

void tst_ChildRemoval::deletingWithTwoSelectedRowsOnlyRefreshesAndMakesReady_data()
{
    deletingTheSelectedChildGoesStepByStep_data();
}

void tst_ChildRemoval::deletingWithTwoSelectedRowsOnlyRefreshesAndMakesReady()
{
    QFETCH(int, removal);
    OpenStage stage;
    stage.selectRows(0, 1);
    stage.effect.with("begin", 7);
    stage.effect.setOwnDirty(false);
    const QStringList before = savedChildren(stage.effect);
    const Journal journal(stage);

    QVERIFY(remove(stage, removal));

    QCOMPARE(journal.lines, QStringList({"refreshed", "ready"}));
    QCOMPARE(savedChildren(stage.effect), before);
    QCOMPARE(stage.table().rowCount(), 3);
    QVERIFY(stage.effect.ownDirty());
}

void tst_ChildRemoval::cuttingAnEmptySelectionStillRefreshes()
{
    OpenStage stage;
    stage.effect.with("begin", 7);
    stage.effect.setOwnDirty(false);
    const Journal journal(stage);

    stage.effect.handleCutEffect();

    QCOMPARE(journal.lines, QStringList({"refreshed"}));
    QCOMPARE(stage.effect.text("begin"), QStringLiteral("7"));
    QVERIFY(!stage.effect.ownDirty());
}

void tst_ChildRemoval::removalLeavesTheEffectDirty_data()
{
    QTest::addColumn<int>("removal");
    QTest::addColumn<bool>("isDirtyBefore");

    for (const int removal :
         {Button, MenuDelete, MenuCut, SlotDelete, SlotDeleteSelected, SlotCut}) {
        QTest::addRow("clean, way %d", removal) << removal << false;
        QTest::addRow("dirty, way %d", removal) << removal << true;
    }
}

void tst_ChildRemoval::removalLeavesTheEffectDirty()
{
    QFETCH(int, removal);
    QFETCH(bool, isDirtyBefore);
    OpenStage stage;
    stage.selectEid(2);
    stage.effect.setOwnDirty(isDirtyBefore);

    QVERIFY(remove(stage, removal));

    QVERIFY(stage.effect.ownDirty());
    for (const quint32 eid : {1, 3})
        stage.stub(eid)->setDirty(false);
    QVERIFY(stage.effect.isDirty());
}

void tst_ChildRemoval::removalRestartsTheNumbersOfNewNames()
{
    QFETCH(int, removal);
    OpenStage stage;
    const auto addNew = [&stage] {
        EditorStage::pickingGroup(QStringLiteral("Roof"), [&stage] {
            QTest::mouseClick(stage.form().m_newEffectButton, Qt::LeftButton);
        });
        return stage.table().text(stage.table().rowCount() - 1, NameColumn);
    };
    QCOMPARE(addNew(), QStringLiteral("Effect 4"));
    QCOMPARE(addNew(), QStringLiteral("Effect 5"));
    stage.selectEid(2);

    QVERIFY(remove(stage, removal));

    QCOMPARE(addNew(), QStringLiteral("Effect 5"));
    QCOMPARE(addNew(), QStringLiteral("Effect 6"));
}

void tst_ChildRemoval::eidOfARemovedChildIsNotGivenAgain()
{
    QFETCH(int, removal);
    OpenStage stage;
    const QString text = entryOf(*stage.stub(1));
    stage.selectEid(3);

    QVERIFY(remove(stage, removal));
    putOnClipboard(text);
    stage.effect.handlePasteEffect();

    QCOMPARE(stage.eids(), QStringList({"1", "2", "4"}));
}

void tst_ChildRemoval::selectedRowOfASortedTableIsRemoved()
{
    QFETCH(int, removal);
    OpenStage stage;
    stage.clickHeader(EndColumn);
    stage.clickHeader(EndColumn);
    QCOMPARE(stage.column(EidColumn), QStringList({"2", "1", "3"}));
    stage.click(1, NameColumn);
    const QString text = entryOf(*stage.stub(1));

    QVERIFY(remove(stage, removal));

    QCOMPARE(stage.column(EidColumn), QStringList({"2", "3"}));
    QCOMPARE(stage.eids(), QStringList({"2", "3"}));
    QCOMPARE(clipboardText(), isCut(removal) ? text : QStringLiteral("before"));
    checkNothingIsSelected(stage);
}

void tst_ChildRemoval::allChildrenAreRemovedOneByOne()
{
    QFETCH(int, removal);
    OpenStage stage;
    int deletions = 0;
    for (const quint32 eid : {1, 2, 3})
        stage.stub(eid)->deletions = &deletions;

    for (const quint32 eid : {2, 3, 1}) {
        stage.selectEid(eid);
        QVERIFY(remove(stage, removal));
        checkNothingIsSelected(stage);
    }

    QCOMPARE(deletions, 3);
    QCOMPARE(stage.table().rowCount(), 0);
    QCOMPARE(stage.effect.text("end"), QStringLiteral("0"));
}

void tst_ChildRemoval::endLinkedToARemovedChildIsFixedAt0AtTheNextPass()
{
    QFETCH(int, removal);
    OpenStage stage;
    StubEffect *dependant = stage.stub(3);
    dependant->with("endtype", 1).with("endlinkeid", 1).with("endlinkoffset", 500);
    stage.effect.updateEffectTimes();
    QCOMPARE(dependant->endTime(), 4500u);
    stage.selectEid(1);

    QVERIFY(remove(stage, removal));

    QCOMPARE(dependant->endTime(), 4500u);
    QCOMPARE(dependant->text("endtype"), QStringLiteral("1"));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("5000")); // of child 2, likewise

    stage.effect.updateEffectTimes();

    QCOMPARE(dependant->text("endtype"), QStringLiteral("0"));
    QCOMPARE(dependant->text("endfixedtime"), QStringLiteral("0"));
    QCOMPARE(stage.row(stage.rowOf(3)).mid(StartColumn, 2), QStringList({"1", "1"}));
    QVERIFY(stage.table().pixmap(stage.rowOf(3), EndColumn).isNull());
    CHECK_SANITY(stage);
}

void tst_ChildRemoval::ownEndShrinksWithTheLongestChild()
{
    QFETCH(int, removal);
    OpenStage stage;
    QCOMPARE(stage.effect.text("end"), QStringLiteral("5000"));
    stage.selectEid(2);

    QVERIFY(remove(stage, removal));

    QCOMPARE(stage.effect.text("end"), QStringLiteral("4000"));
    QCOMPARE(stage.effect.getCycleTime(), 4000ul);
}

void tst_ChildRemoval::childMayTurnToItsParentWhileDying()
{
    QFETCH(int, removal);
    OpenStage stage;
    stage.selectEid(2);
    QStringList answers;
    stage.stub(2)->whileDying = [&](StubEffect &dying) {
        OpenMetaEffect &parent = stage.effect;
        answers.append(parent.getEffect(2) ? "found" : "not found");
        answers.append(stage.selectedEids().join(u' '));
        answers.append(parent.legalToLink(parent.getEffect(1), parent.getEffect(3)) ? "legal" : "");
        parent.updateEffectTimes();
        parent.refreshWidgets();
        parent.removeFromTable(2);
        parent.handleDeleteEffect();
        dying.setCycleTime(9000);
        answers.append(QString::number(parent.getRow(2)));
    };

    QVERIFY(remove(stage, removal));

    QCOMPARE(answers, QStringList({"not found", "", "legal", "-1"}));
    QCOMPARE(stage.column(EidColumn), QStringList({"3", "1"}));
    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
    checkNothingIsSelected(stage);
}

void tst_ChildRemoval::childThatPlaysMayGo()
{
    QFETCH(int, removal);
    OpenStage stage;
    stage.effect.with("loop", "0");
    const auto playing = [&stage] {
        QStringList eids;
        for (const quint32 eid : {1, 2, 3}) {
            const int row = stage.rowOf(eid);
            if (row >= 0
                && stage.table().pixmap(row, NameColumn).cacheKey()
                       == pictures::closedCircle().cacheKey())
                eids.append(QString::number(eid));
        }
        return eids.join(u' ');
    };
    stage.frameAt(1500);
    QCOMPARE(playing(), QStringLiteral("1 3"));
    stage.selectEid(1);
    stage.map.clock().step(stage.noon.addMSecs(1500));

    QVERIFY(remove(stage, removal));

    QCOMPARE(playing(), QStringLiteral("3"));
    const int draws = stage.stub(3)->draws;
    stage.frameAt(1600); // which is 100 ms after the effect was made ready again
    QCOMPARE(stage.effect.getTotalElapsedTime(), 100ul);
    QCOMPARE(playing(), QString());
    stage.frameAt(2600);
    QCOMPARE(playing(), QStringLiteral("3"));
    QCOMPARE(stage.stub(3)->draws, draws + 1);
    CHECK_SANITY(stage);
}

void tst_ChildRemoval::childWithItsEditorInTheFormMayGo()
{
    QFETCH(int, removal);
    OpenStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 8);
    stage.addTo(*nested, 5);
    stage.selectEid(1);
    stage.selectEid(8);
    const QPointer<QWidget> inner = nested->editorWidget();
    QVERIFY(inner && inner->isVisible());

    QVERIFY(remove(stage, removal));

    QVERIFY(!inner);
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    QVERIFY(stage.form().m_effectParameterFrame->findChildren<MetaWidget *>().isEmpty());
    checkNothingIsSelected(stage);
}

// The press takes the focus, and so the text is entered before its child goes.
void tst_ChildRemoval::buttonDeletesTheChildInWhoseCellTheUserTypes()
{
    OpenStage stage;
    stage.click(stage.rowOf(2), FadeInColumn);
    const QPointer<QWidget> line = stage.table().indexWidget(stage.table().currentIndex());
    QVERIFY(line);
    QTest::keyClicks(line, QStringLiteral("2.5"));

    QTest::mouseClick(stage.form().windowHandle(), Qt::LeftButton, {},
                      stage.form().m_deleteEffectButton->mapTo(
                          &stage.form(), stage.form().m_deleteEffectButton->rect().center()));
    QCoreApplication::processEvents();

    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
    for (const quint32 eid : {1, 3})
        QCOMPARE(stage.stub(eid)->text("fadein"), QStringLiteral("0"));
    QVERIFY(!line || !line->isVisible());
    checkNothingIsSelected(stage);
}

void tst_ChildRemoval::removalWhileTheUserIsAtSomething_data()
{
    addSituations();
}

void tst_ChildRemoval::removalWhileTheUserIsAtSomething()
{
    QFETCH(int, situation);
    for (const bool isCutting : {false, true}) {
        OpenStage stage;
        for (const quint32 eid : {2, 1, 3, 2}) // being shown gives them the settings they lack
            stage.selectEid(eid);
        QString rest = savedText(*stage.stub(1)) + savedText(*stage.stub(3));
        bool isDeleted = false;
        stage.stub(2)->deleted = &isDeleted;

        QVERIFY(happeningAt(Situation(situation), stage, [&] {
            if (isCutting)
                stage.effect.handleCutEffect();
            else
                stage.effect.handleDeleteEffect();
        }));

        QVERIFY(isDeleted);
        QCOMPARE(stage.eids(), QStringList({"1", "3"}));
        QCOMPARE(savedText(*stage.stub(1)) + savedText(*stage.stub(3)), rest);
        QCOMPARE(clipboardText().startsWith(entry), isCutting);
        QVERIFY(stage.effect.ownDirty());
        QVERIFY(!QApplication::activePopupWidget());
        checkNothingIsSelected(stage);
    }
}

QTEST_MAIN(tst_ChildRemoval)
#include "tst_ChildRemoval.moc"
