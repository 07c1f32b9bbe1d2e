#include "EffectHost.h"
#include "LogCapture.h"
#include "MetaStage.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <optional>
#include <random>

namespace {

// Everything that places a child in its parent, each with a text that tells it from the others.
const std::pair<const char *, const char *> placement[] = {
    {"eid", "7"},
    {"name", "Sparkle & <fire>"},
    {"gid", "12"},
    {"priority", "3"},
    {"transparency", "0.333"},
    {"begin", "1000"},
    {"end", "2500"},
    {"fadein", "250"},
    {"fadeout", "4000000000"},
    {"starttype", "1"},
    {"startfixedtime", "70"},
    {"startlinkeid", "5"},
    {"startlinkstart", "1"},
    {"startlinkoffset", "-1.23457e+06"},
    {"endtype", "2"},
    {"endfixedtime", "900"},
    {"endlinkeid", "4294967295"},
    {"endlinkstart", "0"},
    {"endlinkoffset", "0.5"},
    {"endcyclecount", "3"},
};

QStringList values(const Effect &effect)
{
    QStringList values;
    for (const auto &property : EffectHost::properties(effect))
        values.append(property.key + u'=' + property.text);
    values.sort();
    return values;
}

MetaEffect *asMeta(Effect *effect)
{
    return qobject_cast<MetaEffect *>(effect);
}

/// Reads back what was saved; null if the host cannot.
std::unique_ptr<MetaEffect> load(MetaStage &stage, const QString &text)
{
    std::unique_ptr<Effect> effect(stage.factory.createEffect(text));
    MetaEffect *meta = asMeta(effect.get());
    if (!meta)
        return nullptr;
    static_cast<void>(effect.release());
    return std::unique_ptr<MetaEffect>(meta);
}

/// Property texts with everything in them that may come out of shape on the way.
class RandomTexts
{
public:
    explicit RandomTexts(quint32 seed) : m_random(seed) {}

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

    QString next()
    {
        QString text;
        for (int parts = below(6); parts > 0; --parts) {
            switch (below(9)) {
            case 0: text += QString::number(m_random()); break;
            case 1:
                text += QChar(static_cast<char16_t>(below(0x20))); // control characters, NUL too
                break;
            case 2:
                text += QChar(static_cast<char16_t>(0xD800 + below(0x800))); // lone surrogates
                break;
            case 3:
                text += QString(QChar(QChar::highSurrogate(0x1F600u + m_random() % 64)))
                        + QChar(QChar::lowSurrogate(0x1F600u + m_random() % 64));
                break;
            case 4: text += QStringLiteral("<EFFECT-ENTRY>\n"); break;
            case 5: text += QStringLiteral("</property></effect>\"'&amp;&#10;]]><!--"); break;
            case 6: text += QStringLiteral(" \t\r\n "); break;
            case 7: text += QChar(static_cast<char16_t>(0xFFF8 + below(8))); break;
            default: text += QChar(static_cast<char16_t>(m_random() % 0x10000));
            }
        }
        return text;
    }

private:
    std::mt19937 m_random;
};

void fillAtRandom(Effect &effect, RandomTexts &texts)
{
    for (const auto &[key, text] : placement) {
        if (texts.below(4) > 0)
            effect.setProperty(QString::fromLatin1(key), texts.next());
    }
    effect.setProperty(QStringLiteral("comment"), texts.next());
}

void growAtRandom(MetaStage &stage, MetaEffect &parent, RandomTexts &texts, int depth)
{
    for (int count = texts.below(5); count > 0; --count) {
        Effect *child = nullptr;
        if (depth > 0 && texts.below(2) == 0) {
            auto *nested = new OpenMetaEffect(&stage.map, 0);
            growAtRandom(stage, *nested, texts, depth - 1);
            if (texts.below(2) == 0)
                nested->with("loop", texts.next()).with("brightness", texts.next());
            nested->init();
            child = nested;
        } else {
            child = new StubEffect(&stage.map);
        }
        fillAtRandom(*child, texts);
        parent.addChild(child);
    }
}

} // namespace

class tst_SaveAndLoad : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void effectWithoutChildrenSavesOnlyItself();
    void childrenFollowInListOrderWithNothingBetween();
    void nestedChildrenStandWithinTheirParent();
    void versionAndBuildNumberAreSaved();

    void placementSurvives_data();
    void placementSurvives();
    void everyKeySurvivesAtOnce();
    void ownParametersSurvive();
    void nextEidComesBehindTheLargestLoaded();
    void loadedChildrenTakeTheirLevels();
    void loadedTimesAreTakenAsTheyAre();
    void loadedNestedEffectKeepsItsPlace();
    void loadedEffectEndsWithItsLastChild();
    void loadedEffectIsClean();
    void loadedChildrenAreHeard();

    void randomTreesComeBackByteForByte_data();
    void randomTreesComeBackByteForByte();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_SaveAndLoad::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Saving ---

void tst_SaveAndLoad::effectWithoutChildrenSavesOnlyItself()
{
    MetaStage stage;
    QString content;
    QTextStream stream(&content, QIODevice::WriteOnly);
    stage.effect.internalSave(stream);
    QCOMPARE(content, QString());

    const QString text = savedText(stage.effect);
    QCOMPARE(text.count(QStringLiteral("<effect ")), 1);
    QVERIFY(text.contains(QStringLiteral("<property key=\"type\">Meta Effect</property>")));
}

void tst_SaveAndLoad::childrenFollowInListOrderWithNothingBetween()
{
    MetaStage stage;
    QString expected;
    for (const quint32 eid : {5u, 2u, 9u})
        expected += savedText(*stage.add(eid));
    QString content;
    QTextStream stream(&content, QIODevice::WriteOnly);

    stage.effect.internalSave(stream);

    QCOMPARE(content, expected);
    const QString text = savedText(stage.effect);
    QVERIFY(text.endsWith(expected + QStringLiteral("  </effect>\n")));
}

void tst_SaveAndLoad::nestedChildrenStandWithinTheirParent()
{
    MetaStage stage;
    StubEffect *first = stage.add(1);
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 2);
    StubEffect *grandchild = stage.addTo(*nested, 3);
    StubEffect *last = stage.add(4);
    QString content;
    QTextStream stream(&content, QIODevice::WriteOnly);

    stage.effect.internalSave(stream);

    QCOMPARE(content, savedText(*first) + savedText(*nested) + savedText(*last));
    QVERIFY(savedText(*nested).contains(savedText(*grandchild)));
}

void tst_SaveAndLoad::versionAndBuildNumberAreSaved()
{
    MetaStage stage;

    QVERIFY(savedText(stage.effect)
                .trimmed()
                .startsWith(QStringLiteral(
                    "<effect type=\"Meta Effect\" version=\"1.9.1\" build=\"1\">\n")));
}

// --- Loading ---

void tst_SaveAndLoad::placementSurvives_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    for (const auto &[key, text] : placement)
        QTest::newRow(key) << QString::fromLatin1(key) << QString::fromLatin1(text);
}

void tst_SaveAndLoad::placementSurvives()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    MetaStage stage;
    stage.add(1)->setProperty(key, text);
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 2);
    nested->init();
    nested->setProperty(key, text);

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    const EffectList children = loaded->getEffects();
    QCOMPARE(children.count(), 2);
    for (const Effect *child : children)
        QCOMPARE(child->getPropertyString(key), text);
}

void tst_SaveAndLoad::everyKeySurvivesAtOnce()
{
    MetaStage stage;
    StubEffect *child = stage.add(0);
    for (const auto &[key, text] : placement)
        child->with(key, QString::fromLatin1(text));
    const QStringList before = values(*child);
    QCOMPARE(before.count(), static_cast<qsizetype>(std::size(placement)) + 1); // "type"

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    QCOMPARE(values(*loaded->getEffects().at(0)), before);
}

void tst_SaveAndLoad::ownParametersSurvive()
{
    MetaStage stage;
    stage.effect.with("loop", QStringLiteral("0")).with("brightness", QStringLiteral("0.25"));
    stage.effect.with("gid", 4).with("comment", QStringLiteral("x"));

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    QCOMPARE(values(*loaded), values(stage.effect));
}

void tst_SaveAndLoad::nextEidComesBehindTheLargestLoaded()
{
    MetaStage stage;
    for (const quint32 eid : {4u, 9u, 1u})
        stage.add(eid);
    const auto loaded = load(stage, savedText(stage.effect));
    QVERIFY(loaded);
    QString text = savedText(*stage.effect.getEffect(1));

    loaded->pasteEffect(text);

    QCOMPARE(loaded->getEffects().count(), 4);
    QVERIFY(loaded->getEffect(10));
}

void tst_SaveAndLoad::loadedChildrenTakeTheirLevels()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    stage.addTo(*nested, 1);

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    const MetaEffect *loadedNested = asMeta(loaded->getEffect(1));
    QVERIFY(loadedNested);
    QCOMPARE(EffectHost::level(*loaded), 0);
    QCOMPARE(EffectHost::level(*loadedNested), 1);
    QCOMPARE(EffectHost::level(*loadedNested->getEffect(1)), 2);

    stage.effect.addChild(load(stage, savedText(stage.effect)).release());
    const Effect *adopted = stage.effect.getEffects().at(1);
    QCOMPARE(EffectHost::level(*adopted), 1);
}

void tst_SaveAndLoad::loadedTimesAreTakenAsTheyAre()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("startfixedtime", 500).with("endtype", 0).with("endfixedtime", 500);
    child->with("begin", 11).with("end", 22);
    StubEffect *broken = stage.add(2);
    broken->with("starttype", 1).with("startlinkeid", 99).with("begin", 33).with("end", 44);
    const QStringList before = values(*child) + values(*broken);

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    QCOMPARE(values(*loaded->getEffect(1)) + values(*loaded->getEffect(2)), before);
    QCOMPARE(m_debugLines->lines(), QStringList());
}

void tst_SaveAndLoad::loadedNestedEffectKeepsItsPlace()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    stage.addTo(*nested, 1)->with("end", 700);
    nested->init();
    nested->with("begin", 1000).with("end", 3000);

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    const Effect *loadedNested = loaded->getEffect(1);
    QCOMPARE(loadedNested->beginTime(), 1000u);
    QCOMPARE(loadedNested->endTime(), 3000u);
}

void tst_SaveAndLoad::loadedEffectEndsWithItsLastChild()
{
    MetaStage stage;
    stage.add(1)->with("end", 700);
    stage.add(2)->with("end", 300);
    stage.effect.with("begin", 55).with("end", 99);

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    QCOMPARE(loaded->beginTime(), 0u);
    QCOMPARE(loaded->endTime(), 700u);
}

void tst_SaveAndLoad::loadedEffectIsClean()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    stage.addTo(*nested, 1)->with("name", QStringLiteral("x"));
    stage.add(2)->with("end", 300);
    stage.effect.setOwnDirty(true);

    const auto loaded = load(stage, savedText(stage.effect));

    QVERIFY(loaded);
    QVERIFY(!loaded->isDirty());
}

void tst_SaveAndLoad::loadedChildrenAreHeard()
{
    MetaStage stage;
    stage.add(1)->with("endtype", 2).with("endcyclecount", 2);
    const auto loaded = load(stage, savedText(stage.effect));
    QVERIFY(loaded);
    auto *child = qobject_cast<StubEffect *>(loaded->getEffect(1));
    QVERIFY(child);
    QCOMPARE(child->endTime(), 0u);

    child->setCycleTime(450);

    QCOMPARE(child->endTime(), 900u);
}

// --- Round trips ---

void tst_SaveAndLoad::randomTreesComeBackByteForByte_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 200; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void tst_SaveAndLoad::randomTreesComeBackByteForByte()
{
    QFETCH(quint32, seed);
    MetaStage stage;
    RandomTexts texts(seed);
    growAtRandom(stage, stage.effect, texts, 3);
    if (texts.below(2) == 0)
        stage.effect.with("loop", texts.next()).with("brightness", texts.next());
    stage.effect.with("name", texts.next());
    stage.effect.init();
    const QString saved = savedText(stage.effect);

    const auto loaded = load(stage, saved);
    QVERIFY(loaded);
    QCOMPARE(savedText(*loaded), saved);
    QCOMPARE(values(*loaded), values(stage.effect));

    // The bytes of a file, which is UTF-8.
    const auto loadedFromBytes = load(stage, QString::fromUtf8(saved.toUtf8()));
    QVERIFY(loadedFromBytes);
    QCOMPARE(savedText(*loadedFromBytes), saved);
}

QTEST_GUILESS_MAIN(tst_SaveAndLoad)
#include "tst_SaveAndLoad.moc"
