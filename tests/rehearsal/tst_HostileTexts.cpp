#include "Effect.h"
#include "EffectList.h"
#include "MetaEffect.h"
#include "MetaWidget.h"
#include "ShowDocument.h"
#include "TableWidget.h"
#include "TestTypes.h"

#include <QApplication>
#include <QClipboard>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTest>

#include <ctime>

using rehearsal::FileFault;
using rehearsal::Show;
using rehearsal::ShowDocument;

namespace {

constexpr double mostSeconds = 20;

const QString solid = QStringLiteral("<effect type=\"Solid\"/>");
const QString marker = QStringLiteral("<EFFECT-ENTRY>");

double processorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

QString nested(int depth)
{
    return QStringLiteral("<effect type=\"Meta Effect\">").repeated(depth)
           + QStringLiteral("</effect>").repeated(depth);
}

QString manyAttributes(int count)
{
    QString text = QStringLiteral("<effect type=\"Solid\"");
    for (int i = 0; i < count; ++i)
        text += QStringLiteral(" a%1=''").arg(i);
    return text + QStringLiteral("/>");
}

QString entities()
{
    QString text = QStringLiteral("<!DOCTYPE effect [<!ENTITY a \"ha\">");
    for (char16_t name = u'b'; name < u'n'; ++name)
        text += QStringLiteral("<!ENTITY %1 \"%2\">")
                    .arg(QChar(name), QStringLiteral("&%1;").arg(QChar(name - 1)).repeated(10));
    return text
           + QStringLiteral("]><effect type=\"Solid\"><property key=\"name\">&m;</property>"
                            "</effect>");
}

MetaEffect *addMetaEffect(Show &show)
{
    auto *effect = static_cast<MetaEffect *>(show.factory().make(QStringLiteral("Meta Effect")));
    show.addEffect(effect);
    return effect;
}

/// A meta effect with its editor open.
struct Edited
{
    Show show{allTypes()};
    MetaEffect *effect = addMetaEffect(show);
    MetaWidget *form = qobject_cast<MetaWidget *>(effect->internalGetEffectWidget());

    void paste(const QString &text) const
    {
        QApplication::clipboard()->setText(text);
        effect->handlePasteEffect();
    }
    int children() const { return static_cast<int>(effect->getEffects().count()); }
    int rows() const { return form->m_effectTable->rowCount(); }
};

} // namespace

// Texts that were made to be too much, on their way into an open window.
class tst_HostileTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void hostileClipboardAddsNothing_data();
    void hostileClipboardAddsNothing();
    void soundPieceBesideHostileOnesIsPasted();
    void pasteFillsTheMapAndNoMore();
    void deletedEffectsMakeRoom();
    void hostileShowLeavesTheDocumentAlone_data();
    void hostileShowLeavesTheDocumentAlone();
};

void tst_HostileTexts::initTestCase()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
}

void tst_HostileTexts::hostileClipboardAddsNothing_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("a million effects in one another") << nested(1'000'000);
    QTest::newRow("a thousand effects in one another") << nested(1'000);
    QTest::newRow("a million elements in one another")
        << QStringLiteral("<effect type=\"Solid\">%1</effect>")
               .arg(QStringLiteral("<x>").repeated(1'000'000)
                    + QStringLiteral("</x>").repeated(1'000'000));
    QTest::newRow("attributes") << manyAttributes(300'000);
    QTest::newRow("entities in entities") << entities();
    QTest::newRow("too many effects")
        << QStringLiteral("<effect type=\"Meta Effect\">%1</effect>").arg(solid.repeated(250'000));
    QTest::newRow("pieces of nothing") << (marker + QStringLiteral("<effect")).repeated(300'000);
    QTest::newRow("one sign") << QString(50'000'000, u'<');
}

void tst_HostileTexts::hostileClipboardAddsNothing()
{
    QFETCH(const QString, text);
    const Edited edited;
    const double before = processorSeconds();
    edited.paste(text);
    QVERIFY(processorSeconds() - before < mostSeconds);
    QCOMPARE(edited.children(), 0);
    QCOMPARE(edited.rows(), 0);
}

void tst_HostileTexts::soundPieceBesideHostileOnesIsPasted()
{
    const Edited edited;
    edited.paste(marker + manyAttributes(2'000) + marker + solid + marker + nested(1'000));
    QCOMPARE(edited.children(), 1);
    QCOMPARE(edited.rows(), 1);
}

// As if it held almost as many effects as it may already.
void tst_HostileTexts::pasteFillsTheMapAndNoMore()
{
    Edited edited;
    rehearsal::StageMap &map = edited.show.map();
    QCOMPARE(map.effectCount(), 1);
    map.countEffects(rehearsal::maximumEffects - 4);
    const QString two = QStringLiteral("<effect type=\"Meta Effect\">%1</effect>").arg(solid);
    edited.paste((marker + two).repeated(3));
    QCOMPARE(edited.children(), 1);
    edited.paste((marker + solid).repeated(3));
    QCOMPARE(edited.children(), 2);
    QCOMPARE(edited.rows(), 2);
    QCOMPARE(map.effectCount(), rehearsal::maximumEffects);
    map.countEffects(4 - rehearsal::maximumEffects);
}

void tst_HostileTexts::deletedEffectsMakeRoom()
{
    Show show(allTypes());
    std::unique_ptr<Effect> effect(
        static_cast<EffectLib &>(show.factory()).createEffect(nested(3)));
    QVERIFY(effect);
    QCOMPARE(show.map().effectCount(), 3);
    effect.reset();
    QCOMPARE(show.map().effectCount(), 0);
}

void tst_HostileTexts::hostileShowLeavesTheDocumentAlone_data()
{
    QTest::addColumn<QString>("effects");
    QTest::addColumn<QString>("what");
    QTest::newRow("depth") << nested(1'000'000) << "elements are nested deeper than 250000";
    QTest::newRow("attributes") << manyAttributes(300'000)
                                << "an element has more than 1000 attributes";
    QTest::newRow("effects") << solid.repeated(250'001) << "there are more than 250000 effects";
}

void tst_HostileTexts::hostileShowLeavesTheDocumentAlone()
{
    QFETCH(const QString, effects);
    QFETCH(const QString, what);
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.show")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<show version=\"1\"><map><light uid=\"1\" x=\"0\" y=\"0\"/></map>"
               + effects.toUtf8() + "</show>");
    file.close();

    ShowDocument document(allTypes());
    FileFault fault;
    QVERIFY(document.startNew(&fault));
    const Show *before = document.show();
    const double started = processorSeconds();
    QVERIFY(!document.open(file.fileName(), &fault));
    QVERIFY(processorSeconds() - started < mostSeconds);
    QCOMPARE(fault.message(), QStringLiteral("%1:1: %2").arg(file.fileName(), what));
    QCOMPARE(document.show(), before);
    QCOMPARE(document.file(), QString());
}

QTEST_MAIN(tst_HostileTexts)
#include "tst_HostileTexts.moc"
