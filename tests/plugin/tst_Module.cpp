#include "EffectFactory.h"
#include "EffectHost.h"
#include "LogCapture.h"
#include "Player.h"
#include "PluginModule.h"
#include "StageMap.h"
#include "StubEffect.h"

#include <QLibrary>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <memory>
#include <optional>

using rehearsal::FileFault;
using rehearsal::PluginModule;

namespace {

const QString moduleFile = QStringLiteral(META_MODULE);

QString textOf(const Effect &effect, const char *key)
{
    return effect.getPropertyString(QString::fromLatin1(key));
}

} // namespace

/// The plug-in as a host gets it: loaded, and bound to this program's own host classes.
class tst_Module : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void entryIsExportedUnderItsPlainName();
    void entryMakesAMetaEffect();
    void everyCallMakesAnotherEffect();
    void effectKnowsTheMapItWasMadeFor();
    void classesOfTheHostAreTheProgramsOwn();

    void factoryKnowsTheTypeOfTheModule();
    void nestedEffectsAreBuiltFromText();
    void childIsHeardAcrossTheBorder();
    void slotsAreCalledByName();
    void childrenAreDeletedAcrossTheBorder();
    void loadedEffectPlays();

    void fileThatIsNoModuleIsAFault_data();
    void fileThatIsNoModuleIsAFault();

private:
    std::unique_ptr<rehearsal::StageMap> m_map;
    std::unique_ptr<rehearsal::EffectFactory> m_factory;
    std::unique_ptr<Effect> m_effect;
    std::optional<LogCapture> m_debugLines;
};

void tst_Module::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
    FileFault fault;
    const auto module = PluginModule::load(moduleFile, &fault);
    QVERIFY2(module, qPrintable(fault.message()));
    m_map = std::make_unique<rehearsal::StageMap>();
    m_factory = std::make_unique<rehearsal::EffectFactory>(*m_map);
    m_factory->addType(QStringLiteral("Stub"), [](MapModel *map) { return new StubEffect(map); });
    module->addTo(*m_factory);
    m_effect.reset(m_factory->effectMaker(QStringLiteral("Meta Effect")));
    QVERIFY(m_effect);
}

void tst_Module::cleanup()
{
    m_effect.reset();
    m_factory.reset();
    m_map.reset();
    m_debugLines.reset();
}

// --- The entry ---

void tst_Module::entryIsExportedUnderItsPlainName()
{
    QLibrary library(moduleFile);
    library.setLoadHints(QLibrary::PreventUnloadHint);
    QVERIFY2(library.load(), qPrintable(library.errorString()));

    const auto entry =
        reinterpret_cast<Effect *(*)(MapModel *, unsigned long)>(library.resolve("createEffect"));

    QVERIFY(entry);
    const std::unique_ptr<Effect> effect(entry(m_map.get(), 12345));
    QCOMPARE(effect->metaObject()->className(), "MetaEffect");
    // Until there is a frame, the base of this host keeps the argument where a frame's stands.
    auto *child = new StubEffect(m_map.get(), 1);
    effect->addChild(child);
    effect->internalUpdateLights();
    QCOMPARE(child->frameArg(), 12345ul);
}

void tst_Module::entryMakesAMetaEffect()
{
    QCOMPARE(m_effect->metaObject()->className(), "MetaEffect");
    QCOMPARE(m_effect->metaObject()->superClass()->className(), "Effect");
    QCOMPARE(textOf(*m_effect, "type"), QStringLiteral("Meta Effect"));
    QCOMPARE(m_effect->getVersion(), QStringLiteral("1.9.1"));
    QCOMPARE(m_effect->getBuildNumber(), 1);
    QVERIFY(EffectHost::holdsEffects(*m_effect));
}

void tst_Module::everyCallMakesAnotherEffect()
{
    const std::unique_ptr<Effect> other(m_factory->effectMaker(QStringLiteral("Meta Effect")));

    other->setProperty(QStringLiteral("brightness"), QStringLiteral("0.5"));

    QVERIFY(other.get() != m_effect.get());
    QCOMPARE(textOf(*m_effect, "brightness"), QStringLiteral("1"));
}

void tst_Module::effectKnowsTheMapItWasMadeFor()
{
    const rehearsal::StageLight *light = m_map->addLight(1, QString(), {});
    m_effect->setProperty(QStringLiteral("brightness"), QStringLiteral("0.5"));
    rehearsal::Player player(*m_map, {m_effect.get()});
    player.start();

    player.frame(QTime(12, 0), 0);

    QCOMPARE(light->factor(), 0.5);
}

void tst_Module::classesOfTheHostAreTheProgramsOwn()
{
    QCOMPARE(m_effect->metaObject()->superClass(), &Effect::staticMetaObject);
}

// --- Through the factory ---

void tst_Module::factoryKnowsTheTypeOfTheModule()
{
    QCOMPARE(m_factory->getEffectNames(), QStringList({"Meta Effect", "Stub"}));
}

void tst_Module::nestedEffectsAreBuiltFromText()
{
    const QString text = QStringLiteral(
        "<effect type=\"Meta Effect\">"
        "<effect type=\"Meta Effect\"><property key=\"eid\">4</property>"
        "<property key=\"begin\">100</property><property key=\"end\">900</property>"
        "<effect type=\"Stub\"><property key=\"end\">700</property></effect></effect>"
        "<effect type=\"Stub\"><property key=\"end\">300</property></effect></effect>");

    const std::unique_ptr<Effect> effect(m_factory->createEffect(text));

    QVERIFY(effect);
    QCOMPARE(effect->endTime(), 900u);
    QString saved;
    QTextStream stream(&saved, QIODevice::WriteOnly);
    effect->save(stream);
    QStringList starts;
    const QRegularExpression start(QStringLiteral("( *)<effect type=\"([^\"]*)\""));
    for (auto match = start.globalMatch(saved); match.hasNext();) {
        const auto found = match.next();
        starts.append(found.captured(1) + found.captured(2));
    }
    QCOMPARE(starts, QStringList({"  Meta Effect", "    Meta Effect", "      Stub", "    Stub"}));
    const std::unique_ptr<Effect> again(m_factory->createEffect(saved));
    QVERIFY(again);
    QString savedAgain;
    QTextStream streamAgain(&savedAgain, QIODevice::WriteOnly);
    again->save(streamAgain);
    QCOMPARE(savedAgain, saved);
}

void tst_Module::childIsHeardAcrossTheBorder()
{
    auto *child = new StubEffect(m_map.get(), 3);
    child->with("startfixedtime", 1000).with("endtype", 2).with("endcyclecount", 3);
    m_effect->addChild(child);

    child->setCycleTime(1500);

    QCOMPARE(child->beginTime(), 1000u);
    QCOMPARE(child->endTime(), 5500u);
}

void tst_Module::slotsAreCalledByName()
{
    auto *child = new StubEffect(m_map.get(), 3);
    child->with("end", 800);
    m_effect->addChild(child);
    QStringList noted;
    connect(m_effect.get(), &Effect::cycleTimeChanged, this,
            [&noted](unsigned long time) { noted.append(QString::number(time)); });

    QVERIFY(QMetaObject::invokeMethod(m_effect.get(), "updateEndTime", Qt::DirectConnection));

    QCOMPARE(m_effect->endTime(), 800u);
    QCOMPARE(noted, QStringList({"800"}));
}

void tst_Module::childrenAreDeletedAcrossTheBorder()
{
    int deletions = 0;
    for (quint32 eid = 0; eid < 3; ++eid) {
        auto *child = new StubEffect(m_map.get(), eid);
        child->deletions = &deletions;
        m_effect->addChild(child);
    }

    m_effect.reset();

    QCOMPARE(deletions, 3);
}

void tst_Module::loadedEffectPlays()
{
    auto *child = new StubEffect(m_map.get(), 1);
    child->with("begin", 1000).with("end", 2000).with("priority", 2);
    m_effect->addChild(child);
    m_effect->setProperty(QStringLiteral("priority"), QStringLiteral("40"));
    rehearsal::Player player(*m_map, {m_effect.get()});
    player.start();

    for (const int ms : {0, 999, 1000, 1999, 2000, 2999, 3000})
        player.frame(QTime(12, 0).addMSecs(ms), 0);

    QCOMPARE(child->drawnPriorities, QStringList({"42", "42", "42"}));
}

// --- What is no module ---

void tst_Module::fileThatIsNoModuleIsAFault_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("missing") << QStringLiteral("missing.so");
    QTest::newRow("text") << QStringLiteral("text.so");
}

void tst_Module::fileThatIsNoModuleIsAFault()
{
    QFETCH(QString, file);
    QTemporaryDir folder;
    QFile text(folder.filePath(QStringLiteral("text.so")));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("not a library\n") > 0);
    text.close();
    FileFault fault;

    const auto module = PluginModule::load(folder.filePath(file), &fault);

    QVERIFY(!module);
    QCOMPARE(fault.file, folder.filePath(file));
    QVERIFY(!fault.what.isEmpty() && !fault.what.contains(u'\n'));
}

QTEST_GUILESS_MAIN(tst_Module)
#include "tst_Module.moc"
