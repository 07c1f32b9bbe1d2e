#include "LogCapture.h"
#include "MetaStage.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <optional>

class tst_MetaEffectLifetime : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void childrenAreDeletedOnceWithTheEffect_data();
    void childrenAreDeletedOnceWithTheEffect();
    void linkedChildrenAreDeletedOnce();
    void childrenThatSpeakWhileDyingReachNobody();
    void nestedEffectThatDiesReachesNobody();
    void deletedChildIsNotDeletedAgain();
    void lightsAndMapOutliveTheEffect();
    void effectThatPlayedMayDieWithItsChildrenRunning();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_MetaEffectLifetime::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

void tst_MetaEffectLifetime::childrenAreDeletedOnceWithTheEffect_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<bool>("ready");

    for (const int depth : {0, 1, 3, 50}) {
        QTest::addRow("depth %d, never made ready", depth) << depth << false;
        QTest::addRow("depth %d, made ready", depth) << depth << true;
    }
}

void tst_MetaEffectLifetime::childrenAreDeletedOnceWithTheEffect()
{
    QFETCH(int, depth);
    QFETCH(bool, ready);
    int deletions = 0;
    {
        MetaStage stage;
        MetaEffect *parent = &stage.effect;
        for (int level = 0; level <= depth; ++level) {
            for (quint32 eid = 0; eid < 3; ++eid)
                stage.addTo(*parent, eid)->deletions = &deletions;
            if (level < depth)
                parent = stage.addNestedTo(*parent, 3);
            if (ready)
                parent->init();
        }
        QCOMPARE(deletions, 0);
    }
    QCOMPARE(deletions, 3 * (depth + 1));
}

void tst_MetaEffectLifetime::linkedChildrenAreDeletedOnce()
{
    int deletions = 0;
    {
        MetaStage stage;
        for (quint32 eid = 0; eid < 10; ++eid) {
            StubEffect *child = stage.add(eid);
            child->deletions = &deletions;
            if (eid > 0) {
                child->with("starttype", 1).with("startlinkeid", eid - 1);
                child->with("endtype", 1).with("endlinkeid", 0);
            }
        }
        stage.effect.updateEffectTimes();
        QVERIFY(stage.effect.legalToLink(stage.effect.getEffect(3), stage.effect.getEffect(1)));
    }
    QCOMPARE(deletions, 10);
}

void tst_MetaEffectLifetime::childrenThatSpeakWhileDyingReachNobody()
{
    int spoken = 0;
    {
        auto stage = std::make_unique<MetaStage>();
        for (quint32 eid = 0; eid < 3; ++eid) {
            stage->add(eid)->whileDying = [&spoken](StubEffect &effect) {
                ++spoken;
                effect.setCycleTime(300);
                emit effect.cycleTimeChanged(1);
            };
        }
    }
    QCOMPARE(spoken, 3);
    QCOMPARE(m_debugLines->lines(), QStringList());
}

void tst_MetaEffectLifetime::nestedEffectThatDiesReachesNobody()
{
    int spoken = 0;
    {
        MetaStage stage;
        OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
        StubEffect *grandchild = stage.addTo(*nested, 1);
        grandchild->with("end", 500);
        grandchild->whileDying = [&spoken, nested](StubEffect &effect) {
            ++spoken;
            effect.setCycleTime(300);
            emit nested->cycleTimeChanged(7);
        };
    }
    QCOMPARE(spoken, 1);
    QCOMPARE(m_debugLines->lines(), QStringList());
}

void tst_MetaEffectLifetime::deletedChildIsNotDeletedAgain()
{
    int deletions = 0;
    {
        MetaStage stage;
        for (quint32 eid = 0; eid < 4; ++eid)
            stage.add(eid)->deletions = &deletions;
        stage.effect.updateEffectTimes();
        stage.effect.deleteEffect(stage.effect.getEffect(1));
        stage.effect.deleteEffect(stage.effect.getEffect(3));
        QCOMPARE(deletions, 2);
    }
    QCOMPARE(deletions, 4);
}

void tst_MetaEffectLifetime::lightsAndMapOutliveTheEffect()
{
    rehearsal::StageMap map;
    rehearsal::StageLight *light = map.addLight(1, QStringLiteral("Roof"), {});
    auto effect = std::make_unique<OpenMetaEffect>(&map, 0);
    effect->init();
    effect->init();

    effect.reset();

    QCOMPARE(map.light(1), light);
    QCOMPARE(light->name(), QStringLiteral("Roof"));
}

void tst_MetaEffectLifetime::effectThatPlayedMayDieWithItsChildrenRunning()
{
    int deletions = 0;
    {
        MetaStage stage;
        OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
        StubEffect *grandchild = stage.addTo(*nested, 1);
        grandchild->deletions = &deletions;
        grandchild->with("end", 5000);
        nested->with("end", 5000);
        stage.effect.init();
        stage.frameAt(100);
        QCOMPARE(grandchild->draws, 1);
    }
    QCOMPARE(deletions, 1);
}

QTEST_GUILESS_MAIN(tst_MetaEffectLifetime)
#include "tst_MetaEffectLifetime.moc"
