#include "FramePlaying.h"

#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <limits>

class tst_FrameBlending : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void transparencyFollowsTheFades_data();
    void transparencyFollowsTheFades();
    void transparencyFollowsTheParents();
    void transparencyIsWrittenOnceAFrame_data();
    void transparencyIsWrittenOnceAFrame();
    void stoppedChildKeepsItsTransparency();

    void priorityIsLentForTheFrame_data();
    void priorityIsLentForTheFrame();
    void priorityLentFollowsTheParents();
    void childThatChangesItsPriorityWhileDrawingGetsItsOwnBack_data();
    void childThatChangesItsPriorityWhileDrawingGetsItsOwnBack();
    void stoppedChildIsHandedTheFrameToo();
    void childrenDrawInListOrder();

    void lightsTakeThePriorityOfATransparentParent_data();
    void lightsTakeThePriorityOfATransparentParent();
    void lightsTakeTheBrightnessBelowOne_data();
    void lightsTakeTheBrightnessBelowOne();
    void lightsAreSetAfterTheChildrenDrew();
    void missingLightsAreSkipped();
};

void tst_FrameBlending::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

// --- Transparency ---

void tst_FrameBlending::transparencyFollowsTheFades_data()
{
    QTest::addColumn<double>("parents");
    QTest::addColumn<quint32>("end");
    QTest::addColumn<quint32>("fadeIn");
    QTest::addColumn<quint32>("fadeOut");
    QTest::addColumn<quint32>("sinceBegin");
    QTest::addColumn<QString>("text");
    constexpr quint32 largest = 4294967295u;

    // Children begin at 1000.
    QTest::newRow("no fades, at the begin") << 0.2 << 9000u << 0u << 0u << 0u << "0.2";
    QTest::newRow("no fades, last ms") << 0.2 << 9000u << 0u << 0u << 7999u << "0.2";
    QTest::newRow("three digits") << 1.0 / 3.0 << 9000u << 0u << 0u << 0u << "0.333";
    QTest::newRow("small") << 0.000012345 << 9000u << 0u << 0u << 0u << "1.23e-05";
    QTest::newRow("opaque") << 0.0 << 9000u << 0u << 0u << 0u << "0";
    QTest::newRow("invisible") << 1.0 << 9000u << 0u << 0u << 0u << "1";

    QTest::newRow("fading in, at the begin") << 0.2 << 9000u << 1000u << 0u << 0u << "1";
    QTest::newRow("fading in, half") << 0.2 << 9000u << 1000u << 0u << 500u << "0.6";
    QTest::newRow("fading in, last ms") << 0.2 << 9000u << 1000u << 0u << 999u << "0.201";
    QTest::newRow("faded in") << 0.2 << 9000u << 1000u << 0u << 1000u << "0.2";
    QTest::newRow("fading in, a third") << 0.0 << 9000u << 3000u << 0u << 1000u << "0.667";
    QTest::newRow("fading in, invisible parent") << 1.0 << 9000u << 1000u << 0u << 500u << "1";
    QTest::newRow("fade of 1 ms, at the begin") << 0.2 << 9000u << 1u << 0u << 0u << "1";
    QTest::newRow("fade of 1 ms, behind it") << 0.2 << 9000u << 1u << 0u << 1u << "0.2";
    QTest::newRow("longest fade in") << 0.0 << largest << largest << 0u << 42949673u << "0.99";

    // A float has seven digits.
    QTest::newRow("long fade in, last ms")
        << 0.0 << 43000000u << 40000000u << 0u << 39999999u << "2.5e-08";
    QTest::newRow("long fade out, first ms")
        << 0.0 << 43000000u << 0u << 40000000u << 2999001u << "2.5e-08";

    QTest::newRow("not yet fading out") << 0.2 << 9000u << 0u << 1000u << 7000u << "0.2";
    QTest::newRow("fading out, first ms") << 0.2 << 9000u << 0u << 1000u << 7001u << "0.201";
    QTest::newRow("fading out, half") << 0.2 << 9000u << 0u << 1000u << 7500u << "0.6";
    QTest::newRow("fading out, last ms") << 0.2 << 9000u << 0u << 1000u << 7999u << "0.999";
    QTest::newRow("longest fade out") << 0.2 << largest << 0u << largest << 43199000u << "0.208";

    QTest::newRow("overlap, before it") << 0.2 << 2500u << 1000u << 1000u << 500u << "0.6";
    QTest::newRow("overlap, fade out wins") << 0.2 << 2500u << 1000u << 1000u << 501u << "0.201";
    QTest::newRow("overlap, in over") << 0.2 << 2500u << 1000u << 1000u << 1000u << "0.6";
    QTest::newRow("fades longer than the span") << 0.0 << 2000u << 4000u << 4000u << 200u << "0.8";
}

void tst_FrameBlending::transparencyFollowsTheFades()
{
    QFETCH(double, parents);
    QFETCH(quint32, end);
    QFETCH(quint32, fadeIn);
    QFETCH(quint32, fadeOut);
    QFETCH(quint32, sinceBegin);
    QFETCH(QString, text);
    FramePlaying playing;
    playing.settings.transparency = parents;
    StubEffect *child = playing.add(1, 1000, end);
    child->with("fadein", fadeIn)
        .with("fadeout", fadeOut)
        .with("transparency", QStringLiteral("?"));
    QString seen;
    child->whileDrawing = [&seen](StubEffect &drawn) { seen = drawn.text("transparency"); };

    playing.frameAt(1000 + sinceBegin);

    QCOMPARE(seen, text);
    QCOMPARE(child->text("transparency"), text);
}

void tst_FrameBlending::transparencyFollowsTheParents()
{
    FramePlaying playing;
    StubEffect *child = playing.add(1, 0, 10000);
    const double steps[] = {0.0, 0.5, 0.5, 0.125, 0.0};
    const QStringList expected{"0", "0.5", "0.5", "0.125", "0"};
    QStringList texts;
    quint32 now = 0;
    for (const double step : steps) {
        playing.settings.transparency = step;
        playing.frameAt(now += 10);
        texts.append(child->text("transparency"));
    }
    QCOMPARE(texts, expected);
}

void tst_FrameBlending::transparencyIsWrittenOnceAFrame_data()
{
    QTest::addColumn<quint32>("fadeIn");
    QTest::addColumn<quint32>("fadeOut");
    QTest::addColumn<QString>("text");

    // Half way through a child of 2 s.
    QTest::newRow("between the fades") << 1000u << 1000u << "0.2";
    QTest::newRow("fading in") << 2000u << 0u << "0.6";
    QTest::newRow("fading out") << 0u << 4000u << "0.8";
    QTest::newRow("in both fades") << 2000u << 4000u << "0.8";
}

void tst_FrameBlending::transparencyIsWrittenOnceAFrame()
{
    QFETCH(quint32, fadeIn);
    QFETCH(quint32, fadeOut);
    QFETCH(QString, text);
    FramePlaying playing;
    playing.settings.transparency = 0.2;
    StubEffect *child = playing.add(1, 0, 2000);
    child->with("fadein", fadeIn).with("fadeout", fadeOut).with("transparency", 0.5);
    child->changes.clear();

    playing.frameAt(1000);

    QCOMPARE(child->changes.filter(QStringLiteral("transparency")),
             QStringList{QStringLiteral("transparency=") + text});
}

void tst_FrameBlending::stoppedChildKeepsItsTransparency()
{
    FramePlaying playing;
    playing.settings.transparency = 0.5;
    StubEffect *child = playing.add(1, 1000, 2000);
    child->with("transparency", QStringLiteral("0.25"));

    playing.frameAt(500);

    QCOMPARE(child->text("transparency"), QStringLiteral("0.25"));
}

// --- Priority ---

void tst_FrameBlending::priorityIsLentForTheFrame_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<int>("parents");
    QTest::addColumn<QString>("raised");
    QTest::addColumn<QString>("givenBack");
    constexpr int lowest = std::numeric_limits<int>::min();

    QTest::newRow("raised") << "5" << 10 << "15"
                            << "5";
    QTest::newRow("parent without priority") << "5" << 0 << "5"
                                             << "5";
    QTest::newRow("both zero") << "0" << 0 << "0"
                               << "0";
    QTest::newRow("own zero") << "0" << 10 << "10"
                              << "0";
    QTest::newRow("not a number") << "abc" << 10 << "10"
                                  << "0";
    QTest::newRow("not a number, nothing lent") << "abc" << 0 << "0"
                                                << "0";
    QTest::newRow("empty") << "" << 3 << "3"
                           << "0";
    QTest::newRow("fraction") << "1.5" << 3 << "3"
                              << "0";
    QTest::newRow("leading zeros") << "007" << 1 << "8"
                                   << "7";
    QTest::newRow("leading zeros, nothing lent") << "007" << 0 << "7"
                                                 << "7";
    QTest::newRow("sign and blanks") << " +7 " << 0 << "7"
                                     << "7";
    QTest::newRow("negative text") << "-5" << 3 << "3"
                                   << "0";
    QTest::newRow("negative text, nothing lent") << "-5" << 0 << "0"
                                                 << "0";
    QTest::newRow("largest int") << "2147483647" << 1 << "2147483648"
                                 << "2147483647";
    QTest::newRow("beyond int") << "2147483648" << 1 << "2147483649"
                                << "2147483648";
    QTest::newRow("largest") << "4294967295" << 0 << "4294967295"
                             << "4294967295";
    QTest::newRow("wraps upward") << "4294967295" << 3 << "2"
                                  << "4294967295";
    QTest::newRow("too large") << "4294967296" << 3 << "3"
                               << "0";
    QTest::newRow("negative parent") << "5" << -2 << "3"
                                     << "5";
    QTest::newRow("wraps downward") << "5" << -7 << "4294967294"
                                    << "5";
    QTest::newRow("lowest parent") << "5" << lowest << "2147483653"
                                   << "5";
}

void tst_FrameBlending::priorityIsLentForTheFrame()
{
    QFETCH(QString, own);
    QFETCH(int, parents);
    QFETCH(QString, raised);
    QFETCH(QString, givenBack);
    FramePlaying playing;
    playing.settings.priority = parents;
    StubEffect *child = playing.add(1, 0, 1000);
    child->with("priority", own);

    playing.frameAt(100);
    QCOMPARE(child->drawnPriorities, QStringList{raised});
    QCOMPARE(child->text("priority"), givenBack);

    playing.frameAt(200);
    QCOMPARE(child->drawnPriorities, QStringList({raised, raised}));
    QCOMPARE(child->text("priority"), givenBack);
}

void tst_FrameBlending::priorityLentFollowsTheParents()
{
    FramePlaying playing;
    StubEffect *child = playing.add(1, 0, 1000);
    child->with("priority", 5);
    quint32 now = 0;
    for (const int parents : {0, 10, 10, 20, 0, -5, 10}) {
        playing.settings.priority = parents;
        playing.frameAt(now += 10);
        QCOMPARE(child->text("priority"), QStringLiteral("5"));
    }
    child->with("priority", 6);
    playing.frameAt(now + 10);
    QCOMPARE(child->text("priority"), QStringLiteral("6"));

    QCOMPARE(child->drawnPriorities, QStringList({"5", "15", "15", "25", "5", "0", "15", "16"}));
}

void tst_FrameBlending::childThatChangesItsPriorityWhileDrawingGetsItsOwnBack_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<int>("parents");
    QTest::addColumn<QString>("changed");

    QTest::newRow("nothing lent, another number") << "7" << 0 << "99";
    QTest::newRow("nothing lent, not a number") << "7" << 0 << "abc";
    QTest::newRow("nothing lent, negative") << "7" << 0 << "-7";
    QTest::newRow("nothing lent, nothing") << "7" << 0 << "";
    QTest::newRow("lent, another number") << "7" << 10 << "99";
    QTest::newRow("lent, its own number") << "7" << 10 << "7";
    QTest::newRow("lent, not a number") << "7" << 10 << "abc";
    // These read as the same number.
    QTest::newRow("nothing lent, leading zeros") << "7" << 0 << "007";
    QTest::newRow("nothing lent, blanks and a sign") << "7" << 0 << " +7 ";
    QTest::newRow("nothing lent, own 0, not a number") << "0" << 0 << "abc";
    QTest::newRow("nothing lent, own 0, negative") << "0" << 0 << "-7";
    QTest::newRow("nothing lent, own 0, nothing") << "0" << 0 << "";
    QTest::newRow("nothing lent, own 0, too large") << "0" << 0 << "4294967296";
    QTest::newRow("nothing lent, beyond int") << "4294967295" << 0 << "04294967295";
    QTest::newRow("lent, the same raised") << "7" << 10 << "017";
}

void tst_FrameBlending::childThatChangesItsPriorityWhileDrawingGetsItsOwnBack()
{
    QFETCH(QString, own);
    QFETCH(int, parents);
    QFETCH(QString, changed);
    FramePlaying playing;
    playing.settings.priority = parents;
    StubEffect *child = playing.add(1, 0, 1000);
    child->with("priority", own);
    child->whileDrawing = [&changed](StubEffect &drawn) { drawn.with("priority", changed); };

    playing.frameAt(100);
    QCOMPARE(child->text("priority"), own);

    playing.frameAt(200);
    QCOMPARE(child->draws, 2);
    QCOMPARE(child->text("priority"), own);
}

void tst_FrameBlending::stoppedChildIsHandedTheFrameToo()
{
    FramePlaying playing;
    playing.settings.priority = 10;
    StubEffect *child = playing.add(1, 1000, 2000);
    child->with("priority", 5);
    child->changes.clear();

    playing.frameAt(300);

    QCOMPARE(child->draws, 0);
    QCOMPARE(child->frameTime(), QTime(12, 0, 0, 300));
    QCOMPARE(child->frameArg(), 77ul);
    QCOMPARE(child->changes, QStringList({"priority=15", "priority=5"}));
}

void tst_FrameBlending::childrenDrawInListOrder()
{
    FramePlaying playing;
    QStringList drawn;
    for (quint32 eid : {3u, 1u, 2u}) {
        StubEffect *child = playing.add(eid, 0, 1000);
        child->whileDrawing = [&drawn](StubEffect &effect) {
            drawn.append(effect.text("eid") + u'@' + effect.frameTime().toString(u"ss.zzz") + u'/'
                         + QString::number(effect.frameArg()));
        };
    }
    playing.settings.arg = 4000000000ul;

    playing.frameAt(25);

    QCOMPARE(drawn,
             QStringList({"3@00.025/4000000000", "1@00.025/4000000000", "2@00.025/4000000000"}));
}

// --- Lights ---

void tst_FrameBlending::lightsTakeThePriorityOfATransparentParent_data()
{
    QTest::addColumn<double>("transparency");
    QTest::addColumn<int>("expected");

    // The lights have 42 before, the parent has -3.
    QTest::newRow("opaque") << 0.0 << 42;
    QTest::newRow("hardly transparent") << 1e-300 << -3;
    QTest::newRow("half") << 0.5 << -3;
    QTest::newRow("invisible") << 1.0 << -3;
    QTest::newRow("negative") << -0.5 << 42;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 42;
}

void tst_FrameBlending::lightsTakeThePriorityOfATransparentParent()
{
    QFETCH(double, transparency);
    QFETCH(int, expected);
    FramePlaying playing;
    for (quint32 uid : {1u, 2u, 3u}) {
        playing.lights.push_back(playing.map.addLight(uid, QString(), {}));
        playing.lights.back()->setPriority(42);
    }
    playing.settings.priority = -3;
    playing.settings.transparency = transparency;

    playing.frameAt(0);

    for (const rehearsal::StageLight *light : playing.map.lights()) {
        QCOMPARE(light->priority(), expected);
        QCOMPARE(light->factor(), 1.0);
    }
}

void tst_FrameBlending::lightsTakeTheBrightnessBelowOne_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<double>("expected");

    // The lights have the factor 0.75 before.
    QTest::newRow("full") << 1.0 << 0.75;
    QTest::newRow("more than full") << 1.5 << 0.75;
    QTest::newRow("hardly less than full") << std::nextafter(1.0, 0.0) << std::nextafter(1.0, 0.0);
    QTest::newRow("half") << 0.5 << 0.5;
    QTest::newRow("dark") << 0.0 << 0.0;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0.75;
}

void tst_FrameBlending::lightsTakeTheBrightnessBelowOne()
{
    QFETCH(double, brightness);
    QFETCH(double, expected);
    FramePlaying playing;
    for (quint32 uid : {1u, 2u, 3u}) {
        playing.lights.push_back(playing.map.addLight(uid, QString(), {}));
        playing.lights.back()->setBrightness(0.75);
        playing.lights.back()->setPriority(42);
    }
    playing.settings.priority = -3;
    playing.settings.brightness = brightness;

    playing.frameAt(0);

    for (const rehearsal::StageLight *light : playing.map.lights()) {
        QVERIFY2(light->factor() == expected, qPrintable(QString::number(light->factor())));
        QCOMPARE(light->priority(), 42);
    }
}

void tst_FrameBlending::lightsAreSetAfterTheChildrenDrew()
{
    FramePlaying playing;
    rehearsal::StageLight *light = playing.map.addLight(1, QString(), {});
    playing.lights = {light};
    playing.settings.transparency = 0.5;
    playing.settings.priority = 9;
    playing.settings.brightness = 0.5;
    StubEffect *child = playing.add(1, 0, 1000);
    child->whileDrawing = [light](StubEffect &) {
        QCOMPARE(light->priority(), 0);
        QCOMPARE(light->factor(), 1.0);
        static_cast<Light *>(light)->setPriority(100);
        static_cast<Light *>(light)->setBrightness(0.1);
    };

    playing.frameAt(0);

    QCOMPARE(child->draws, 1);
    QCOMPARE(light->priority(), 9);
    QCOMPARE(light->factor(), 0.5);
}

void tst_FrameBlending::missingLightsAreSkipped()
{
    FramePlaying playing;
    rehearsal::StageLight *light = playing.map.addLight(1, QString(), {});
    playing.lights = {nullptr, light, nullptr};
    playing.settings.transparency = 0.5;
    playing.settings.priority = 9;
    playing.settings.brightness = 0.5;

    playing.frameAt(0);

    QCOMPARE(light->priority(), 9);
    QCOMPARE(light->factor(), 0.5);
}

QTEST_GUILESS_MAIN(tst_FrameBlending)
#include "tst_FrameBlending.moc"
