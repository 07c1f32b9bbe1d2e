#include "Effect.h"
#include "EffectFactory.h"
#include "EffectHost.h"
#include "EffectTypes.h"
#include "StageEffect.h"
#include "StageMap.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using rehearsal::EffectFactory;
using rehearsal::PropertyStore;
using rehearsal::StageEffect;
using rehearsal::StageLight;
using rehearsal::StageMap;

namespace {

constexpr auto noGroup = "0";
constexpr auto chasing = "10";
constexpr auto synchronized = "11";
constexpr auto leaf = "12";
constexpr auto empty = "13";
constexpr auto missing = "14";
constexpr auto many = "15";

const QTime start(12, 0);

/// Four lights in one group of each type, a large group, and the host's effect types.
struct Stage
{
    Stage()
    {
        QList<StageLight *> lights;
        for (quint32 uid = 1; uid <= 4; ++uid)
            lights.append(map.addLight(uid, QString(), {}));
        // In an order that is not that of the uids.
        const QList<StageLight *> order{lights[2], lights[0], lights[3], lights[1]};
        map.addGroup(10, QString(), ChasingGroup, order);
        map.addGroup(11, QString(), SynchronizedGroup, order);
        map.addGroup(12, QString(), LeafGroup, {lights[2]});
        map.addGroup(13, QString(), ChasingGroup, {});
        QList<StageLight *> manyLights;
        for (quint32 uid = 101; uid <= 500; ++uid)
            manyLights.append(map.addLight(uid, QString(), {}));
        map.addGroup(15, QString(), ChasingGroup, manyLights);
        rehearsal::addHostTypes(factory);
    }

    /// A running effect with "key=text" properties, separated by blanks.
    std::unique_ptr<Effect> make(const QString &type, const QString &properties, const QString &gid)
    {
        std::unique_ptr<Effect> effect(factory.make(type));
        effect->setProperty(QStringLiteral("gid"), gid);
        for (const QString &property : properties.split(u' ', Qt::SkipEmptyParts))
            effect->setProperty(property.section(u'=', 0, 0), property.section(u'=', 1));
        effect->setStartTime(start);
        effect->setState(true);
        return effect;
    }

    /// One frame, `ms` after the effect's start.
    void draw(Effect &effect, int ms)
    {
        map.resetLights();
        effect.updateLights(start.addMSecs(ms), 0);
    }

    /// What the lights show in the group's order; a dot for a light that was not drawn.
    QString shown(quint32 gid = 10) const
    {
        QStringList texts;
        for (const StageLight *light : map.group(gid)->lights()) {
            const bool isUntouched = light->priority() == 0 && light->level() == 0;
            texts.append(isUntouched ? QStringLiteral(".")
                                     : QString::number(light->level(), 'f', 3));
        }
        return texts.join(u' ');
    }

    StageMap map;
    EffectFactory factory{map};
};

/// What is declared for the parameter editor: "key=text".
QStringList declaredOf(const Effect &effect)
{
    QStringList declared;
    for (const PropertyStore::Property &property : EffectHost::properties(effect)) {
        if (property.declared)
            declared.append(property.key + u'=' + property.text);
    }
    return declared;
}

} // namespace

class tst_HostEffects : public QObject
{
    Q_OBJECT

private slots:
    void typesAreCompleteAndBringTheirDefaults_data();
    void typesAreCompleteAndBringTheirDefaults();
    void newEffectIsClean();

    void drawsAtDecisiveMoments_data();
    void drawsAtDecisiveMoments();
    void synchronizedGroupShowsWhatTheFirstWould_data();
    void synchronizedGroupShowsWhatTheFirstWould();
    void leafGroupIsOneLight_data();
    void leafGroupIsOneLight();
    void nothingIsDrawnWithoutLights_data();
    void nothingIsDrawnWithoutLights();
    void effectWithoutMapDrawsNothing();
    void stoppedEffectDrawsNothing();

    void transparencyBlendsWithWhatIsThere_data();
    void transparencyBlendsWithWhatIsThere();
    void drawingBelowTheLightsPriorityIsIgnored();
    void drawingTakesThePriority();
    void unlitPlacesAreDrawnDark();

    void garbageDrawsBetweenDarkAndFull_data();
    void garbageDrawsBetweenDarkAndFull();

    void twinkleChoiceIsRepeatable();
    void twinkleChoiceFollowsCycleSeedAndPlace();
    void twinkleDensityIsTheProbability_data();
    void twinkleDensityIsTheProbability();
    void twinkleChoiceIsTheSameOnEveryMachine();

    void changedCycleTimeIsAnnouncedOnce_data();
    void changedCycleTimeIsAnnouncedOnce();
    void unchangedCycleTimeIsNotAnnounced_data();
    void unchangedCycleTimeIsNotAnnounced();

    void thereIsNoEditorWithoutAMaker();
};

void tst_HostEffects::typesAreCompleteAndBringTheirDefaults_data()
{
    QTest::addColumn<QStringList>("declared");
    QTest::newRow("Solid") << QStringList{"cycletime=1000", "level=1"};
    QTest::newRow("Ramp") << QStringList{"cycletime=1000", "from=0", "to=1"};
    QTest::newRow("Chase") << QStringList{"cycletime=1000", "width=1", "level=1"};
    QTest::newRow("Pulse") << QStringList{"cycletime=1000", "low=0", "high=1"};
    QTest::newRow("Strobe") << QStringList{"cycletime=1000", "duty=0.1", "level=1"};
    QTest::newRow("Twinkle") << QStringList{"cycletime=1000", "seed=1", "density=0.3", "level=1"};
    QTest::newRow("White Fade") << QStringList{"cycletime=1000"};
}

void tst_HostEffects::typesAreCompleteAndBringTheirDefaults()
{
    QFETCH(QStringList, declared);
    const QString type = QString::fromLatin1(QTest::currentDataTag());
    Stage stage;
    QCOMPARE(stage.factory.typeNames().size(), 7);
    const std::unique_ptr<Effect> effect(stage.factory.make(type));
    QVERIFY(effect);
    QCOMPARE(declaredOf(*effect), declared);
    QCOMPARE(effect->getPropertyString(QStringLiteral("type")), type);
    QCOMPARE(effect->getCycleTime(), 1000ul);
    QCOMPARE(effect->getVersion(), QStringLiteral("1.0"));
    QCOMPARE(effect->getBuildNumber(), 1);
    QVERIFY(!EffectHost::holdsEffects(*effect));
}

void tst_HostEffects::newEffectIsClean()
{
    Stage stage;
    for (const QString &type : stage.factory.typeNames()) {
        const std::unique_ptr<Effect> effect(stage.factory.make(type));
        QVERIFY2(!effect->isDirty(), qPrintable(type));
        effect->setProperty(QStringLiteral("cycletime"), QStringLiteral("1001"));
        QVERIFY2(effect->isDirty(), qPrintable(type));
    }
}

void tst_HostEffects::drawsAtDecisiveMoments_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("properties");
    QTest::addColumn<int>("ms");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *type, const char *properties, int ms, const char *expected) {
        QTest::addRow("%s %s at %d", type, properties, ms)
            << QString::fromLatin1(type) << QString::fromLatin1(properties) << ms
            << QString::fromLatin1(expected);
    };
    // The priority makes a light that was drawn dark differ from one that was not drawn.
    row("Solid", "priority=1", 0, "1.000 1.000 1.000 1.000");
    row("Solid", "priority=1 level=0.25", 999, "0.250 0.250 0.250 0.250");
    row("Solid", "priority=1 level=0", 0, "0.000 0.000 0.000 0.000");

    row("Ramp", "priority=1 begin=1000 end=3000", 0, "0.000 0.000 0.000 0.000");
    row("Ramp", "priority=1 begin=1000 end=3000", 1, "0.001 0.001 0.001 0.001");
    row("Ramp", "priority=1 begin=1000 end=3000", 1000, "0.500 0.500 0.500 0.500");
    row("Ramp", "priority=1 begin=1000 end=3000", 2000, "1.000 1.000 1.000 1.000");
    row("Ramp", "priority=1 begin=1000 end=3000", 5000, "1.000 1.000 1.000 1.000");
    row("Ramp", "priority=1 end=1000 from=0.8 to=0.2", 500, "0.500 0.500 0.500 0.500");
    row("Ramp", "priority=1 end=1000 from=0.8 to=0.2", 1000, "0.200 0.200 0.200 0.200");
    row("Ramp", "priority=1 begin=700 end=700 cycletime=2000", 500, "0.250 0.250 0.250 0.250");
    row("Ramp", "priority=1 begin=700 end=700 cycletime=2000", 2500, "0.250 0.250 0.250 0.250");
    row("Ramp", "priority=1 begin=700 end=600", 250, "0.250 0.250 0.250 0.250");
    row("Ramp", "priority=1 from=0.4 cycletime=0", 250, "0.400 0.400 0.400 0.400");

    row("White Fade", "priority=1 end=4000", 0, "0.000 0.000 0.000 0.000");
    row("White Fade", "priority=1 end=4000", 1000, "0.250 0.250 0.250 0.250");
    row("White Fade", "priority=1 end=4000", 4000, "1.000 1.000 1.000 1.000");
    row("White Fade", "priority=1", 750, "0.750 0.750 0.750 0.750");
    row("White Fade", "priority=1", 1000, "0.000 0.000 0.000 0.000");
    row("White Fade", "priority=1 cycletime=0", 1000, "0.000 0.000 0.000 0.000");

    row("Chase", "priority=1", 0, "1.000 0.000 0.000 0.000");
    row("Chase", "priority=1", 249, "1.000 0.000 0.000 0.000");
    row("Chase", "priority=1", 250, "0.000 1.000 0.000 0.000");
    row("Chase", "priority=1", 999, "0.000 0.000 0.000 1.000");
    row("Chase", "priority=1", 1000, "1.000 0.000 0.000 0.000");
    row("Chase", "priority=1 width=2 level=0.5", 500, "0.000 0.000 0.500 0.500");
    row("Chase", "priority=1 width=2", 750, "1.000 0.000 0.000 1.000");
    row("Chase", "priority=1 width=3", 500, "1.000 0.000 1.000 1.000");
    row("Chase", "priority=1 width=0", 0, "0.000 0.000 0.000 0.000");
    row("Chase", "priority=1 width=4", 250, "1.000 1.000 1.000 1.000");
    row("Chase", "priority=1 width=4294967295", 250, "1.000 1.000 1.000 1.000");
    row("Chase", "priority=1 cycletime=0", 77, "1.000 0.000 0.000 0.000");
    row("Chase", "priority=1 cycletime=3", 1, "0.000 1.000 0.000 0.000");
    row("Chase", "priority=1 cycletime=4294967295", 86399999, "1.000 0.000 0.000 0.000");

    row("Pulse", "priority=1", 0, "0.000 0.000 0.000 0.000");
    row("Pulse", "priority=1", 250, "0.500 0.500 0.500 0.500");
    row("Pulse", "priority=1", 500, "1.000 1.000 1.000 1.000");
    row("Pulse", "priority=1", 125, "0.146 0.146 0.146 0.146");
    row("Pulse", "priority=1", 1000, "0.000 0.000 0.000 0.000");
    row("Pulse", "priority=1 low=0.2 high=0.6", 0, "0.200 0.200 0.200 0.200");
    row("Pulse", "priority=1 low=0.2 high=0.6", 500, "0.600 0.600 0.600 0.600");
    row("Pulse", "priority=1 low=0.2 cycletime=0", 500, "0.200 0.200 0.200 0.200");

    row("Strobe", "priority=1", 0, "1.000 1.000 1.000 1.000");
    row("Strobe", "priority=1", 99, "1.000 1.000 1.000 1.000");
    row("Strobe", "priority=1", 100, "0.000 0.000 0.000 0.000");
    row("Strobe", "priority=1", 999, "0.000 0.000 0.000 0.000");
    row("Strobe", "priority=1 level=0.5", 1000, "0.500 0.500 0.500 0.500");
    row("Strobe", "priority=1 duty=0", 0, "0.000 0.000 0.000 0.000");
    row("Strobe", "priority=1 duty=1", 999, "1.000 1.000 1.000 1.000");
    row("Strobe", "priority=1 duty=0.7", 699, "1.000 1.000 1.000 1.000");
    row("Strobe", "priority=1 duty=0.7", 700, "0.000 0.000 0.000 0.000");
    row("Strobe", "priority=1 cycletime=0", 500, "1.000 1.000 1.000 1.000");

    row("Twinkle", "priority=1 density=1 level=0.5", 0, "0.500 0.500 0.500 0.500");
    row("Twinkle", "priority=1 density=0", 0, "0.000 0.000 0.000 0.000");
}

void tst_HostEffects::drawsAtDecisiveMoments()
{
    QFETCH(QString, type);
    QFETCH(QString, properties);
    QFETCH(int, ms);
    QFETCH(QString, expected);
    Stage stage;
    const auto effect = stage.make(type, properties, chasing);
    stage.draw(*effect, ms);
    QCOMPARE(stage.shown(), expected);
}

void tst_HostEffects::synchronizedGroupShowsWhatTheFirstWould_data()
{
    QTest::addColumn<QString>("properties");
    QTest::addColumn<int>("ms");
    QTest::newRow("Chase") << "width=2 level=0.5" << 0;
    QTest::newRow("Chase, the first unlit") << "width=2 level=0.5" << 250;
    QTest::newRow("Chase, the window wraps") << "width=2 level=0.5" << 750;
    QTest::newRow("Twinkle") << "density=0.5" << 0;
    QTest::newRow("Twinkle, later") << "density=0.5" << 3000;
    QTest::newRow("Pulse") << "low=0.1 high=0.9" << 250;
    QTest::newRow("Strobe") << "" << 50;
}

void tst_HostEffects::synchronizedGroupShowsWhatTheFirstWould()
{
    QFETCH(QString, properties);
    QFETCH(int, ms);
    const QString type = QString::fromLatin1(QTest::currentDataTag()).section(u',', 0, 0);
    Stage stage;
    const auto single = stage.make(type, properties + " priority=1", chasing);
    stage.draw(*single, ms);
    const QString first = stage.shown().section(u' ', 0, 0);
    const auto effect = stage.make(type, properties + " priority=1", synchronized);
    stage.draw(*effect, ms);
    QCOMPARE(stage.shown(), QStringList(4, first).join(u' '));
}

void tst_HostEffects::leafGroupIsOneLight_data()
{
    QTest::addColumn<QString>("properties");
    QTest::addColumn<int>("ms");
    QTest::newRow("Solid") << "" << 0;
    QTest::newRow("Ramp") << "end=1000" << 1000;
    QTest::newRow("White Fade") << "end=1000" << 1000;
    QTest::newRow("Chase") << "" << 0;
    QTest::newRow("Chase, end of the cycle") << "" << 999;
    QTest::newRow("Pulse") << "" << 500;
    QTest::newRow("Strobe") << "" << 0;
    QTest::newRow("Twinkle") << "density=1" << 0;
}

void tst_HostEffects::leafGroupIsOneLight()
{
    QFETCH(QString, properties);
    QFETCH(int, ms);
    const QString type = QString::fromLatin1(QTest::currentDataTag()).section(u',', 0, 0);
    Stage stage;
    const auto effect = stage.make(type, properties, leaf);
    stage.draw(*effect, ms);
    QCOMPARE(stage.shown(), QStringLiteral("1.000 . . ."));
}

void tst_HostEffects::nothingIsDrawnWithoutLights_data()
{
    QTest::addColumn<QString>("gid");
    QTest::newRow("no group") << noGroup;
    QTest::newRow("no such group") << missing;
    QTest::newRow("no lights in the group") << empty;
    QTest::newRow("not a number") << "roof";
    QTest::newRow("no text") << "";
}

void tst_HostEffects::nothingIsDrawnWithoutLights()
{
    QFETCH(QString, gid);
    Stage stage;
    for (const QString &type : stage.factory.typeNames()) {
        const auto effect = stage.make(type, "level=1 low=1 from=1 density=1 priority=1", gid);
        stage.draw(*effect, 0);
        QCOMPARE(stage.shown(), QStringLiteral(". . . ."));
    }
}

void tst_HostEffects::effectWithoutMapDrawsNothing()
{
    struct Bare final : StageEffect
    {
        Bare() : StageEffect(nullptr, QStringLiteral("Bare")) {}
        void internalUpdateLights() override
        {
            draw([this](quint32, quint32) {
                ++asked;
                return 1.0;
            });
        }
        int asked = 0;
    };
    Bare effect;
    effect.setProperty(QStringLiteral("gid"), chasing);
    effect.setState(true);
    effect.updateLights(start, 0);
    QCOMPARE(effect.asked, 0);
}

void tst_HostEffects::stoppedEffectDrawsNothing()
{
    Stage stage;
    const auto effect = stage.make("Solid", "priority=1", chasing);
    effect->setState(false);
    stage.draw(*effect, 0);
    QCOMPARE(stage.shown(), QStringLiteral(". . . ."));
}

void tst_HostEffects::transparencyBlendsWithWhatIsThere_data()
{
    QTest::addColumn<QString>("transparency");
    QTest::addColumn<QString>("expected");
    QTest::newRow("opaque") << "0"
                            << "0.500";
    QTest::newRow("half") << "0.5"
                          << "0.650";
    QTest::newRow("invisible") << "1"
                               << "0.800";
    QTest::newRow("beyond invisible") << "7"
                                      << "0.800";
    QTest::newRow("negative") << "-1"
                              << "0.500";
    QTest::newRow("not a number") << "nan"
                                  << "0.500";
    QTest::newRow("no number") << "x"
                               << "0.500";
    QTest::newRow("infinite") << "inf"
                              << "0.800";
}

void tst_HostEffects::transparencyBlendsWithWhatIsThere()
{
    QFETCH(QString, transparency);
    QFETCH(QString, expected);
    Stage stage;
    const auto below = stage.make("Solid", "level=0.8", leaf);
    const auto effect = stage.make("Solid", "level=0.5 transparency=" + transparency, leaf);
    stage.draw(*below, 0);
    effect->updateLights(start, 0);
    QCOMPARE(stage.shown(12), expected);
}

void tst_HostEffects::drawingBelowTheLightsPriorityIsIgnored()
{
    Stage stage;
    const auto high = stage.make("Solid", "level=0.8 priority=5", leaf);
    const auto low = stage.make("Solid", "level=0.3 priority=4", leaf);
    const auto equal = stage.make("Solid", "level=0.6 priority=5", leaf);
    stage.draw(*high, 0);
    low->updateLights(start, 0);
    QCOMPARE(stage.shown(12), QStringLiteral("0.800"));
    equal->updateLights(start, 0);
    QCOMPARE(stage.shown(12), QStringLiteral("0.600"));
}

void tst_HostEffects::drawingTakesThePriority()
{
    Stage stage;
    const auto effect = stage.make("Chase", "priority=3", chasing);
    stage.draw(*effect, 0);
    for (const StageLight *light : stage.map.group(10)->lights())
        QCOMPARE(light->priority(), 3);
}

void tst_HostEffects::unlitPlacesAreDrawnDark()
{
    Stage stage;
    const auto below = stage.make("Solid", "level=0.8", chasing);
    const auto chase = stage.make("Chase", "priority=1", chasing);
    stage.draw(*below, 0);
    chase->updateLights(start.addMSecs(250), 0);
    QCOMPARE(stage.shown(), QStringLiteral("0.000 1.000 0.000 0.000"));
}

void tst_HostEffects::garbageDrawsBetweenDarkAndFull_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("expected"); // at a quarter of the cycle

    const auto row = [](const char *type, const char *property, const char *expected) {
        QTest::addRow("%s %s", type, property) << type << property << expected;
    };
    const auto dark = "0.000 0.000 0.000 0.000";
    const auto full = "1.000 1.000 1.000 1.000";
    const auto second = "0.000 1.000 0.000 0.000";
    for (const char *level : {"level=nan", "level=-inf", "level=-0.5", "level=x", "level="}) {
        row("Solid", level, dark);
        row("Chase", level, dark);
    }
    row("Solid", "level=inf", full);
    row("Solid", "level=1.5", full);
    row("Chase", "level=1e300", second);
    row("Chase", "width=-1", dark);
    row("Chase", "width=1.5", dark);
    row("Chase", "width=4294967296", dark);
    row("Ramp", "from=nan", dark);
    row("Ramp", "to=nan", dark);
    row("Ramp", "to=inf", full);
    row("Ramp", "to=-inf", dark);
    row("Ramp", "from=inf", full);
    row("Ramp", "to=2", "0.500 0.500 0.500 0.500");
    row("Ramp", "to=100", full);
    row("Ramp", "cycletime=x", dark);
    row("White Fade", "cycletime=-1", dark);
    row("Pulse", "low=nan", dark);
    row("Pulse", "high=inf", full);
    row("Pulse", "low=-1", dark);
    row("Pulse", "high=3", full);
    row("Strobe", "duty=nan", dark);
    row("Strobe", "duty=inf", full);
    row("Strobe", "duty=-0.1", dark);
    row("Strobe", "duty=2", full);
    row("Twinkle", "density=nan", dark);
    row("Twinkle", "density=-1", dark);
    row("Twinkle", "density=inf", full);
    row("Twinkle", "density=2", full);
}

void tst_HostEffects::garbageDrawsBetweenDarkAndFull()
{
    QFETCH(QString, type);
    QFETCH(QString, property);
    QFETCH(QString, expected);
    Stage stage;
    const auto effect = stage.make(type, property + " priority=1", chasing);
    stage.draw(*effect, 250);
    QCOMPARE(stage.shown(), expected);
}

void tst_HostEffects::twinkleChoiceIsRepeatable()
{
    Stage stage;
    const auto first = stage.make("Twinkle", "priority=1", many);
    const auto second = stage.make("Twinkle", "priority=1", many);
    stage.draw(*first, 4000);
    const QString shown = stage.shown(15);
    stage.draw(*first, 4999);
    QCOMPARE(stage.shown(15), shown);
    stage.draw(*first, 0);
    QVERIFY(stage.shown(15) != shown);
    stage.draw(*second, 4500);
    QCOMPARE(stage.shown(15), shown);
}

void tst_HostEffects::twinkleChoiceFollowsCycleSeedAndPlace()
{
    Stage stage;
    const auto effect = stage.make("Twinkle", "priority=1 density=0.5", many);
    QSet<QString> choices;
    for (int cycle = 0; cycle < 20; ++cycle) {
        stage.draw(*effect, cycle * 1000);
        choices.insert(stage.shown(15));
    }
    effect->setProperty(QStringLiteral("seed"), QStringLiteral("2"));
    for (int cycle = 0; cycle < 20; ++cycle) {
        stage.draw(*effect, cycle * 1000);
        choices.insert(stage.shown(15));
    }
    QCOMPARE(choices.size(), 40);
}

void tst_HostEffects::twinkleDensityIsTheProbability_data()
{
    QTest::addColumn<double>("density");
    QTest::newRow("few") << 0.05;
    QTest::newRow("default") << 0.3;
    QTest::newRow("most") << 0.9;
}

void tst_HostEffects::twinkleDensityIsTheProbability()
{
    QFETCH(double, density);
    Stage stage;
    const auto effect =
        stage.make("Twinkle", QStringLiteral("priority=1 density=%1").arg(density), many);
    constexpr int cycles = 100;
    int lit = 0;
    for (int cycle = 0; cycle < cycles; ++cycle) {
        stage.draw(*effect, cycle * 1000);
        lit += static_cast<int>(stage.shown(15).count(QStringLiteral("1.000")));
    }
    const double share = lit / (400.0 * cycles);
    QVERIFY2(qAbs(share - density) < 0.01, qPrintable(QString::number(share)));
}

void tst_HostEffects::twinkleChoiceIsTheSameOnEveryMachine()
{
    Stage stage;
    const auto effect = stage.make("Twinkle", "density=0.5", many);
    QString marks;
    for (int cycle = 0; cycle < 3; ++cycle) {
        stage.draw(*effect, cycle * 1000);
        for (quint32 uid = 101; uid <= 120; ++uid)
            marks += stage.map.light(uid)->level() > 0 ? u'#' : u'.';
        marks += u'\n';
    }
    QCOMPARE(marks, QStringLiteral("..#.#..##.###..####.\n"
                                   "#..#.#.#..#.##.###.#\n"
                                   ".###..##.##..###.#..\n"));
}

void tst_HostEffects::changedCycleTimeIsAnnouncedOnce_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("cycleTime");
    QTest::newRow("longer") << "1500" << 1500u;
    QTest::newRow("longest") << "4294967295" << 4294967295u;
    QTest::newRow("zero") << "0" << 0u;
    QTest::newRow("not a number") << "x" << 0u;
    QTest::newRow("too large") << "4294967296" << 0u;
}

void tst_HostEffects::changedCycleTimeIsAnnouncedOnce()
{
    QFETCH(QString, text);
    QFETCH(quint32, cycleTime);
    Stage stage;
    for (const QString &type : stage.factory.typeNames()) {
        const std::unique_ptr<Effect> effect(stage.factory.make(type));
        const QSignalSpy spy(effect.get(), &Effect::cycleTimeChanged);
        unsigned long atSignal = 77;
        connect(effect.get(), &Effect::cycleTimeChanged, this,
                [&] { atSignal = effect->getCycleTime(); });
        effect->setProperty(QStringLiteral("cycletime"), text);
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.first().first().value<unsigned long>(), static_cast<unsigned long>(cycleTime));
        QCOMPARE(atSignal, static_cast<unsigned long>(cycleTime));
        effect->setProperty(QStringLiteral("cycletime"), text);
        QCOMPARE(spy.size(), 1);
    }
}

void tst_HostEffects::unchangedCycleTimeIsNotAnnounced_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::newRow("same text") << "cycletime"
                               << "1000";
    QTest::newRow("same value in other words") << "cycletime"
                                               << "01000";
    QTest::newRow("another property") << "level"
                                      << "0.5";
    QTest::newRow("the end") << "end"
                             << "5000";
}

void tst_HostEffects::unchangedCycleTimeIsNotAnnounced()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    Stage stage;
    const std::unique_ptr<Effect> effect(stage.factory.make(QStringLiteral("Solid")));
    const QSignalSpy spy(effect.get(), &Effect::cycleTimeChanged);
    effect->setProperty(key, text);
    QCOMPARE(effect->getPropertyString(key), text);
    QCOMPARE(spy.size(), 0);
}

void tst_HostEffects::thereIsNoEditorWithoutAMaker()
{
    Stage stage;
    const std::unique_ptr<Effect> effect(stage.factory.make(QStringLiteral("Solid")));
    QVERIFY(!effect->internalGetEffectWidget());
}

QTEST_GUILESS_MAIN(tst_HostEffects)
#include "tst_HostEffects.moc"
