#include "EditorStage.h"
#include "EffectColumns.h"
#include "EndSignals.h"
#include "LogCapture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QRegularExpression>

#include <optional>

namespace {

QString entryOf(Effect &effect)
{
    return QStringLiteral("<EFFECT-ENTRY>\n") + savedText(effect);
}

/// The eids of deleted children, in order; a base, to be there until the last of them is gone.
struct Deaths
{
    QStringList died;
};

/// Children 1 to 4, each of which ends at as many seconds as its eid says, and some of them
/// selected at once. Neither the table nor the menu of an open editor lets a user do that.
class SeveralSelected : public Deaths, public EditorStage
{
public:
    enum Setting { NoEditor, Editor, EditorWithASelectedRow };

    explicit SeveralSelected(int setting)
    {
        for (const quint32 eid : {1u, 2u, 3u, 4u}) {
            WidgetStub *child = add(eid);
            child->with("endfixedtime", eid * 1000).with("end", eid * 1000);
            child->whileDying = [this](const StubEffect &dying) { died.append(dying.text("eid")); };
        }
        effect.init();
        if (setting == NoEditor)
            return;
        open();
        for (const quint32 eid : {1u, 2u, 3u, 4u})
            selectEid(eid); // being shown once gives a child the settings that it lacks
        if (setting == Editor)
            table().clearSelection();
    }

    /// Selects them in this order.
    void select(const QStringList &eids)
    {
        effect.selection().clear();
        for (const QString &eid : eids)
            effect.selection().append(effect.getEffect(eid.toUInt()));
    }

    QString entriesOf(const QStringList &eids) const
    {
        QString text;
        for (const QString &eid : eids)
            text += entryOf(*effect.getEffect(eid.toUInt()));
        return text;
    }

    QStringList selectedNow()
    {
        QStringList eids;
        for (const Effect *child : effect.selection())
            eids.append(child->getPropertyString(QStringLiteral("eid")));
        return eids;
    }
};

void addSelections()
{
    QTest::addColumn<int>("setting");
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("left");

    const std::pair<int, const char *> settings[] = {
        {SeveralSelected::NoEditor, "no editor"},
        {SeveralSelected::Editor, "editor"},
        {SeveralSelected::EditorWithASelectedRow, "editor with a selected row"}};
    for (const auto &[setting, name] : settings) {
        QTest::addRow("%s, two", name)
            << setting << QStringList({"2", "3"}) << QStringList({"1", "4"});
        QTest::addRow("%s, two in another order than the list's", name)
            << setting << QStringList({"4", "2"}) << QStringList({"1", "3"});
        QTest::addRow("%s, three", name)
            << setting << QStringList({"3", "1", "4"}) << QStringList({"2"});
        QTest::addRow("%s, all", name)
            << setting << QStringList({"2", "4", "1", "3"}) << QStringList();
    }
}

/// The selected children are gone, and nothing else is.
void checkRemoved(SeveralSelected &stage, const QStringList &selected, const QStringList &left)
{
    QCOMPARE(stage.died, selected);
    QCOMPARE(stage.eids(), left);
    QCOMPARE(stage.selectedNow(), QStringList());
    QCOMPARE(stage.effect.text("end"), left.isEmpty() ? QStringLiteral("0") : left.last() + "000");
    QVERIFY(stage.effect.ownDirty());
    if (!stage.effect.editorWidget())
        return;
    const QStringList rows = stage.column(meta::EidColumn);
    QCOMPARE(QStringList(rows.rbegin(), rows.rend()), left);
    QCOMPARE(stage.table().selectedRows(), QList<int>());
    CHECK_SANITY(stage);
}

} // namespace

class tst_MetaEffectEditor : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void severalSelectedAreCopiedInTheirOrder_data() { addSelections(); }
    void severalSelectedAreCopiedInTheirOrder();
    void severalSelectedAreCutInTheirOrder_data() { addSelections(); }
    void severalSelectedAreCutInTheirOrder();
    void severalSelectedAreDeletedInTheirOrder_data();
    void severalSelectedAreDeletedInTheirOrder();

    void endOfEachPastedChildIsAnnouncedAsItComes();
    void pastingWithoutEditorLeavesTheOwnEnd();

    void eidBeyondItsBitsHasNoRow_data();
    void eidBeyondItsBitsHasNoRow();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_MetaEffectEditor::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin does not support)")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Several selected ---

void tst_MetaEffectEditor::severalSelectedAreCopiedInTheirOrder()
{
    QFETCH(int, setting);
    QFETCH(QStringList, selected);
    SeveralSelected stage(setting);
    stage.effect.setOwnDirty(false);
    const QString expected = stage.entriesOf(selected);
    stage.select(selected);

    stage.effect.handleCopyEffect();

    QCOMPARE(QGuiApplication::clipboard()->text(), expected);
    QCOMPARE(stage.selectedNow(), selected);
    QCOMPARE(stage.died, QStringList());
    QCOMPARE(stage.eids(), QStringList({"1", "2", "3", "4"}));
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffectEditor::severalSelectedAreCutInTheirOrder()
{
    QFETCH(int, setting);
    QFETCH(QStringList, selected);
    QFETCH(QStringList, left);
    SeveralSelected stage(setting);
    stage.effect.setOwnDirty(false);
    const QString expected = stage.entriesOf(selected);
    stage.select(selected);

    stage.effect.handleCutEffect();

    QCOMPARE(QGuiApplication::clipboard()->text(), expected);
    checkRemoved(stage, selected, left);
}

void tst_MetaEffectEditor::severalSelectedAreDeletedInTheirOrder_data()
{
    addSelections();
}

void tst_MetaEffectEditor::severalSelectedAreDeletedInTheirOrder()
{
    QFETCH(int, setting);
    QFETCH(QStringList, selected);
    QFETCH(QStringList, left);
    for (const char *slot : {"handleDeleteEffect", "handleDeleteSelectedEffectsClicked"}) {
        QGuiApplication::clipboard()->setText(QStringLiteral("before"));
        SeveralSelected stage(setting);
        stage.effect.setOwnDirty(false);
        stage.select(selected);

        QVERIFY(QMetaObject::invokeMethod(&stage.effect, slot, Qt::DirectConnection));

        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
        checkRemoved(stage, selected, left);
    }
}

// --- Pasting ---

void tst_MetaEffectEditor::endOfEachPastedChildIsAnnouncedAsItComes()
{
    EditorStage stage;
    stage.add(1)->with("endfixedtime", 5000).with("end", 5000);
    stage.effect.init();
    stage.open();
    StubEffect other(&stage.map, 8);
    QString text;
    // Two are stored with an end that is not as their rules say.
    for (const auto &[ruled, stored] : {std::pair(7000, 7000), {6000, 6000}, {0, 9000}, {0, 8000}})
        text += entryOf(other.with("endfixedtime", ruled).with("end", stored));
    const EndSignals signalled(stage.effect);

    stage.effect.pasteEffect(text);

    QCOMPARE(signalled.noted, QStringList({"end 7000", "cycle 7000", "end 9000", "cycle 9000",
                                           "end 7000", "cycle 7000"}));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("7000"));
}

void tst_MetaEffectEditor::pastingWithoutEditorLeavesTheOwnEnd()
{
    MetaStage stage;
    StubEffect other(&stage.map, 8);
    QString text = entryOf(other.with("endfixedtime", 7000).with("end", 7000));
    const EndSignals signalled(stage.effect);

    stage.effect.pasteEffect(text);

    QCOMPARE(stage.effect.getEffect(0)->endTime(), 7000u);
    QCOMPARE(stage.effect.text("end"), QStringLiteral("0"));
    QCOMPARE(signalled.noted, QStringList());
}

// --- Rows ---

void tst_MetaEffectEditor::eidBeyondItsBitsHasNoRow_data()
{
    QTest::addColumn<qulonglong>("eid");

    // The children's are 0, 2 and 4294967295.
    QTest::newRow("0") << 4294967296ull;
    QTest::newRow("2") << 4294967298ull;
    QTest::newRow("all bits") << 18446744073709551615ull;
}

void tst_MetaEffectEditor::eidBeyondItsBitsHasNoRow()
{
    if constexpr (sizeof(unsigned long) == sizeof(quint32))
        QSKIP("Here no number is larger than an eid");
    QFETCH(qulonglong, eid);
    EditorStage stage;
    for (const quint32 known : {0u, 2u, 4294967295u})
        stage.add(known);
    stage.open();
    const auto number = static_cast<unsigned long>(eid);
    QCOMPARE(stage.effect.getRow(number & 0xffffffffu) >= 0, true);

    QCOMPARE(stage.effect.getRow(number), -1);
    stage.effect.removeFromTable(number);
    QCOMPARE(stage.table().rowCount(), 3);

    stage.effect.removeFromTable(number & 0xffffffffu);
    QCOMPARE(stage.table().rowCount(), 2);
}

QTEST_MAIN(tst_MetaEffectEditor)
#include "tst_MetaEffectEditor.moc"
