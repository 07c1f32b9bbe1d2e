#include "ClipboardScene.h"
#include "EffectPictures.h"

#include <QImage>
#include <QLoggingCategory>
#include <QMimeData>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace meta;

/// Children cut, copied and pasted in an open editor, by menu, mouse and keys.
class tst_Clipboard : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // By menu, button and keys.
    void menuActsOnTheRowUnderTheMouse_data();
    void menuActsOnTheRowUnderTheMouse();
    void rightPressOnOneOfTwoSelectedRowsActsOnThatRow();
    void menuIsWorkedWithKeys_data();
    void menuIsWorkedWithKeys();
    void escapedMenuChangesNothing();
    void deleteButtonIsPressedWithTheSpaceBar();
    void removingAsksNothing_data() { addRemovals(); }
    void removingAsksNothing();

    // Copying.
    void copyingChangesNothing_data();
    void copyingChangesNothing();
    void copyIsTheSelectedChildAlone();
    void copyOfANestedMetaEffectHoldsItsChildren();
    void clipboardHoldsPlainText_data();
    void clipboardHoldsPlainText();
    void emptySelectionIsAnEmptyText_data();
    void emptySelectionIsAnEmptyText();
    void twoSelectedRowsAreAnEmptyText_data() { emptySelectionIsAnEmptyText_data(); }
    void twoSelectedRowsAreAnEmptyText();

    // Pasting.
    void pastedElsewhereALinkToNobodyIsFixedAt0_data();
    void pastedElsewhereALinkToNobodyIsFixedAt0();
    void pastedLinkMayNameAChildThatFollowsInTheText_data();
    void pastedLinkMayNameAChildThatFollowsInTheText();
    void cutAndPastedIsTheSameButForNameAndEid();
    void copyOfACopyIsNamedTwice();
    void pastingAgainAndAgainTakesConsecutiveEids();
    void nextEidWraps();
    void pastedChildIsReselectedCutAndPastedAgain();
    void refusedPiecesGiveNoRow();
    void pastingSetsNoDirtyFlagOfItsOwn_data();
    void pastingSetsNoDirtyFlagOfItsOwn();
    void pastingResolvesAllTimesEvenOfNothing();
    void foreignTextIsPastedAsFarAsItCanBeRead_data();
    void foreignTextIsPastedAsFarAsItCanBeRead();
    void clipboardWithoutTextPastesNothing();
    void nestedMetaEffectIsPastedWithWhatItHolds();
    void pasteGoesToTheMetaEffectWhoseMenuItIs();
    void manyChildrenArePasted();
    void pasteShowsItsLastChildAlone();
    void pastingWhileTheUserIsAtSomething_data();
    void pastingWhileTheUserIsAtSomething();
};

void tst_Clipboard::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

void tst_Clipboard::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
}

// --- By menu, button and keys ---

void tst_Clipboard::menuActsOnTheRowUnderTheMouse_data()
{
    QTest::addColumn<int>("chosen");
    QTest::addColumn<QStringList>("eids");
    QTest::addColumn<bool>("isOnClipboard");

    QTest::newRow("cut") << int(CutEntry) << QStringList({"1", "2"}) << true;
    QTest::newRow("copy") << int(CopyEntry) << QStringList({"1", "2", "3"}) << true;
    QTest::newRow("delete") << int(DeleteEntry) << QStringList({"1", "2"}) << false;
}

void tst_Clipboard::menuActsOnTheRowUnderTheMouse()
{
    QFETCH(int, chosen);
    QFETCH(QStringList, eids);
    QFETCH(bool, isOnClipboard);
    OpenStage stage;
    stage.selectEid(1);
    stage.selectEid(3); // being shown once gives a child the settings that it lacks
    stage.selectEid(1);
    const QString text = entryOf(*stage.stub(3));

    QVERIFY(chooseOnRow(stage, stage.rowOf(3), Entry(chosen)));

    QCOMPARE(stage.eids(), eids);
    QCOMPARE(clipboardText(), isOnClipboard ? text : QStringLiteral("before"));
    CHECK_SANITY(stage);
}

void tst_Clipboard::rightPressOnOneOfTwoSelectedRowsActsOnThatRow()
{
    OpenStage stage;
    stage.selectRows(stage.rowOf(2), stage.rowOf(3));

    QVERIFY(chooseOnRow(stage, stage.rowOf(2), DeleteEntry));

    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
    checkNothingIsSelected(stage);
}

void tst_Clipboard::menuIsWorkedWithKeys_data()
{
    QTest::addColumn<int>("chosen");
    QTest::addColumn<QStringList>("eids");
    QTest::addColumn<QStringList>("eidsAfterPasting");

    QTest::newRow("cut") << int(CutEntry) << QStringList({"1", "3"})
                         << QStringList({"1", "3", "4"});
    QTest::newRow("copy") << int(CopyEntry) << QStringList({"1", "2", "3"})
                          << QStringList({"1", "2", "3", "4"});
    QTest::newRow("paste") << int(PasteEntry) << QStringList({"1", "2", "3"})
                           << QStringList({"1", "2", "3"});
    QTest::newRow("delete") << int(DeleteEntry) << QStringList({"1", "3"})
                            << QStringList({"1", "3"});
}

void tst_Clipboard::menuIsWorkedWithKeys()
{
    QFETCH(int, chosen);
    QFETCH(QStringList, eids);
    QFETCH(QStringList, eidsAfterPasting);
    OpenStage stage;
    stage.selectEid(2);

    QVERIFY(chooseWithKeys(stage, Entry(chosen)));
    QCOMPARE(stage.eids(), eids);
    CHECK_SANITY(stage);

    QVERIFY(chooseWithKeys(stage, PasteEntry));
    QCOMPARE(stage.eids(), eidsAfterPasting);
    CHECK_SANITY(stage);
}

void tst_Clipboard::escapedMenuChangesNothing()
{
    OpenStage stage;
    stage.selectEid(2);
    const QString before = savedText(stage.effect);

    QVERIFY(inMenu([&] { pressMenuKey(stage); },
                   [](QMenu &menu) {
                       QTest::keyClick(&menu, Qt::Key_Down);
                       QTest::keyClick(&menu, Qt::Key_Escape);
                   }));

    QCOMPARE(savedText(stage.effect), before);
    QCOMPARE(clipboardText(), QStringLiteral("before"));
    QCOMPARE(stage.selectedEids(), QStringList({"2"}));
}

void tst_Clipboard::deleteButtonIsPressedWithTheSpaceBar()
{
    OpenStage stage;
    stage.selectEid(2);

    stage.form().m_deleteEffectButton->setFocus();
    QTest::keyClick(stage.form().m_deleteEffectButton, Qt::Key_Space);

    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
    QCOMPARE(clipboardText(), QStringLiteral("before"));
    checkNothingIsSelected(stage);
}

void tst_Clipboard::removingAsksNothing()
{
    QFETCH(int, removal);
    OpenStage stage;
    stage.selectEid(2);
    const WindowCounter shown;

    QVERIFY(remove(stage, removal));
    QCoreApplication::processEvents();

    QCOMPARE(shown.windows, 0);
    QCOMPARE(stage.eids(), QStringList({"1", "3"}));
}

// --- Copying ---

void tst_Clipboard::copyingChangesNothing_data()
{
    QTest::addColumn<bool>("isDirty");

    QTest::newRow("clean") << false;
    QTest::newRow("dirty") << true;
}

void tst_Clipboard::copyingChangesNothing()
{
    QFETCH(bool, isDirty);
    OpenStage stage;
    stage.selectEid(2);
    stage.effect.setOwnDirty(isDirty);
    QStringList rows;
    for (int row = 0; row < 3; ++row)
        rows += stage.row(row);
    const QString before = savedText(stage.effect);
    const int requests = static_cast<WidgetStub *>(stage.stub(2))->widgetRequests;
    const QSignalSpy selections(&stage.table(), qOverload<>(&TableWidget::selectionChanged));
    const QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);

    QVERIFY(chooseWithKeys(stage, CopyEntry));
    stage.effect.handleCopyEffect();

    QCOMPARE(savedText(stage.effect), before);
    QStringList rowsNow;
    for (int row = 0; row < 3; ++row)
        rowsNow += stage.row(row);
    QCOMPARE(rowsNow, rows);
    QCOMPARE(stage.effect.ownDirty(), isDirty);
    QCOMPARE(static_cast<WidgetStub *>(stage.stub(2))->widgetRequests, requests);
    QCOMPARE(selections.count(), 0);
    QCOMPARE(ends.count(), 0);
    QCOMPARE(stage.selectedEids(), QStringList({"2"}));
}

void tst_Clipboard::copyIsTheSelectedChildAlone()
{
    OpenStage stage;
    stage.stub(2)->with("name", QStringLiteral("<EFFECT-ENTRY>\n & \"Rößler\" \U0001F386\t"));
    stage.selectEid(2);

    QVERIFY(chooseOnRow(stage, stage.rowOf(2), CopyEntry));

    QCOMPARE(clipboardText(), entryOf(*stage.stub(2)));
    QCOMPARE(clipboardText().count(QStringLiteral("<EFFECT-ENTRY>")), 1);
}

void tst_Clipboard::copyOfANestedMetaEffectHoldsItsChildren()
{
    OpenStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 8);
    stage.addTo(*nested, 5)->with("name", QStringLiteral("inner"));
    stage.selectEid(8);

    QVERIFY(chooseOnRow(stage, stage.rowOf(8), CopyEntry));

    QCOMPARE(clipboardText(), entryOf(*nested));
    QVERIFY(clipboardText().contains(QStringLiteral(">inner<")));
    QCOMPARE(clipboardText().count(QStringLiteral("<EFFECT-ENTRY>")), 1);
}

void tst_Clipboard::clipboardHoldsPlainText_data()
{
    QTest::addColumn<int>("chosen");

    QTest::newRow("cut") << int(CutEntry);
    QTest::newRow("copy") << int(CopyEntry);
}

void tst_Clipboard::clipboardHoldsPlainText()
{
    QFETCH(int, chosen);
    OpenStage stage;
    QGuiApplication::clipboard()->setImage(QImage(2, 2, QImage::Format_RGB32));
    stage.selectEid(2);

    QVERIFY(chooseWithKeys(stage, Entry(chosen)));

    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->formats(), QStringList({"text/plain"}));
    QVERIFY(data->text().startsWith(entry));
}

void tst_Clipboard::emptySelectionIsAnEmptyText_data()
{
    QTest::addColumn<int>("chosen");
    QTest::addColumn<bool>("isByMenu");

    QTest::newRow("copy by menu") << int(CopyEntry) << true;
    QTest::newRow("copy by slot") << int(CopyEntry) << false;
    QTest::newRow("cut by menu") << int(CutEntry) << true;
    QTest::newRow("cut by slot") << int(CutEntry) << false;
}

void tst_Clipboard::emptySelectionIsAnEmptyText()
{
    QFETCH(int, chosen);
    QFETCH(bool, isByMenu);
    OpenStage stage;
    const QString before = savedText(stage.effect);

    if (isByMenu)
        QVERIFY(chooseWithKeys(stage, Entry(chosen)));
    else if (chosen == CopyEntry)
        stage.effect.handleCopyEffect();
    else
        stage.effect.handleCutEffect();

    QCOMPARE(clipboardText(), QString());
    QCOMPARE(savedText(stage.effect), before);
    QCOMPARE(stage.table().rowCount(), 3);
    QVERIFY(!stage.effect.ownDirty());
    checkNothingIsSelected(stage);
}

void tst_Clipboard::twoSelectedRowsAreAnEmptyText()
{
    QFETCH(int, chosen);
    QFETCH(bool, isByMenu);
    OpenStage stage;
    stage.selectRows(0, 2);
    stage.effect.setOwnDirty(false);
    const QString before = savedText(stage.effect);

    if (isByMenu)
        QVERIFY(chooseWithKeys(stage, Entry(chosen)));
    else if (chosen == CopyEntry)
        stage.effect.handleCopyEffect();
    else
        stage.effect.handleCutEffect();

    QCOMPARE(clipboardText(), QString());
    QCOMPARE(savedText(stage.effect), before);
    QCOMPARE(stage.table().selectedRows(), QList<int>({0, 2}));
    QVERIFY(!stage.effect.ownDirty());
    CHECK_SANITY(stage);
}

// --- Pasting ---

void tst_Clipboard::pastedElsewhereALinkToNobodyIsFixedAt0_data()
{
    QTest::addColumn<int>("children");
    QTest::addColumn<bool>("isOneSelected");

    QTest::newRow("the only child") << 0 << false;
    QTest::newRow("none selected") << 2 << false;
    QTest::newRow("one selected") << 2 << true;
}

void tst_Clipboard::pastedElsewhereALinkToNobodyIsFixedAt0()
{
    QFETCH(int, children);
    QFETCH(bool, isOneSelected);
    OpenStage source;
    source.add(5)->with("endfixedtime", 2000);
    source.stub(2)->with("startlinkeid", 5);
    source.effect.updateEffectTimes();
    QVERIFY(chooseOnRow(source, source.rowOf(2), CopyEntry));
    EditorStage target;
    for (int eid = 1; eid <= children; ++eid)
        target.add(static_cast<quint32>(eid))->with("endfixedtime", 700);
    target.effect.updateEffectTimes();
    target.open();
    if (isOneSelected)
        target.selectEid(1);

    QVERIFY(chooseWithKeys(target, PasteEntry));

    const int row = children;
    const EffectList pasted = target.effect.getEffects();
    QCOMPARE(pasted.count(), children + 1);
    QCOMPARE(textOf(pasted.at(row), "name"), QStringLiteral("Copy of Child 2"));
    QCOMPARE(textOf(pasted.at(row), "starttype"), QStringLiteral("0"));
    QCOMPARE(textOf(pasted.at(row), "startfixedtime"), QStringLiteral("0"));
    QCOMPARE(target.row(row).mid(StartColumn, 2), QStringList({"0", "1"}));
    QVERIFY(target.table().pixmap(row, StartColumn).isNull());
    CHECK_SANITY(target);
    QCOMPARE(source.stub(2)->text("starttype"), QStringLiteral("1"));
}

void tst_Clipboard::pastedLinkMayNameAChildThatFollowsInTheText_data()
{
    QTest::addColumn<bool>("isOneSelected");

    QTest::newRow("none selected") << false;
    QTest::newRow("one selected") << true;
}

void tst_Clipboard::pastedLinkMayNameAChildThatFollowsInTheText()
{
    QFETCH(bool, isOneSelected);
    OpenStage stage;
    StubEffect first(&stage.map, 7);
    first.with("starttype", 1).with("startlinkeid", 5).with("endfixedtime", 100);
    StubEffect second(&stage.map, 8);
    second.with("endfixedtime", 2500);
    putOnClipboard(entryOf(first) + entryOf(second));
    if (isOneSelected)
        stage.selectEid(1);

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.stub(4)->text("startlinkeid"), QStringLiteral("5"));
    QCOMPARE(stage.row(stage.rowOf(4)).mid(StartColumn, 2), QStringList({"2.5", "2.6"}));
    CHECK_SANITY(stage);
}

void tst_Clipboard::cutAndPastedIsTheSameButForNameAndEid()
{
    OpenStage stage;
    stage.selectEid(2);
    QString expected = savedText(*stage.stub(2));
    expected.replace(QStringLiteral(">Child 2<"), QStringLiteral(">Copy of Child 2<"));
    expected.replace(QStringLiteral("\"eid\">2<"), QStringLiteral("\"eid\">4<"));

    QVERIFY(chooseOnRow(stage, stage.rowOf(2), CutEntry));
    QVERIFY(chooseOnRow(stage, 0, PasteEntry));

    QCOMPARE(stage.eids(), QStringList({"1", "3", "4"}));
    QCOMPARE(savedText(*stage.stub(4)), expected);
    QVERIFY(stage.effect.ownDirty());
    CHECK_SANITY(stage);
}

void tst_Clipboard::copyOfACopyIsNamedTwice()
{
    OpenStage stage;
    QVERIFY(chooseOnRow(stage, stage.rowOf(1), CopyEntry));
    QVERIFY(chooseWithKeys(stage, PasteEntry));
    QVERIFY(chooseWithKeys(stage, CopyEntry)); // of what was pasted, which is selected
    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.column(NameColumn).mid(2),
             QStringList({"Child 1", "Copy of Child 1", "Copy of Copy of Child 1"}));
    QCOMPARE(stage.form().m_effectGroupBox->title(),
             QStringLiteral("Copy of Copy of Child 1 Parameters"));
    CHECK_SANITY(stage);
}

void tst_Clipboard::pastingAgainAndAgainTakesConsecutiveEids()
{
    OpenStage stage;
    QVERIFY(chooseOnRow(stage, stage.rowOf(2), CopyEntry));
    const QString text = clipboardText();

    for (int time = 0; time < 3; ++time)
        QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1", "4", "5", "6"}));
    for (const quint32 eid : {4, 5, 6}) {
        QCOMPARE(stage.stub(eid)->text("name"), QStringLiteral("Copy of Child 2"));
        QCOMPARE(stage.stub(eid)->text("startlinkeid"), QStringLiteral("1"));
    }
    QCOMPARE(clipboardText(), text);
}

void tst_Clipboard::nextEidWraps()
{
    EditorStage stage;
    stage.add(4294967293u);
    stage.open();
    StubEffect original(&stage.map, 7);
    putOnClipboard(entryOf(original).repeated(4));

    stage.effect.handlePasteEffect();

    QCOMPARE(stage.column(EidColumn),
             QStringList({"4294967293", "4294967294", "4294967295", "0", "1"}));
    QCOMPARE(stage.eids(), stage.column(EidColumn));
    CHECK_SANITY(stage);
}

void tst_Clipboard::pastedChildIsReselectedCutAndPastedAgain()
{
    OpenStage stage;
    QVERIFY(chooseOnRow(stage, stage.rowOf(3), CopyEntry));
    QVERIFY(chooseWithKeys(stage, PasteEntry));
    QVERIFY(chooseWithKeys(stage, CutEntry));
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3", "5"}));
    QCOMPARE(stage.stub(5)->text("name"), QStringLiteral("Copy of Copy of Child 3"));
    CHECK_SANITY(stage);
}

void tst_Clipboard::refusedPiecesGiveNoRow()
{
    OpenStage stage;
    const QString good = entryOf(*stage.stub(3));
    const QString refused = entry + "<effect type=\"Zap\"/>\n";
    putOnClipboard(refused + good + refused + refused + good + refused);

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.column(EidColumn), QStringList({"3", "2", "1", "4", "5"}));
    QCOMPARE(stage.selectedEids(), QStringList({"5"}));
    CHECK_SANITY(stage);
}

void tst_Clipboard::pastingSetsNoDirtyFlagOfItsOwn_data()
{
    copyingChangesNothing_data();
}

void tst_Clipboard::pastingSetsNoDirtyFlagOfItsOwn()
{
    QFETCH(bool, isDirty);
    OpenStage stage;
    putOnClipboard(entryOf(*stage.stub(1)) + entryOf(*stage.stub(2)));
    stage.effect.setOwnDirty(isDirty);

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.table().rowCount(), 5);
    QCOMPARE(stage.effect.ownDirty(), isDirty);
}

void tst_Clipboard::pastingResolvesAllTimesEvenOfNothing()
{
    OpenStage stage;
    putOnClipboard(QString());
    stage.stub(1)->with("endfixedtime", 6000);
    QSignalSpy ends(&stage.effect, &MetaEffect::endTimeChanged);

    stage.effect.handlePasteEffect();

    QCOMPARE(stage.row(stage.rowOf(2)).mid(StartColumn, 2), QStringList({"6", "7"}));
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.first().first().toULongLong(), 7000u);
}

void tst_Clipboard::foreignTextIsPastedAsFarAsItCanBeRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("children");
    const QString marker = QStringLiteral("<EFFECT-ENTRY>");
    const QString stub = QStringLiteral("<effect type=\"Stub\"></effect>");

    QTest::newRow("a letter") << QStringLiteral("Dear Sir,\n\nplease find enclosed") << 0;
    QTest::newRow("a table") << QStringLiteral("1\t2\t3\r\n4\t5\t6\r\n") << 0;
    QTest::newRow("a web page") << QStringLiteral("<!DOCTYPE html><html><body/></html>") << 0;
    QTest::newRow("no marker") << stub << 1;
    QTest::newRow("no line end behind the marker") << marker + stub + marker + stub << 2;
    QTest::newRow("other line ends")
        << marker + "\r\n" + stub + "\r\n" + marker + "\r\n" + stub << 2;
    QTest::newRow("blanks and tabs around") << "\n \t" + marker + "\n\n\t " + stub + "\n\n \t" << 1;
    QTest::newRow("words before the first marker") << "see below: " + marker + stub << 1;
    QTest::newRow("words behind the last child") << marker + stub + marker + stub + " Regards" << 1;
    QTest::newRow("an effect in quotes") << "> " + stub << 0;
    QTest::newRow("a whole show") << "<show version=\"1\"><map/>" + stub + "</show>" << 0;
    QTest::newRow("two effects, one marker") << marker + stub + stub + marker + stub << 1;
    QTest::newRow("marker in a child")
        << marker + "<effect type=\"Stub\">" + marker + "</effect>" << 0;
    QTest::newRow("marker in capitals and not")
        << marker + stub + "<Effect-Entry>" + marker + stub << 1;
    QTest::newRow("half a marker") << marker + stub + marker + stub + marker.left(9) << 1;
    QTest::newRow("a control character")
        << marker + stub + marker + QChar(u'\x1') + marker + stub << 2;
    QTest::newRow("half a character")
        << marker + stub + marker + QChar(0xD83C) + marker + stub << 2;
    QTest::newRow("a byte order mark alone") << QString(QChar(0xFEFF)) << 0;
}

void tst_Clipboard::foreignTextIsPastedAsFarAsItCanBeRead()
{
    QFETCH(QString, text);
    QFETCH(int, children);
    OpenStage stage;
    stage.selectEid(2);
    const QString before = savedText(*stage.stub(2));
    putOnClipboard(text);
    const WindowCounter shown;

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.effect.getEffects().count(), 3 + children);
    QCOMPARE(stage.selectedEids(), QStringList({QString::number(children ? 3 + children : 2)}));
    QCOMPARE(savedText(*stage.stub(2)), before);
    QCOMPARE(shown.windows, 0); // nobody is told
    CHECK_SANITY(stage);
}

void tst_Clipboard::clipboardWithoutTextPastesNothing()
{
    OpenStage stage;
    QGuiApplication::clipboard()->setImage(QImage(2, 2, QImage::Format_RGB32));

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3"}));
    CHECK_SANITY(stage);
}

void tst_Clipboard::nestedMetaEffectIsPastedWithWhatItHolds()
{
    OpenStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 8);
    nested->with("endtype", 2).with("endcyclecount", 2);
    stage.addTo(*nested, 5)->with("endfixedtime", 800);
    stage.addTo(*nested, 2)->with("starttype", 1).with("startlinkeid", 5).with("endfixedtime", 900);
    nested->updateEffectTimes();
    nested->init();
    stage.effect.updateEffectTimes();
    QVERIFY(chooseOnRow(stage, stage.rowOf(8), CopyEntry));

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    auto *pasted = dynamic_cast<OpenMetaEffect *>(stage.effect.getEffect(9));
    QVERIFY(pasted);
    QCOMPARE(pasted->level(), 1);
    QCOMPARE(savedChildren(*pasted), savedChildren(*nested));
    QCOMPARE(stage.row(stage.rowOf(9)).mid(StartColumn, 2), QStringList({"0", "3.4"}));
    CHECK_SANITY(stage);
}

void tst_Clipboard::pasteGoesToTheMetaEffectWhoseMenuItIs()
{
    EditorStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    stage.addTo(*nested, 4)->with("name", QStringLiteral("inner"));
    stage.open();
    stage.selectEid(1);
    auto *inner = qobject_cast<MetaWidget *>(nested->editorWidget());
    QVERIFY(inner && inner->isVisible());
    const auto choose = [inner](Entry chosen) {
        return inMenu(
            [inner] {
                inner->m_effectTable->setFocus();
                QContextMenuEvent event(QContextMenuEvent::Keyboard, {1, 2}, {3, 4});
                QApplication::sendEvent(inner->m_effectTable, &event);
            },
            [chosen](QMenu &menu) {
                QTest::mouseClick(&menu, Qt::LeftButton, {},
                                  menu.actionGeometry(menu.actions().at(chosen)).center());
            });
    };
    inner->m_effectTable->setCurrentCell(0, NameColumn);

    QVERIFY(choose(CopyEntry));
    QVERIFY(choose(PasteEntry));

    QCOMPARE(stage.eids(), QStringList({"1"}));
    QCOMPARE(nested->getEffects().count(), 2);
    QCOMPARE(textOf(nested->getEffect(5), "name"), QStringLiteral("Copy of inner"));
    QCOMPARE(inner->m_effectTable->rowCount(), 2);
    CHECK_SANITY(stage);
}

void tst_Clipboard::manyChildrenArePasted()
{
    constexpr int many = 300;
    OpenStage stage;
    putOnClipboard(entryOf(*stage.stub(2)).repeated(many));

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QCOMPARE(stage.effect.getEffects().count(), many + 3);
    QCOMPARE(stage.column(EidColumn).last(), QString::number(many + 3));
    QCOMPARE(stage.selectedEids(), QStringList({QString::number(many + 3)}));
    QCOMPARE(stage.row(many + 2).mid(StartColumn, 2), QStringList({"4", "5"}));
    CHECK_SANITY(stage);
}

void tst_Clipboard::pasteShowsItsLastChildAlone()
{
    OpenStage stage;
    putOnClipboard(entryOf(*stage.stub(2)).repeated(3));

    QVERIFY(chooseWithKeys(stage, PasteEntry));

    QList<int> requests;
    for (const unsigned long eid : {4, 5, 6}) {
        const auto *child = qobject_cast<WidgetStub *>(stage.effect.getEffect(eid));
        QVERIFY(child);
        requests.append(child->widgetRequests);
    }
    QCOMPARE(requests, QList<int>({0, 0, 1}));
}

void tst_Clipboard::pastingWhileTheUserIsAtSomething_data()
{
    addSituations();
}

void tst_Clipboard::pastingWhileTheUserIsAtSomething()
{
    QFETCH(int, situation);
    OpenStage stage;
    for (const quint32 eid : {2, 1, 3, 2})
        stage.selectEid(eid);
    const QString rest = savedText(*stage.stub(1)) + savedText(*stage.stub(3));
    QString text = entryOf(*stage.stub(1));

    QVERIFY(happeningAt(Situation(situation), stage, [&] { stage.effect.pasteEffect(text); }));

    QCOMPARE(stage.eids(), QStringList({"1", "2", "3", "4"}));
    QCOMPARE(savedText(*stage.stub(1)) + savedText(*stage.stub(3)), rest);
    QCOMPARE(stage.stub(4)->text("fadein"), stage.stub(1)->text("fadein"));
    QCOMPARE(stage.stub(4)->text("endtype"), QStringLiteral("0"));
    QCOMPARE(stage.stub(4)->text("gid"), stage.stub(1)->text("gid"));
    QVERIFY(!QApplication::activePopupWidget());
    CHECK_SANITY(stage);
}

QTEST_MAIN(tst_Clipboard)
#include "tst_Clipboard.moc"
