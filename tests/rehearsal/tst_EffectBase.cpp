#include "EffectHost.h"
#include "Probe.h"

#include <QTest>

class tst_EffectBase : public QObject
{
    Q_OBJECT

private slots:
    void mirroredMembersFollowTheText_data();
    void mirroredMembersFollowTheText();
    void textFollowsTheMirroredMembers();
    void realMembersAreWrittenShortly();
    void sameTextNotifiesNobody();
    void realChangeNotifiesOnce();
    void playbackDoesNotMakeDirty_data();
    void playbackDoesNotMakeDirty();
    void initMakesClean();
    void effectWithoutNestedOnesDeletesAChild();
};

void tst_EffectBase::mirroredMembersFollowTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("time");
    QTest::addColumn<int>("priority");
    QTest::addColumn<double>("transparency");
    QTest::newRow("zero") << "0" << 0u << 0 << 0.0;
    QTest::newRow("some") << "40" << 40u << 40 << 40.0;
    QTest::newRow("fraction") << "0.25" << 0u << 0 << 0.25;
    QTest::newRow("negative") << "-1" << 0u << -1 << -1.0;
    QTest::newRow("largest") << "4294967295" << 4294967295u << -1 << 4294967295.0;
    QTest::newRow("too large") << "4294967296" << 0u << 0 << 4294967296.0;
    QTest::newRow("trailing letters") << "5s" << 0u << 0 << 0.0;
    QTest::newRow("empty") << "" << 0u << 0 << 0.0;
}

void tst_EffectBase::mirroredMembersFollowTheText()
{
    QFETCH(QString, text);
    Probe effect;
    for (const char *key : {"begin", "end", "fadein", "fadeout", "priority", "transparency"})
        effect.with(key, "77").with(key, text);
    QTEST(effect.begin(), "time");
    QTEST(effect.end(), "time");
    QTEST(effect.fadeIn(), "time");
    QTEST(effect.fadeOut(), "time");
    QTEST(effect.ownPriority(), "priority");
    QTEST(effect.transparency(), "transparency");
    QCOMPARE(effect.beginTime(), effect.begin());
    QCOMPARE(effect.endTime(), effect.end());
    QCOMPARE(effect.fadeInTime(), effect.fadeIn());
    QCOMPARE(effect.fadeOutTime(), effect.fadeOut());
    QCOMPARE(effect.priority(), effect.ownPriority());
}

void tst_EffectBase::textFollowsTheMirroredMembers()
{
    Probe effect;
    effect.begin() = 1;
    effect.end() = 4294967295u;
    effect.fadeIn() = 3;
    effect.fadeOut() = 4;
    effect.ownPriority() = -5;
    effect.transparency() = 0.5;
    QCOMPARE(effect.text("begin"), QStringLiteral("1"));
    QCOMPARE(effect.text("end"), QStringLiteral("4294967295"));
    QCOMPARE(effect.text("fadein"), QStringLiteral("3"));
    QCOMPARE(effect.text("fadeout"), QStringLiteral("4"));
    QCOMPARE(effect.text("priority"), QStringLiteral("-5"));
    QCOMPARE(effect.text("transparency"), QStringLiteral("0.5"));
    QCOMPARE(effect.getPropertyULong(QStringLiteral("end")), 4294967295ul);

    // What was the text before is a change again.
    effect.with("begin", "2");
    effect.begin() = 3;
    effect.with("begin", "2");
    QCOMPARE(effect.begin(), 2u);
}

void tst_EffectBase::realMembersAreWrittenShortly()
{
    Probe effect;
    effect.transparency() = 1.0 / 3.0;
    QCOMPARE(effect.text("transparency"), QStringLiteral("0.333"));
    double brightness = 0;
    effect.addPropertyDouble(QStringLiteral("brightness"), 2.0 / 3.0, &brightness);
    QCOMPARE(effect.text("brightness"), QStringLiteral("0.666667"));
    QCOMPARE(brightness, 2.0 / 3.0);
    bool loop = false;
    effect.addPropertyBool(QStringLiteral("loop"), true, &loop);
    QVERIFY(loop);
    QCOMPARE(effect.text("loop"), QStringLiteral("1"));
    QVERIFY(effect.changes.isEmpty());
}

void tst_EffectBase::sameTextNotifiesNobody()
{
    Probe effect;
    effect.with("name", "Door").with("begin", "500").with("empty", QString());
    effect.init();
    effect.changes.clear();
    int observed = 0;
    EffectHost::setObserver(effect, [&](const QString &, const QString &) { ++observed; });
    effect.with("name", "Door").with("begin", "500").with("empty", QString());
    QVERIFY(effect.changes.isEmpty());
    QCOMPARE(observed, 0);
    QVERIFY(!effect.isDirty());
}

void tst_EffectBase::realChangeNotifiesOnce()
{
    Probe effect;
    QStringList observed;
    EffectHost::setObserver(effect, [&](const QString &key, const QString &text) {
        // The effect itself was told before.
        QCOMPARE(effect.changes.value(observed.size()), key + u'=' + text);
        QCOMPARE(effect.getPropertyString(key), text);
        observed.append(key + u'=' + text);
    });
    effect.with("name", "Door").with("begin", "500").with("begin", "0500").with("new", "");
    const QStringList expected{"name=Door", "begin=500", "begin=0500", "new="};
    QCOMPARE(observed, expected);
    QCOMPARE(effect.changes, expected);
    EffectHost::setObserver(effect, {});
    effect.with("name", "Roof");
    QCOMPARE(observed, expected);
}

void tst_EffectBase::playbackDoesNotMakeDirty_data()
{
    QTest::addColumn<bool>("isDirty");
    QTest::newRow("transparency") << false;
    QTest::newRow("priority") << false;
    QTest::newRow("begin") << false;
    QTest::newRow("end") << false;
    QTest::newRow("fadein") << true;
    QTest::newRow("fadeout") << true;
    QTest::newRow("name") << true;
    QTest::newRow("startfixedtime") << true;
    QTest::newRow("something") << true;
}

void tst_EffectBase::playbackDoesNotMakeDirty()
{
    QFETCH(bool, isDirty);
    Probe effect;
    QVERIFY(!effect.isDirty());
    effect.with(QTest::currentDataTag(), "42");
    QCOMPARE(effect.isDirty(), isDirty);
}

void tst_EffectBase::initMakesClean()
{
    Probe effect;
    effect.with("name", "Door");
    QVERIFY(effect.isDirty());
    effect.init();
    QVERIFY(!effect.isDirty());
}

void tst_EffectBase::effectWithoutNestedOnesDeletesAChild()
{
    QStringList log;
    Probe parent;
    parent.addChild(new Probe(nullptr, QStringLiteral("child"), &log));
    QCOMPARE(log, QStringList{"child deleted"});
    parent.addChild(nullptr);
    QVERIFY(!EffectHost::holdsEffects(parent));
}

QTEST_GUILESS_MAIN(tst_EffectBase)
#include "tst_EffectBase.moc"
