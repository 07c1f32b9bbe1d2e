#include "LogCapture.h"
#include "MetaStage.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTest>

#include <optional>

namespace {

const QString entry = QStringLiteral("<EFFECT-ENTRY>\n");

QString textOf(const Effect *effect, const char *key)
{
    return effect->getPropertyString(QString::fromLatin1(key));
}

QString times(const Effect *effect)
{
    return textOf(effect, "begin") + QStringLiteral("..") + textOf(effect, "end");
}

/// One value of every child, in list order.
QStringList valuesOf(const MetaEffect &effect, const char *key)
{
    QStringList values;
    const EffectList children = effect.getEffects();
    for (const Effect *child : children)
        values.append(textOf(child, key));
    return values;
}

} // namespace

class tst_MetaEffectTransfer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void pastedPieceIsANewChildUnderTheNextEid();
    void pastedChildrenTakeConsecutiveEids();
    void unreadablePiecesAreSkipped_data();
    void unreadablePiecesAreSkipped();
    void textWithoutMarkerIsOnePiece();
    void pastingACopyOfACopyNamesItTwice();
    void pastedChildWithoutNameIsACopyOfNothing();
    void pastedLinksKeepTheirEids();
    void brokenLinkOfAPastedChildIsRepaired();
    void pastedNestedEffectKeepsTheEidsWithin();
    void pastingDoesNotSetTheOwnDirtyFlag();
    void pastingNothingStillResolvesTheTimes();
    void pastingWithoutAFactoryDoesNothing();
    void pastedChildIsHeardLikeAnyOther();
    void markerInANameSurvives();
    void hugeTextIsPasted_data();
    void hugeTextIsPasted();

    void deletedChildIsGoneAndTheEffectDirty();
    void deletingNullChangesNothing();
    void deletingTheOnlyChildLeavesNoTime();
    void deletingMakesTheEffectReadyAgain();
    void dependantsKeepTheirTimesUntilTheNextPass();
    void deletedNestedEffectTakesItsChildrenAlong();
    void childThatSpeaksWhileDyingIsNotResolved();

    void deletingAnEmptySelectionStillMakesReadyAndDirty_data();
    void deletingAnEmptySelectionStillMakesReadyAndDirty();
    void copyingOrCuttingAnEmptySelectionWritesNothing();
    void clipboardTakesTheEmptyText_data();
    void clipboardTakesTheEmptyText();
    void clipboardTextIsPasted();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_MetaEffectTransfer::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Pasting ---

void tst_MetaEffectTransfer::pastedPieceIsANewChildUnderTheNextEid()
{
    MetaStage stage;
    StubEffect *original = stage.add(4);
    original->with("name", QStringLiteral("Sparkle")).with("gid", 12).with("fadein", 250);
    QString text = entry + savedText(*original);

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.eids(), QStringList({"4", "5"}));
    auto *pasted = qobject_cast<StubEffect *>(stage.effect.getEffect(5));
    QVERIFY(pasted && pasted != original);
    QCOMPARE(pasted->text("name"), QStringLiteral("Copy of Sparkle"));
    QCOMPARE(pasted->text("gid"), QStringLiteral("12"));
    QCOMPARE(pasted->text("fadein"), QStringLiteral("250"));
    QCOMPARE(pasted->level(), 1);
    QCOMPARE(original->text("name"), QStringLiteral("Sparkle"));
}

void tst_MetaEffectTransfer::pastedChildrenTakeConsecutiveEids()
{
    MetaStage stage;
    stage.add(6);
    StubEffect original(&stage.map, 2);
    QString text;
    for (const char *name : {"a", "b", "c"}) {
        original.with("name", QString::fromLatin1(name));
        text += entry + savedText(original);
    }

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.eids(), QStringList({"6", "7", "8", "9"}));
    QCOMPARE(valuesOf(stage.effect, "name").mid(1),
             QStringList({"Copy of a", "Copy of b", "Copy of c"}));
}

void tst_MetaEffectTransfer::unreadablePiecesAreSkipped_data()
{
    QTest::addColumn<QString>("piece");

    QTest::newRow("empty") << QString();
    QTest::newRow("line end") << QStringLiteral("\n");
    QTest::newRow("words") << QStringLiteral("Dear Sir or Madam,\n");
    QTest::newRow("unknown type") << QStringLiteral("\n<effect type=\"Zap\"></effect>\n");
    QTest::newRow("cut short") << QStringLiteral("\n<effect type=\"Stub\">\n");
    QTest::newRow("two effects") << QStringLiteral(
        "\n<effect type=\"Stub\"></effect><effect type=\"Stub\"></effect>\n");
    QTest::newRow("nul") << QString(QChar(u'\0'));
}

void tst_MetaEffectTransfer::unreadablePiecesAreSkipped()
{
    QFETCH(QString, piece);
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    const QString sound = u'\n' + savedText(original);
    const QString marker = QStringLiteral("<EFFECT-ENTRY>");
    QString text = piece + marker + sound + marker + piece + marker + sound + marker + piece;

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.eids(), QStringList({"0", "1"}));
}

void tst_MetaEffectTransfer::textWithoutMarkerIsOnePiece()
{
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    QString text = savedText(original);

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.eids(), QStringList({"0"}));
}

void tst_MetaEffectTransfer::pastingACopyOfACopyNamesItTwice()
{
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    original.with("name", QStringLiteral("Sparkle"));
    QString text = savedText(original);
    stage.effect.pasteEffect(text);
    text = savedText(*stage.effect.getEffect(0));

    stage.effect.pasteEffect(text);

    QCOMPARE(valuesOf(stage.effect, "name"),
             QStringList({"Copy of Sparkle", "Copy of Copy of Sparkle"}));
}

void tst_MetaEffectTransfer::pastedChildWithoutNameIsACopyOfNothing()
{
    MetaStage stage;
    QString text = QStringLiteral("<effect type=\"Stub\"/>");

    stage.effect.pasteEffect(text);

    QCOMPARE(valuesOf(stage.effect, "name"), QStringList({"Copy of "}));
}

void tst_MetaEffectTransfer::pastedLinksKeepTheirEids()
{
    MetaStage stage;
    StubEffect *target = stage.add(5);
    target->with("startfixedtime", 300).with("endtype", 0).with("endfixedtime", 400);
    StubEffect original(&stage.map, 9);
    original.with("starttype", 1).with("startlinkeid", 5).with("startlinkstart", 0);
    original.with("endtype", 1).with("endlinkeid", 5).with("endlinkoffset", 1000);
    QString text = entry + savedText(original);

    stage.effect.pasteEffect(text);

    const Effect *pasted = stage.effect.getEffect(6);
    QVERIFY(pasted);
    QCOMPARE(textOf(pasted, "startlinkeid"), QStringLiteral("5"));
    QCOMPARE(textOf(pasted, "endlinkeid"), QStringLiteral("5"));
    QCOMPARE(times(target), QStringLiteral("300..700"));
    QCOMPARE(times(pasted), QStringLiteral("700..1700"));
}

void tst_MetaEffectTransfer::brokenLinkOfAPastedChildIsRepaired()
{
    MetaStage stage;
    StubEffect original(&stage.map, 9);
    original.with("starttype", 1).with("startlinkeid", 5).with("begin", 700);
    original.with("endtype", 1).with("endlinkeid", 6).with("end", 900);
    QString text = entry + savedText(original);

    stage.effect.pasteEffect(text);

    const Effect *pasted = stage.effect.getEffect(0);
    QVERIFY(pasted);
    QCOMPARE(textOf(pasted, "starttype"), QStringLiteral("0"));
    QCOMPARE(textOf(pasted, "startfixedtime"), QStringLiteral("0"));
    QCOMPARE(textOf(pasted, "endtype"), QStringLiteral("0"));
    QCOMPARE(textOf(pasted, "endfixedtime"), QStringLiteral("0"));
    QCOMPARE(times(pasted), QStringLiteral("0..0"));
}

void tst_MetaEffectTransfer::pastedNestedEffectKeepsTheEidsWithin()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 3);
    stage.addTo(*nested, 7)->with("name", QStringLiteral("inner"));
    stage.addTo(*nested, 1);
    QString text = entry + savedText(*nested);

    stage.effect.pasteEffect(text);

    auto *pasted = qobject_cast<MetaEffect *>(stage.effect.getEffect(4));
    QVERIFY(pasted);
    QCOMPARE(valuesOf(*pasted, "eid"), QStringList({"7", "1"}));
    QCOMPARE(valuesOf(*pasted, "name"), QStringList({"inner", ""}));
}

void tst_MetaEffectTransfer::pastingDoesNotSetTheOwnDirtyFlag()
{
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    QString text = entry + savedText(original);

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.effect.getEffects().count(), 1);
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffectTransfer::pastingNothingStillResolvesTheTimes()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("startfixedtime", 300);
    QString text;

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.effect.getEffects().count(), 1);
    QCOMPARE(times(child), QStringLiteral("300..300"));
}

void tst_MetaEffectTransfer::pastingWithoutAFactoryDoesNothing()
{
    OpenMetaEffect effect(nullptr, 0);
    QString text = QStringLiteral("<effect type=\"Stub\"/>");

    effect.pasteEffect(text);

    QVERIFY(effect.getEffects().isEmpty());
}

void tst_MetaEffectTransfer::pastedChildIsHeardLikeAnyOther()
{
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    original.with("endtype", 2).with("endcyclecount", 2);
    QString text = entry + savedText(original);
    stage.effect.pasteEffect(text);
    auto *pasted = qobject_cast<StubEffect *>(stage.effect.getEffect(0));
    QVERIFY(pasted);
    QCOMPARE(times(pasted), QStringLiteral("0..2000"));

    pasted->setCycleTime(300);

    QCOMPARE(times(pasted), QStringLiteral("0..600"));
}

void tst_MetaEffectTransfer::markerInANameSurvives()
{
    MetaStage stage;
    const QString name = QStringLiteral("a<EFFECT-ENTRY>\n<effect type=\"Stub\"></effect>b");
    StubEffect original(&stage.map, 2);
    original.with("name", name);
    QString text = entry + savedText(original) + entry + savedText(original);

    stage.effect.pasteEffect(text);

    QCOMPARE(valuesOf(stage.effect, "name"),
             QStringList({QStringLiteral("Copy of ") + name, QStringLiteral("Copy of ") + name}));
}

void tst_MetaEffectTransfer::hugeTextIsPasted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("children");
    constexpr int size = 10 * 1024 * 1024;
    const QString marker = QStringLiteral("<EFFECT-ENTRY>");
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    original.with("name", QString(size, u'x'));

    QTest::newRow("no effect, no marker") << QString(size, u'x') << 0;
    QTest::newRow("nothing but markers") << marker.repeated(size / marker.size()) << 0;
    QTest::newRow("a huge value") << entry + savedText(original) << 1;
    QTest::newRow("open tags") << QStringLiteral("<effect type=\"Stub\">").repeated(size / 20) << 0;
}

void tst_MetaEffectTransfer::hugeTextIsPasted()
{
    QFETCH(QString, text);
    QFETCH(int, children);
    MetaStage stage;

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.effect.getEffects().count(), children);
}

// --- Deleting ---

void tst_MetaEffectTransfer::deletedChildIsGoneAndTheEffectDirty()
{
    MetaStage stage;
    int deletions = 0;
    StubEffect *child = stage.add(1);
    child->deletions = &deletions;
    stage.add(2);
    QVERIFY(!stage.effect.isDirty());

    stage.effect.deleteEffect(child);

    QCOMPARE(deletions, 1);
    QCOMPARE(stage.eids(), QStringList({"2"}));
    QVERIFY(stage.effect.ownDirty());
}

void tst_MetaEffectTransfer::deletingNullChangesNothing()
{
    MetaStage stage;
    stage.add(1)->with("end", 500);
    stage.effect.with("end", 7);

    stage.effect.deleteEffect(nullptr);

    QCOMPARE(stage.eids(), QStringList({"1"}));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("7"));
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffectTransfer::deletingTheOnlyChildLeavesNoTime()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("end", 500);
    stage.effect.init();
    QCOMPARE(stage.effect.text("end"), QStringLiteral("500"));

    stage.effect.deleteEffect(child);

    QCOMPARE(times(&stage.effect), QStringLiteral("0..0"));
}

void tst_MetaEffectTransfer::deletingMakesTheEffectReadyAgain()
{
    MetaStage stage;
    StubEffect *doomed = stage.add(1);
    doomed->with("end", 900);
    StubEffect *low = stage.add(2);
    low->with("end", 500);
    stage.add(3)->with("end", 400);
    low->with("priority", 8);
    stage.effect.with("loop", QStringLiteral("0"));
    stage.frameAt(300);
    stage.map.clock().step(stage.noon.addMSecs(1000));

    stage.effect.deleteEffect(doomed);

    QCOMPARE(times(&stage.effect), QStringLiteral("0..500"));
    QCOMPARE(stage.eids(), QStringList({"3", "2"}));
    stage.frameAt(1200);
    QCOMPARE(stage.effect.getTotalElapsedTime(), 200ul);
}

void tst_MetaEffectTransfer::dependantsKeepTheirTimesUntilTheNextPass()
{
    MetaStage stage;
    StubEffect *target = stage.add(1);
    target->with("startfixedtime", 200).with("endtype", 0).with("endfixedtime", 300);
    StubEffect *dependant = stage.add(2);
    dependant->with("starttype", 1).with("startlinkeid", 1).with("startlinkstart", 1);
    dependant->with("endtype", 1).with("endlinkeid", 1);
    stage.effect.updateEffectTimes();
    QCOMPARE(times(dependant), QStringLiteral("200..500"));

    stage.effect.deleteEffect(target);
    QCOMPARE(times(dependant), QStringLiteral("200..500"));
    QCOMPARE(dependant->text("endtype"), QStringLiteral("1"));

    stage.effect.updateEffectTimes();
    QCOMPARE(times(dependant), QStringLiteral("0..0"));
    for (const char *key : {"starttype", "startfixedtime", "endtype", "endfixedtime"})
        QCOMPARE(dependant->text(key), QStringLiteral("0"));
}

void tst_MetaEffectTransfer::deletedNestedEffectTakesItsChildrenAlong()
{
    int deletions = 0; // counts until the stage is gone
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    OpenMetaEffect *deeper = stage.addNestedTo(*nested, 1);
    stage.addTo(*nested, 2)->deletions = &deletions;
    stage.addTo(*deeper, 1)->deletions = &deletions;
    StubEffect *sibling = stage.add(2);
    sibling->deletions = &deletions;

    stage.effect.deleteEffect(nested);

    QCOMPARE(deletions, 2);
    QCOMPARE(stage.eids(), QStringList({"2"}));
}

void tst_MetaEffectTransfer::childThatSpeaksWhileDyingIsNotResolved()
{
    MetaStage stage;
    StubEffect *dying = stage.add(1);
    StubEffect *sibling = stage.add(2);
    sibling->with("starttype", 1).with("startlinkeid", 1);
    QStringList changes;
    dying->whileDying = [&changes](StubEffect &effect) {
        effect.with("endtype", 2).with("endcyclecount", 1);
        effect.changes.clear();
        effect.setCycleTime(300);
        changes = effect.changes;
    };

    stage.effect.deleteEffect(dying);

    QCOMPARE(changes, QStringList());
    QCOMPARE(stage.eids(), QStringList({"2"}));
}

// --- The selection, which is empty without an editor ---

void tst_MetaEffectTransfer::deletingAnEmptySelectionStillMakesReadyAndDirty_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("button") << QByteArray("handleDeleteSelectedEffectsClicked");
    QTest::newRow("menu") << QByteArray("handleDeleteEffect");
}

void tst_MetaEffectTransfer::deletingAnEmptySelectionStillMakesReadyAndDirty()
{
    QFETCH(QByteArray, slot);
    MetaStage stage;
    stage.add(1)->with("end", 500);
    stage.effect.with("begin", 3).with("end", 7);
    stage.effect.setOwnDirty(false);

    QVERIFY(QMetaObject::invokeMethod(&stage.effect, slot.constData(), Qt::DirectConnection));

    QCOMPARE(stage.eids(), QStringList({"1"}));
    QCOMPARE(times(&stage.effect), QStringLiteral("0..500"));
    QVERIFY(stage.effect.ownDirty());
}

void tst_MetaEffectTransfer::copyingOrCuttingAnEmptySelectionWritesNothing()
{
    MetaStage stage;
    stage.add(1)->with("end", 500);
    stage.effect.with("end", 7);
    stage.effect.setOwnDirty(false);
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);

    stage.effect.copyEffect(stream);
    stage.effect.cutEffect(stream);

    QCOMPARE(text, QString());
    QCOMPARE(stage.eids(), QStringList({"1"}));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("7"));
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffectTransfer::clipboardTakesTheEmptyText_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("copy") << QByteArray("handleCopyEffect");
    QTest::newRow("cut") << QByteArray("handleCutEffect");
}

void tst_MetaEffectTransfer::clipboardTakesTheEmptyText()
{
    QFETCH(QByteArray, slot);
    MetaStage stage;
    stage.add(1);
    QGuiApplication::clipboard()->setText(QStringLiteral("old"));

    QVERIFY(QMetaObject::invokeMethod(&stage.effect, slot.constData(), Qt::DirectConnection));

    QCOMPARE(QGuiApplication::clipboard()->text(), QString());
    QCOMPARE(stage.eids(), QStringList({"1"}));
}

void tst_MetaEffectTransfer::clipboardTextIsPasted()
{
    MetaStage stage;
    StubEffect original(&stage.map, 2);
    original.with("name", QStringLiteral("Sparkle"));
    const QString text = entry + savedText(original) + entry + savedText(original);
    QGuiApplication::clipboard()->setText(text);

    stage.effect.handlePasteEffect();

    QCOMPARE(valuesOf(stage.effect, "name"), QStringList({"Copy of Sparkle", "Copy of Sparkle"}));
    QCOMPARE(QGuiApplication::clipboard()->text(), text);
}

QTEST_MAIN(tst_MetaEffectTransfer)
#include "tst_MetaEffectTransfer.moc"
