#include "Effect.h"
#include "EffectHost.h"
#include "Playback.h"
#include "RandomRules.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

using rehearsal::FileFault;
using rehearsal::Playback;
using rehearsal::Player;
using rehearsal::Show;
using State = Playback::State;

Q_DECLARE_METATYPE(State)

namespace {

using Levels = std::vector<double>;

constexpr qint64 nsPerMs = 1'000'000;

// --- Shows ---

/// @param properties as in "begin=0 end=500"
QByteArray effect(const QByteArray &type, const QByteArray &properties,
                  const QByteArray &nested = {})
{
    QByteArray text = "<effect type=\"" + type + "\">\n";
    for (const QByteArray &property : properties.split(' ')) {
        const qsizetype sign = property.indexOf('=');
        if (sign > 0)
            text += "<property key=\"" + property.left(sign) + "\">" + property.mid(sign + 1)
                    + "</property>\n";
    }
    return text + nested + "</effect>\n";
}

QByteArray composite(const QByteArray &properties, const QByteArray &nested)
{
    return effect("Meta Effect", properties, nested);
}

/// Eight lights, a row, two halves and a synchronized four.
QByteArray showOf(const QByteArray &effects)
{
    QByteArray map;
    for (int uid = 1; uid <= 8; ++uid)
        map += "<light uid=\"" + QByteArray::number(uid) + "\" x=\"0\" y=\"0\"/>\n";
    return "<show version=\"1\">\n<map>\n" + map
           + "<group uid=\"1\" type=\"chasing\" lights=\"1 2 3 4 5 6 7 8\"/>\n"
             "<group uid=\"2\" type=\"chasing\" lights=\"4 3 2 1\"/>\n"
             "<group uid=\"3\" type=\"chasing\" lights=\"5 6 7 8\"/>\n"
             "<group uid=\"4\" type=\"synchronized\" lights=\"2 4 6 8\"/>\n"
             "</map>\n"
           + effects + "</show>\n";
}

/// A ramp from dark to full over the whole show.
QByteArray rampShow(int lengthMs)
{
    return showOf(composite("loop=1", effect("Ramp", "gid=1 end=" + QByteArray::number(lengthMs))));
}

QByteArray exampleShow(const QString &name)
{
    QFile file(QStringLiteral(META_SOURCE_DIR "/examples/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Random children with fades, priorities and meta effects among them.
QByteArray randomChildren(Dice &dice, int depth)
{
    const QByteArrayList types{"Solid",  "Ramp",    "Chase",     "Pulse",
                               "Strobe", "Twinkle", "White Fade"};
    QByteArray children;
    for (quint32 count = 2 + dice.roll(4); count > 0; --count) {
        const quint32 begin = dice.oneIn(3) ? 0 : dice.roll(700);
        const auto number = [](quint32 value) { return QByteArray::number(value); };
        QByteArray properties =
            "begin=" + number(begin) + " end=" + number(begin + 1 + dice.roll(900))
            + " gid=" + number(1 + dice.roll(4)) + " cycletime=" + number(30 + dice.roll(300));
        if (dice.oneIn(2))
            properties += " fadein=" + number(dice.roll(400));
        if (dice.oneIn(2))
            properties += " fadeout=" + number(dice.roll(400));
        if (dice.oneIn(3))
            properties += " priority=" + number(dice.roll(3));
        if (depth > 0 && dice.oneIn(2))
            children += composite(properties + " loop=" + number(dice.roll(2)) + " transparency=0."
                                      + number(dice.roll(9)),
                                  randomChildren(dice, depth - 1));
        else
            children += effect(dice.pick(types), properties);
    }
    return children;
}

QByteArray randomComposite(Dice &dice, int depth)
{
    return composite(dice.oneIn(2) ? "loop=1 brightness=0.8" : "loop=0 priority=1",
                     randomChildren(dice, depth));
}

std::unique_ptr<Show> showFrom(const QByteArray &text)
{
    FileFault fault;
    auto show = rehearsal::parseShow(text, QStringLiteral("s"), allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    return show;
}

Levels levelsOf(const Show &show)
{
    Levels levels;
    for (const rehearsal::StageLight *light : show.map().lights())
        levels.push_back(light->shown());
    return levels;
}

bool areSame(const Levels &a, const Levels &b)
{
    return a.size() == b.size()
           && std::equal(a.begin(), a.end(), b.begin(),
                         [](double x, double y) { return std::abs(x - y) <= 1e-9; });
}

bool isDark(const Show &show)
{
    return areSame(levelsOf(show), Levels(show.map().lights().size(), 0.0));
}

/// Every effect of the show, nested ones too.
std::vector<Effect *> allEffects(const Show &show)
{
    std::vector<Effect *> effects(show.effects().begin(), show.effects().end());
    for (std::size_t i = 0; i < effects.size(); ++i) {
        const std::vector<Effect *> nested = EffectHost::nested(*effects[i]);
        effects.insert(effects.end(), nested.begin(), nested.end());
    }
    return effects;
}

int countOfRunning(const Show &show)
{
    const std::vector<Effect *> effects = allEffects(show);
    return static_cast<int>(std::count_if(effects.begin(), effects.end(),
                                          [](const Effect *effect) { return effect->getState(); }));
}

quint32 lengthOf(const QByteArray &text)
{
    const std::unique_ptr<Show> show = showFrom(text);
    return Player(show->map(), show->effects()).length();
}

/// What the lights show at these places, which ascend, when the show is simply played from its
/// start in steps; at a place there is a frame in any case.
std::vector<Levels> plainRun(const QByteArray &text, const QList<quint32> &places, quint32 stepMs)
{
    const std::unique_ptr<Show> show = showFrom(text);
    const auto time = [](quint32 ms) {
        return QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms));
    };
    show->map().clock().step(time(0));
    Player player(show->map(), show->effects());
    player.start();
    std::vector<Levels> shown;
    quint32 next = 0;
    for (const quint32 place : places) {
        for (; next < place; next += stepMs)
            player.frame(time(next), 0);
        player.frame(time(place), 0);
        shown.push_back(levelsOf(*show));
    }
    return shown;
}

/// Places in ascending order: where something begins or ends, right beside, and random ones.
QList<quint32> placesIn(const QByteArray &text, Dice &dice, int randomCount)
{
    const quint32 length = lengthOf(text);
    QSet<quint32> places{0, length - 1};
    const std::unique_ptr<Show> show = showFrom(text);
    for (const Effect *effect : allEffects(*show)) {
        for (const quint32 edge : {effect->beginTime(), effect->endTime()}) {
            for (const quint32 place : {edge - 1, edge, edge + 1}) {
                if (place < length)
                    places.insert(place);
            }
        }
    }
    for (int i = 0; i < randomCount; ++i)
        places.insert(dice.roll(length));
    QList<quint32> sorted(places.begin(), places.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

/// A show on a playback whose wall clock only goes on when told.
class Stage
{
public:
    explicit Stage(const QByteArray &text)
        : show(showFrom(text)), playback([this] { return m_now; })
    {
        playback.setShow(show.get());
    }
    ~Stage() { playback.setShow(nullptr); }
    Q_DISABLE_COPY_MOVE(Stage)

    void wait(double ms) { m_now += std::llround(ms * nsPerMs); }
    /// A frame so much later.
    void tickAfter(double ms)
    {
        wait(ms);
        playback.tick();
    }
    void enter(State state)
    {
        if (state == State::Playing)
            playback.play();
        else if (state == State::Paused)
            playback.seek(0);
    }
    void rebuild(const QByteArray &text)
    {
        std::unique_ptr<Show> other = showFrom(text);
        playback.setRebuiltShow(other.get());
        show = std::move(other);
    }
    Levels levels() const { return levelsOf(*show); }
    double firstLevel() const { return levels().front(); }

private:
    qint64 m_now = 1'000'000 * nsPerMs; ///< a clock need not start at 0
public:
    std::unique_ptr<Show> show;
    Playback playback;
};

/// What a show of this text shows at a place that was sought from a standstill.
Levels levelsAt(const QByteArray &text, quint32 place)
{
    Stage stage(text);
    stage.playback.seek(place);
    return stage.levels();
}

QString differenceAt(quint32 place, const Levels &actual, const Levels &expected)
{
    QString text = QStringLiteral("at %1:").arg(place);
    for (std::size_t i = 0; i < actual.size(); ++i)
        text += QStringLiteral(" %1/%2").arg(actual[i]).arg(expected.at(i));
    return text;
}

} // namespace

/// The lights as seen by a user of the transport, on a wall clock that the test moves.
class tst_Playback : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral("."))); }

    void withoutAShowNothingHappens();
    void newShowIsStoppedAtItsStartAndDark();
    void anotherShowStopsWhatPlays();

    void showTimeFollowsTheWallClock_data();
    void showTimeFollowsTheWallClock();
    void fractionsOfMillisecondsAddUp();
    void speedIsKeptInItsRange_data();
    void speedIsKeptInItsRange();
    void newSpeedCountsFromNowOn();
    void wallClockThatStandsStillHoldsThePlace();
    void hostsClockStandsAtThePosition();

    void pauseHoldsPlaceAndLights();
    void stopIsDarkAtTheStartWithNothingRunning_data();
    void stopIsDarkAtTheStartWithNothingRunning();
    void playAfterStopStartsAtTheStart();
    void restartPlaysFromTheStart_data();
    void restartPlaysFromTheStart();
    void seekKeepsPlayingOrPauses_data();
    void seekKeepsPlayingOrPauses();
    void seekStaysWithinTheShow_data();
    void seekStaysWithinTheShow();
    void seekWhilePlayingGoesOnFromThere();

    void loopingShowStartsAgainWithoutLosingTime_data();
    void loopingShowStartsAgainWithoutLosingTime();
    void showThatDoesNotLoopPausesDarkAtItsEnd();
    void finishedShowPlaysFromTheStartOrFromWhereItIsSought();
    void pauseBehindTheEndFinishes();
    void emptyShowFinishesAtOnce_data();
    void emptyShowFinishesAtOnce();

    void frameIsShownOnce_data();
    void frameIsShownOnce();
    void stateIsAnnouncedWhenItChangesOnly();
    void timerTicksWhilePlayingOnly();
    void computersClockIsUsedUnlessAnotherIsGiven();
    void framesThatWereNotShownAreCounted_data();
    void framesThatWereNotShownAreCounted();
    void pauseOfTheEventLoopCostsFramesNotTime();
    void playCountsDroppedFramesAnew();
    void frameTakesProcessorTime();

    void refreshShowsAnEditAtThePlace();
    void refreshLeavesAStoppedAndAFinishedShowDark();
    void refreshOfAFinishedShowThatGrewShowsIt();
    void refreshOfAShowThatShrankGoesToItsLastPlace();
    void rebuiltShowGoesOnWhereItWas_data();
    void rebuiltShowGoesOnWhereItWas();
    void rebuiltShowStaysStoppedAndDark();
    void rebuiltShowStaysFinishedWithinItsLength_data();
    void rebuiltShowStaysFinishedWithinItsLength();
    void rebuiltShowThatIsShorterIsShownWithinItsLength();
    void rebuiltFinishedShowThatGrewIsShown();

    void placesSoughtInAnyOrderShowWhatAPlainRunShows_data();
    void placesSoughtInAnyOrderShowWhatAPlainRunShows();
    void shorterEffectsLoopAsInAPlainRun_data();
    void shorterEffectsLoopAsInAPlainRun();
    void effectThatIsVeryMuchShorterIsShownRight();
    void playingShowsWhatSeekingShows_data();
    void playingShowsWhatSeekingShows();
    void clockStartedAnewByAnEditDoesNotMakeTheShowJump_data();
    void clockStartedAnewByAnEditDoesNotMakeTheShowJump();
    void childMovedWhilePlayingShowsWhatSeekingShows();
};

// --- Shows and states ---

void tst_Playback::withoutAShowNothingHappens()
{
    Playback playback([] { return qint64{0}; });
    for (int round = 0; round < 2; ++round) {
        QSignalSpy frames(&playback, &Playback::frameShown);
        QSignalSpy states(&playback, &Playback::stateChanged);
        playback.play();
        playback.tick();
        playback.pause();
        playback.seek(100);
        playback.refresh();
        playback.restart();
        playback.stop();
        QCOMPARE(playback.state(), State::Stopped);
        QCOMPARE(playback.position(), 0u);
        QCOMPARE(playback.length(), 0u);
        QCOMPARE(frames.count() + states.count(), 0);
        playback.setShow(nullptr); // and so again
    }
}

void tst_Playback::newShowIsStoppedAtItsStartAndDark()
{
    Stage stage(showOf(composite("", effect("Solid", "gid=1 end=4000"))));
    QCOMPARE(stage.playback.state(), State::Stopped);
    QCOMPARE(stage.playback.position(), 0u);
    QCOMPARE(stage.playback.length(), 4000u);
    QCOMPARE(stage.playback.speed(), 1.0);
    QVERIFY(stage.playback.isLooping());
    QVERIFY(isDark(*stage.show));
    QCOMPARE(countOfRunning(*stage.show), 0);
}

void tst_Playback::anotherShowStopsWhatPlays()
{
    Stage stage(rampShow(1000));
    stage.playback.play();
    stage.tickAfter(500);
    const std::unique_ptr<Show> other = showFrom(rampShow(300));
    QSignalSpy frames(&stage.playback, &Playback::frameShown);
    QSignalSpy states(&stage.playback, &Playback::stateChanged);
    stage.playback.setShow(other.get());
    QCOMPARE(stage.playback.state(), State::Stopped);
    QCOMPARE(stage.playback.position(), 0u);
    QCOMPARE(stage.playback.length(), 300u);
    QCOMPARE(frames.count(), 1);
    QCOMPARE(states.count(), 1);
    stage.playback.play();
    stage.tickAfter(50);
    stage.playback.setShow(nullptr);
    QCOMPARE(stage.playback.state(), State::Stopped);
    QCOMPARE(stage.playback.position(), 0u);
    QCOMPARE(stage.playback.length(), 0u);
    stage.tickAfter(50);
    QCOMPARE(stage.playback.position(), 0u);
}

// --- Show time ---

void tst_Playback::showTimeFollowsTheWallClock_data()
{
    QTest::addColumn<double>("speed");
    QTest::addColumn<double>("wallMs");
    QTest::addColumn<quint32>("position");
    QTest::newRow("real time") << 1.0 << 1234.0 << 1234u;
    QTest::newRow("slowest") << 0.25 << 2000.0 << 500u;
    QTest::newRow("half") << 0.5 << 1001.0 << 500u;
    QTest::newRow("fastest") << 4.0 << 700.0 << 2800u;
    QTest::newRow("at once") << 1.0 << 0.0 << 0u;
    QTest::newRow("the last millisecond") << 1.0 << 2999.0 << 2999u;
}

void tst_Playback::showTimeFollowsTheWallClock()
{
    QFETCH(double, speed);
    QFETCH(double, wallMs);
    QFETCH(quint32, position);
    Stage stage(rampShow(3000));
    stage.playback.setSpeed(speed);
    stage.playback.play();
    stage.tickAfter(wallMs);
    QCOMPARE(stage.playback.position(), position);
    QVERIFY(std::abs(stage.firstLevel() - position / 3000.0) < 1e-9);
}

void tst_Playback::fractionsOfMillisecondsAddUp()
{
    Stage stage(rampShow(3000));
    stage.playback.play();
    for (int i = 0; i < 1500; ++i)
        stage.tickAfter(0.75);
    QCOMPARE(stage.playback.position(), 1125u);
}

void tst_Playback::speedIsKeptInItsRange_data()
{
    QTest::addColumn<double>("asked");
    QTest::addColumn<double>("taken");
    QTest::newRow("slowest") << 0.25 << 0.25;
    QTest::newRow("too slow") << 0.24 << 0.25;
    QTest::newRow("none") << 0.0 << 0.25;
    QTest::newRow("backwards") << -1.0 << 0.25;
    QTest::newRow("in between") << 1.5 << 1.5;
    QTest::newRow("fastest") << 4.0 << 4.0;
    QTest::newRow("too fast") << 4.1 << 4.0;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 4.0;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 2.0;
}

void tst_Playback::speedIsKeptInItsRange()
{
    QFETCH(double, asked);
    QFETCH(double, taken);
    Stage stage(rampShow(3000));
    stage.playback.setSpeed(2.0);
    stage.playback.setSpeed(asked);
    QCOMPARE(stage.playback.speed(), taken);
    stage.playback.play();
    stage.tickAfter(200);
    QCOMPARE(stage.playback.position(), static_cast<quint32>(200 * taken));
}

void tst_Playback::newSpeedCountsFromNowOn()
{
    Stage stage(rampShow(3000));
    stage.playback.play();
    stage.wait(1000);
    stage.playback.setSpeed(4);
    QCOMPARE(stage.playback.position(), 1000u);
    stage.tickAfter(100);
    QCOMPARE(stage.playback.position(), 1400u);
    stage.playback.pause();
    stage.wait(1000);
    stage.playback.setSpeed(0.5);
    QCOMPARE(stage.playback.position(), 1400u);
    stage.playback.play();
    stage.tickAfter(200);
    QCOMPARE(stage.playback.position(), 1500u);
}

void tst_Playback::wallClockThatStandsStillHoldsThePlace()
{
    Stage stage(rampShow(1000));
    stage.playback.play();
    stage.tickAfter(400);
    const Levels before = stage.levels();
    for (int i = 0; i < 5; ++i)
        stage.playback.tick();
    QCOMPARE(stage.playback.position(), 400u);
    QVERIFY(areSame(stage.levels(), before));
    QCOMPARE(stage.playback.state(), State::Playing);
}

void tst_Playback::hostsClockStandsAtThePosition()
{
    Stage stage(rampShow(4000));
    const auto now = [&] { return stage.show->map().clock().now().msecsSinceStartOfDay(); };
    stage.playback.seek(3210);
    QCOMPARE(now(), 3210);
    stage.playback.play();
    stage.tickAfter(90);
    QCOMPARE(now(), 3300);
    stage.tickAfter(800);
    QCOMPARE(now(), 100);
    stage.playback.stop();
    QCOMPARE(now(), 0);
}

// --- Transport ---

void tst_Playback::pauseHoldsPlaceAndLights()
{
    Stage stage(rampShow(3000));
    stage.playback.play();
    stage.tickAfter(100);
    stage.wait(400);
    stage.playback.pause(); // shows what is due at this moment
    QCOMPARE(stage.playback.state(), State::Paused);
    QCOMPARE(stage.playback.position(), 500u);
    const Levels held = stage.levels();
    QVERIFY(areSame(held, levelsAt(rampShow(3000), 500)));
    stage.tickAfter(5000);
    stage.playback.pause();
    QCOMPARE(stage.playback.position(), 500u);
    QVERIFY(areSame(stage.levels(), held));
    stage.playback.play();
    stage.tickAfter(250);
    QCOMPARE(stage.playback.position(), 750u);
}

void tst_Playback::stopIsDarkAtTheStartWithNothingRunning_data()
{
    QTest::addColumn<State>("before");
    QTest::newRow("stopped") << State::Stopped;
    QTest::newRow("paused") << State::Paused;
    QTest::newRow("playing") << State::Playing;
}

void tst_Playback::stopIsDarkAtTheStartWithNothingRunning()
{
    QFETCH(State, before);
    const QByteArray inner = composite("end=800", effect("Solid", "gid=1 end=800"));
    Stage stage(
        showOf(effect("Solid", "gid=2 end=900")
               + composite("", composite("end=800", inner) + effect("Solid", "gid=1 end=500"))));
    stage.enter(before);
    if (before != State::Stopped) {
        stage.tickAfter(300);
        QVERIFY(!isDark(*stage.show));
        QVERIFY(countOfRunning(*stage.show) >= 6);
    }
    stage.playback.stop();
    QCOMPARE(stage.playback.state(), State::Stopped);
    QCOMPARE(stage.playback.position(), 0u);
    QVERIFY(isDark(*stage.show));
    QCOMPARE(countOfRunning(*stage.show), 0);
    stage.tickAfter(100);
    QVERIFY(isDark(*stage.show));
    QCOMPARE(stage.playback.position(), 0u);
}

void tst_Playback::playAfterStopStartsAtTheStart()
{
    Stage stage(showOf(composite("", effect("Solid", "gid=1 end=1000 level=0.5"))));
    stage.playback.play();
    stage.tickAfter(700);
    stage.playback.stop();
    stage.wait(5000);
    stage.playback.play();
    QCOMPARE(stage.playback.position(), 0u);
    QCOMPARE(stage.firstLevel(), 0.5);
    stage.tickAfter(20);
    QCOMPARE(stage.playback.position(), 20u);
}

void tst_Playback::restartPlaysFromTheStart_data()
{
    stopIsDarkAtTheStartWithNothingRunning_data();
}

void tst_Playback::restartPlaysFromTheStart()
{
    QFETCH(State, before);
    Stage stage(rampShow(1000));
    stage.enter(before);
    stage.tickAfter(300);
    stage.playback.restart();
    QCOMPARE(stage.playback.state(), State::Playing);
    QCOMPARE(stage.playback.position(), 0u);
    QCOMPARE(stage.firstLevel(), 0.0);
    stage.tickAfter(250);
    QCOMPARE(stage.playback.position(), 250u);
    QVERIFY(std::abs(stage.firstLevel() - 0.25) < 1e-9);
}

void tst_Playback::seekKeepsPlayingOrPauses_data()
{
    QTest::addColumn<State>("before");
    QTest::addColumn<State>("after");
    QTest::newRow("stopped") << State::Stopped << State::Paused;
    QTest::newRow("paused") << State::Paused << State::Paused;
    QTest::newRow("playing") << State::Playing << State::Playing;
}

void tst_Playback::seekKeepsPlayingOrPauses()
{
    QFETCH(State, before);
    QFETCH(State, after);
    Stage stage(rampShow(1000));
    stage.enter(before);
    stage.playback.seek(600);
    QCOMPARE(stage.playback.state(), after);
    QCOMPARE(stage.playback.position(), 600u);
    QVERIFY(std::abs(stage.firstLevel() - 0.6) < 1e-9);
}

void tst_Playback::seekStaysWithinTheShow_data()
{
    QTest::addColumn<quint32>("asked");
    QTest::addColumn<quint32>("position");
    QTest::newRow("start") << 0u << 0u;
    QTest::newRow("last") << 999u << 999u;
    QTest::newRow("end") << 1000u << 999u;
    QTest::newRow("far behind") << 4294967295u << 999u;
}

void tst_Playback::seekStaysWithinTheShow()
{
    QFETCH(quint32, asked);
    QFETCH(quint32, position);
    Stage stage(rampShow(1000));
    stage.playback.seek(asked);
    QCOMPARE(stage.playback.position(), position);
    QVERIFY(std::abs(stage.firstLevel() - position / 1000.0) < 1e-9);
}

void tst_Playback::seekWhilePlayingGoesOnFromThere()
{
    Stage stage(rampShow(3000));
    stage.playback.setSpeed(2);
    stage.playback.play();
    stage.tickAfter(1000);
    stage.wait(10);
    stage.playback.seek(500);
    QCOMPARE(stage.playback.position(), 500u);
    stage.tickAfter(100);
    QCOMPARE(stage.playback.position(), 700u);
}

// --- The end ---

void tst_Playback::loopingShowStartsAgainWithoutLosingTime_data()
{
    QTest::addColumn<double>("waitMs");
    QTest::addColumn<quint32>("position");
    QTest::newRow("exactly at the end") << 1000.0 << 0u;
    QTest::newRow("behind the end") << 1250.0 << 250u;
    QTest::newRow("several runs later") << 10'300.0 << 300u;
}

void tst_Playback::loopingShowStartsAgainWithoutLosingTime()
{
    QFETCH(double, waitMs);
    QFETCH(quint32, position);
    Stage stage(rampShow(1000));
    stage.playback.play();
    stage.tickAfter(waitMs);
    QCOMPARE(stage.playback.state(), State::Playing);
    QCOMPARE(stage.playback.position(), position);
    QVERIFY(std::abs(stage.firstLevel() - position / 1000.0) < 1e-9);
    stage.tickAfter(400); // and counts on from there
    QCOMPARE(stage.playback.position(), position + 400);
}

void tst_Playback::showThatDoesNotLoopPausesDarkAtItsEnd()
{
    Stage stage(showOf(composite("loop=1", effect("Solid", "gid=1 end=1000"))));
    stage.playback.setLooping(false);
    QVERIFY(!stage.playback.isLooping());
    stage.playback.play();
    stage.tickAfter(999);
    QVERIFY(!isDark(*stage.show));
    stage.tickAfter(1);
    QCOMPARE(stage.playback.state(), State::Paused);
    QCOMPARE(stage.playback.position(), 1000u);
    QVERIFY(isDark(*stage.show));
    QCOMPARE(countOfRunning(*stage.show), 0);
    stage.tickAfter(500);
    QCOMPARE(stage.playback.position(), 1000u);
}

void tst_Playback::finishedShowPlaysFromTheStartOrFromWhereItIsSought()
{
    Stage stage(showOf(composite("", effect("Solid", "gid=1 end=1000"))));
    stage.playback.setLooping(false);
    stage.playback.play();
    stage.tickAfter(1500);
    stage.playback.play();
    QCOMPARE(stage.playback.state(), State::Playing);
    QCOMPARE(stage.playback.position(), 0u);
    QVERIFY(!isDark(*stage.show));
    stage.tickAfter(1500);
    stage.playback.seek(400);
    QCOMPARE(stage.playback.state(), State::Paused);
    QVERIFY(!isDark(*stage.show));
    stage.playback.play();
    stage.tickAfter(100);
    QCOMPARE(stage.playback.position(), 500u);
}

void tst_Playback::pauseBehindTheEndFinishes()
{
    Stage stage(rampShow(1000));
    stage.playback.setLooping(false);
    stage.playback.play();
    stage.wait(2000);
    QSignalSpy states(&stage.playback, &Playback::stateChanged);
    stage.playback.pause();
    QCOMPARE(states.count(), 1);
    QCOMPARE(stage.playback.state(), State::Paused);
    QCOMPARE(stage.playback.position(), 1000u);
    QVERIFY(isDark(*stage.show));
}

void tst_Playback::emptyShowFinishesAtOnce_data()
{
    QTest::addColumn<bool>("looping");
    QTest::newRow("looping") << true;
    QTest::newRow("once") << false;
}

void tst_Playback::emptyShowFinishesAtOnce()
{
    QFETCH(bool, looping);
    Stage stage(showOf(composite("loop=1", "")));
    stage.playback.setLooping(looping);
    QCOMPARE(stage.playback.length(), 0u);
    stage.playback.play();
    stage.tickAfter(10);
    QCOMPARE(stage.playback.state(), State::Paused);
    QCOMPARE(stage.playback.position(), 0u);
    stage.playback.seek(50);
    QCOMPARE(stage.playback.position(), 0u);
    stage.playback.refresh();
    stage.playback.restart();
    stage.tickAfter(10);
    QCOMPARE(stage.playback.state(), State::Paused);
    QVERIFY(isDark(*stage.show));
}

// --- Frames ---

void tst_Playback::frameIsShownOnce_data()
{
    QTest::addColumn<State>("before");
    QTest::addColumn<QString>("call");
    QTest::newRow("play") << State::Stopped << "play";
    QTest::newRow("tick") << State::Playing << "tick";
    QTest::newRow("tick around the end") << State::Playing << "late tick";
    QTest::newRow("tick over shorter effects' ends") << State::Playing << "long tick";
    QTest::newRow("pause") << State::Playing << "pause";
    QTest::newRow("seek, stopped") << State::Stopped << "seek";
    QTest::newRow("seek, paused") << State::Paused << "seek";
    QTest::newRow("seek, playing") << State::Playing << "seek";
    QTest::newRow("restart") << State::Playing << "restart";
    QTest::newRow("refresh") << State::Paused << "refresh";
}

void tst_Playback::frameIsShownOnce()
{
    QFETCH(State, before);
    QFETCH(QString, call);
    Stage stage(showOf(composite("loop=1", effect("Ramp", "gid=1 end=1000"))
                       + composite("loop=1", effect("Ramp", "gid=2 end=130"))));
    stage.enter(before);
    QSignalSpy frames(&stage.playback, &Playback::frameShown);
    if (call == u"play")
        stage.playback.play();
    else if (call == u"tick")
        stage.tickAfter(16);
    else if (call == u"late tick")
        stage.tickAfter(1016);
    else if (call == u"long tick")
        stage.tickAfter(700);
    else if (call == u"pause")
        stage.playback.pause();
    else if (call == u"seek")
        stage.playback.seek(900);
    else if (call == u"restart")
        stage.playback.restart();
    else if (call == u"refresh")
        stage.playback.refresh();
    QCOMPARE(frames.count(), 1);
}

void tst_Playback::stateIsAnnouncedWhenItChangesOnly()
{
    Stage stage(rampShow(1000));
    QSignalSpy states(&stage.playback, &Playback::stateChanged);
    stage.playback.stop();
    stage.playback.pause();
    QCOMPARE(states.count(), 0);
    stage.playback.play();
    stage.playback.play();
    stage.playback.restart();
    stage.playback.seek(500);
    stage.tickAfter(700);
    QCOMPARE(states.count(), 1);
    stage.playback.pause();
    stage.playback.seek(1);
    stage.playback.refresh();
    QCOMPARE(states.count(), 2);
    stage.playback.stop();
    QCOMPARE(states.count(), 3);
}

void tst_Playback::timerTicksWhilePlayingOnly()
{
    Stage stage(rampShow(1000));
    QSignalSpy frames(&stage.playback, &Playback::frameShown);
    const auto ticks = [&] {
        frames.clear();
        QTest::qWait(100);
        return frames.count();
    };
    QCOMPARE(ticks(), 0);
    stage.playback.play();
    QVERIFY(ticks() >= 1);
    stage.playback.pause();
    QCOMPARE(ticks(), 0);
    stage.playback.restart();
    QVERIFY(ticks() >= 1);
    stage.playback.stop();
    QCOMPARE(ticks(), 0);
}

void tst_Playback::computersClockIsUsedUnlessAnotherIsGiven()
{
    const std::unique_ptr<Show> show = showFrom(rampShow(3'600'000));
    Playback playback;
    playback.setShow(show.get());
    QElapsedTimer sincePlay;
    sincePlay.start();
    playback.play();
    QTest::qWait(120);
    playback.tick();
    const qint64 latest = sincePlay.elapsed();
    QVERIFY(playback.position() >= 100);
    QVERIFY(playback.position() <= latest + 1);
}

void tst_Playback::framesThatWereNotShownAreCounted_data()
{
    QTest::addColumn<double>("frames");
    QTest::addColumn<qint64>("dropped");
    QTest::newRow("in time") << 1.0 << qint64{0};
    QTest::newRow("early") << 0.3 << qint64{0};
    QTest::newRow("a little late") << 1.4 << qint64{0};
    QTest::newRow("one frame late") << 2.0 << qint64{1};
    QTest::newRow("ten frames late") << 11.0 << qint64{10};
}

void tst_Playback::framesThatWereNotShownAreCounted()
{
    QFETCH(double, frames);
    QFETCH(qint64, dropped);
    Stage stage(rampShow(60'000));
    stage.playback.play();
    for (int i = 0; i < 3; ++i)
        stage.tickAfter(frames * 1000 / Playback::framesPerSecond);
    QCOMPARE(stage.playback.droppedFrames(), 3 * dropped);
    stage.playback.pause();
    QCOMPARE(stage.playback.droppedFrames(), 3 * dropped);
}

void tst_Playback::pauseOfTheEventLoopCostsFramesNotTime()
{
    Stage stage(rampShow(60'000));
    stage.playback.play();
    stage.tickAfter(1000.0 / 60);
    stage.tickAfter(10'000);
    QCOMPARE(stage.playback.droppedFrames(), 599);
    QCOMPARE(stage.playback.position(), 10'016u);
    stage.tickAfter(1000.0 / 60);
    QCOMPARE(stage.playback.position(), 10'033u);
    QCOMPARE(stage.playback.droppedFrames(), 599);
}

void tst_Playback::playCountsDroppedFramesAnew()
{
    Stage stage(rampShow(60'000));
    stage.playback.play();
    stage.tickAfter(200);
    QVERIFY(stage.playback.droppedFrames() > 0);
    stage.playback.pause();
    stage.wait(1000); // nothing is due while paused
    stage.playback.play();
    QCOMPARE(stage.playback.droppedFrames(), 0);
    stage.tickAfter(16);
    QCOMPARE(stage.playback.droppedFrames(), 0);
}

void tst_Playback::frameTakesProcessorTime()
{
    Stage stage(exampleShow(QStringLiteral("facade.show")));
    stage.playback.play();
    QVERIFY(stage.playback.frameCpuNs() > 0);
    stage.tickAfter(1000);
    QVERIFY(stage.playback.frameCpuNs() > 0);
    QVERIFY(stage.playback.frameCpuNs() < 10'000 * nsPerMs);
}

// --- Edits ---

void tst_Playback::refreshShowsAnEditAtThePlace()
{
    Stage stage(showOf(composite("", effect("Solid", "gid=1 end=1000 level=0.5"))));
    stage.playback.seek(300);
    Effect *solid = EffectHost::nested(*stage.show->effects().first()).front();
    solid->setProperty(QStringLiteral("level"), QStringLiteral("0.25"));
    QCOMPARE(stage.firstLevel(), 0.5);
    stage.playback.refresh();
    QCOMPARE(stage.firstLevel(), 0.25);
    QCOMPARE(stage.playback.position(), 300u);
    QCOMPARE(stage.playback.state(), State::Paused);
    solid->setProperty(QStringLiteral("begin"), QStringLiteral("301"));
    stage.playback.refresh();
    QVERIFY(isDark(*stage.show));
}

void tst_Playback::refreshLeavesAStoppedAndAFinishedShowDark()
{
    Stage stage(showOf(composite("", effect("Solid", "gid=1 end=1000"))));
    stage.playback.refresh();
    QVERIFY(isDark(*stage.show));
    QCOMPARE(stage.playback.state(), State::Stopped);
    stage.playback.setLooping(false);
    stage.playback.play();
    stage.tickAfter(2000);
    stage.playback.refresh();
    QVERIFY(isDark(*stage.show));
    QCOMPARE(stage.playback.position(), 1000u);
}

void tst_Playback::refreshOfAFinishedShowThatGrewShowsIt()
{
    Stage stage(showOf(composite("", effect("Solid", "gid=1 end=1000"))));
    stage.playback.setLooping(false);
    stage.playback.play();
    stage.tickAfter(2000);
    Effect *top = stage.show->effects().first();
    const QString end = QStringLiteral("end");
    EffectHost::nested(*top).front()->setProperty(end, QStringLiteral("2000"));
    top->setProperty(end, QStringLiteral("2000"));
    stage.playback.refresh();
    QCOMPARE(stage.playback.position(), 1000u);
    QVERIFY(!isDark(*stage.show));
    stage.playback.play(); // not finished any more
    stage.tickAfter(100);
    QCOMPARE(stage.playback.position(), 1100u);
}

void tst_Playback::refreshOfAShowThatShrankGoesToItsLastPlace()
{
    Stage stage(rampShow(1000));
    stage.playback.seek(900);
    stage.show->effects().first()->setProperty(QStringLiteral("end"), QStringLiteral("500"));
    stage.playback.refresh();
    QCOMPARE(stage.playback.position(), 499u);
}

void tst_Playback::rebuiltShowGoesOnWhereItWas_data()
{
    QTest::addColumn<State>("state");
    QTest::newRow("paused") << State::Paused;
    QTest::newRow("playing") << State::Playing;
}

void tst_Playback::rebuiltShowGoesOnWhereItWas()
{
    QFETCH(State, state);
    Stage stage(rampShow(1000));
    stage.enter(state);
    stage.playback.seek(400);
    stage.wait(100);
    QSignalSpy frames(&stage.playback, &Playback::frameShown);
    QSignalSpy states(&stage.playback, &Playback::stateChanged);
    stage.rebuild(rampShow(2000));
    QCOMPARE(frames.count(), 1);
    QCOMPARE(states.count(), 0);
    QCOMPARE(stage.playback.state(), state);
    QCOMPARE(stage.playback.position(), 400u);
    QCOMPARE(stage.playback.length(), 2000u);
    QVERIFY(std::abs(stage.firstLevel() - 0.2) < 1e-9);
    stage.tickAfter(100);
    if (state == State::Playing) {
        QCOMPARE(stage.playback.position(), 600u); // the wall clock went on meanwhile
        QVERIFY(std::abs(stage.firstLevel() - 0.3) < 1e-9);
    } else {
        QCOMPARE(stage.playback.position(), 400u);
    }
}

void tst_Playback::rebuiltShowStaysStoppedAndDark()
{
    Stage stage(rampShow(1000));
    stage.playback.play();
    stage.tickAfter(100);
    stage.playback.stop();
    QSignalSpy frames(&stage.playback, &Playback::frameShown);
    stage.rebuild(showOf(composite("", effect("Solid", "gid=1 end=700"))));
    QCOMPARE(frames.count(), 1);
    QCOMPARE(stage.playback.state(), State::Stopped);
    QCOMPARE(stage.playback.position(), 0u);
    QVERIFY(isDark(*stage.show));
    QCOMPARE(countOfRunning(*stage.show), 0);
    stage.playback.play();
    QVERIFY(!isDark(*stage.show));
}

void tst_Playback::rebuiltShowStaysFinishedWithinItsLength_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<quint32>("position");
    QTest::newRow("same") << 1000 << 1000u;
    QTest::newRow("shorter") << 600 << 600u;
}

void tst_Playback::rebuiltShowStaysFinishedWithinItsLength()
{
    QFETCH(int, length);
    QFETCH(quint32, position);
    Stage stage(rampShow(1000));
    stage.playback.setLooping(false);
    stage.playback.play();
    stage.tickAfter(2000);
    stage.rebuild(
        showOf(composite("", effect("Solid", "gid=1 end=" + QByteArray::number(length)))));
    QCOMPARE(stage.playback.state(), State::Paused);
    QCOMPARE(stage.playback.position(), position);
    QVERIFY(isDark(*stage.show));
    stage.playback.refresh();
    QVERIFY(isDark(*stage.show));
    stage.playback.play();
    QCOMPARE(stage.playback.position(), 0u);
    QVERIFY(!isDark(*stage.show));
}

void tst_Playback::rebuiltShowThatIsShorterIsShownWithinItsLength()
{
    Stage stage(rampShow(1000));
    stage.playback.seek(900);
    stage.rebuild(rampShow(500));
    QCOMPARE(stage.playback.position(), 499u);
    stage.playback.play();
    stage.tickAfter(11);
    QCOMPARE(stage.playback.position(), 10u);
}

void tst_Playback::rebuiltFinishedShowThatGrewIsShown()
{
    Stage stage(rampShow(1000));
    stage.playback.setLooping(false);
    stage.playback.play();
    stage.tickAfter(2000);
    stage.rebuild(rampShow(2000));
    QCOMPARE(stage.playback.state(), State::Paused);
    QCOMPARE(stage.playback.position(), 1000u);
    QVERIFY(std::abs(stage.firstLevel() - 0.5) < 1e-9);
}

// --- The same position shows the same ---

void tst_Playback::placesSoughtInAnyOrderShowWhatAPlainRunShows_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("stepMs");
    QTest::newRow("facade") << exampleShow(QStringLiteral("facade.show")) << 25u;
    QTest::newRow("minimal") << exampleShow(QStringLiteral("minimal.show")) << 1u;
    for (quint32 seed = 1; seed <= 30; ++seed) {
        Dice dice(seed);
        QTest::addRow("generated %u", seed)
            << showOf(randomComposite(dice, 3)) << (seed % 2 == 0 ? 25u : 1u);
    }
}

void tst_Playback::placesSoughtInAnyOrderShowWhatAPlainRunShows()
{
    QFETCH(QByteArray, text);
    QFETCH(quint32, stepMs);
    Dice dice(7);
    const QList<quint32> places = placesIn(text, dice, 60);
    const std::vector<Levels> expected = plainRun(text, places, stepMs);
    const bool isSomethingLit =
        std::any_of(expected.begin(), expected.end(), [](const Levels &all) {
            return *std::max_element(all.begin(), all.end()) > 0.1;
        });
    QVERIFY(isSomethingLit);
    Stage stage(text);
    for (qsizetype i = 0; i < 3 * places.size(); ++i) {
        const auto index = static_cast<qsizetype>(dice.roll(static_cast<quint32>(places.size())));
        if (dice.oneIn(10))
            stage.playback.stop();
        stage.playback.seek(places[index]);
        const Levels &due = expected.at(static_cast<std::size_t>(index));
        QVERIFY2(areSame(stage.levels(), due),
                 qPrintable(differenceAt(places[index], stage.levels(), due)));
    }
}

void tst_Playback::shorterEffectsLoopAsInAPlainRun_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("one shorter") << showOf(
        composite("loop=1", effect("Ramp", "gid=2 begin=20 end=300")
                                + effect("Twinkle", "gid=2 end=300 cycletime=70 fadein=100"))
        + composite("loop=1", effect("Chase", "gid=3 end=1700 cycletime=230")));
    QTest::newRow("shorter ones that loop and do not")
        << showOf(composite("loop=0", effect("Ramp", "gid=2 end=300"))
                  + composite("loop=1", effect("Ramp", "gid=3 end=410"))
                  + effect("Chase", "gid=1 cycletime=130 priority=1")
                  + composite("loop=1", effect("Pulse", "gid=4 end=1333 transparency=0.5")));
    for (quint32 seed = 1; seed <= 10; ++seed) {
        Dice dice(seed);
        QByteArray effects;
        for (int i = 0; i < 3; ++i)
            effects += randomComposite(dice, 0);
        effects +=
            composite("loop=1", effect("Twinkle", "gid=1 end=4000 fadein=4000 cycletime=61"));
        QTest::addRow("generated %u", seed) << showOf(effects);
    }
}

void tst_Playback::shorterEffectsLoopAsInAPlainRun()
{
    QFETCH(QByteArray, text);
    Dice dice(3);
    const QList<quint32> places = placesIn(text, dice, 100);
    const std::vector<Levels> expected = plainRun(text, places, 1);
    Stage stage(text);
    for (qsizetype i = places.size() - 1; i >= 0; --i) {
        stage.playback.seek(places[i]);
        const Levels &due = expected.at(static_cast<std::size_t>(i));
        QVERIFY2(areSame(stage.levels(), due),
                 qPrintable(differenceAt(places[i], stage.levels(), due)));
    }
}

void tst_Playback::effectThatIsVeryMuchShorterIsShownRight()
{
    Stage stage(showOf(composite("loop=1", effect("Ramp", "gid=2 end=3"))
                       + composite("loop=1", effect("Ramp", "gid=3 end=700"))
                       + composite("", effect("Solid", "gid=4 begin=59999 end=60000"))));
    for (const quint32 place : {59'999u, 20'000u, 45'001u, 30'003u, 2u}) {
        stage.playback.seek(place);
        QVERIFY(std::abs(stage.levels().front() - (place % 3) / 3.0) < 1e-9);
        QVERIFY(std::abs(stage.levels().at(4) - (place % 700) / 700.0) < 1e-9);
    }
}

void tst_Playback::playingShowsWhatSeekingShows_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("minimal") << exampleShow(QStringLiteral("minimal.show"));
    QTest::newRow("shorter effect")
        << showOf(composite("loop=1", effect("Ramp", "gid=2 end=310"))
                  + composite("loop=1", effect("Chase", "gid=3 end=2000 cycletime=230")));
    QTest::newRow("nested in a shorter effect") << showOf(
        composite("loop=1", composite("begin=70 end=310", effect("Ramp", "gid=2 end=400")))
        + composite("loop=1", effect("Chase", "gid=3 end=2000 cycletime=230")));
    for (quint32 seed = 1; seed <= 15; ++seed) {
        Dice dice(seed);
        QByteArray effects;
        for (quint32 count = 1 + seed % 3; count > 0; --count)
            effects += randomComposite(dice, 3);
        QTest::addRow("generated %u", seed) << showOf(effects);
    }
}

void tst_Playback::playingShowsWhatSeekingShows()
{
    QFETCH(QByteArray, text);
    Stage played(text);
    Stage sought(text);
    Dice dice(11);
    played.playback.play();
    int laps = 0;
    for (quint32 last = 0; laps < 3; last = played.playback.position()) {
        // Mostly the rate of a screen, at times a frame late or a jump.
        if (dice.oneIn(40))
            played.playback.seek(dice.roll(played.playback.length()));
        played.tickAfter(dice.oneIn(10) ? 1 + dice.roll(200) : 16.7);
        const quint32 place = played.playback.position();
        sought.playback.seek(place);
        QVERIFY2(areSame(played.levels(), sought.levels()),
                 qPrintable(differenceAt(place, played.levels(), sought.levels())));
        laps += place < last ? 1 : 0;
    }
}

void tst_Playback::clockStartedAnewByAnEditDoesNotMakeTheShowJump_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("meta effect") << rampShow(2000);
    QTest::newRow("single effect") << showOf(effect("Ramp", "gid=1 begin=0 end=2000"));
    QTest::newRow("shorter effect")
        << showOf(composite("loop=1", effect("Ramp", "gid=2 end=310"))
                  + composite("loop=1", effect("Ramp", "gid=3 end=2000 cycletime=230")));
}

void tst_Playback::clockStartedAnewByAnEditDoesNotMakeTheShowJump()
{
    QFETCH(QByteArray, text);
    Stage stage(text);
    stage.playback.play();
    for (int i = 0; i < 100; ++i) {
        stage.tickAfter(35);
        for (Effect *effect : stage.show->effects()) {
            if (i % 3 != 0)
                effect->init();
        }
        const quint32 place = stage.playback.position();
        const Levels due = levelsAt(text, place);
        QVERIFY2(areSame(stage.levels(), due),
                 qPrintable(differenceAt(place, stage.levels(), due)));
    }
    stage.show->effects().first()->init();
    stage.playback.pause();
    stage.show->effects().first()->init();
    stage.playback.play();
    stage.tickAfter(50);
    const quint32 place = stage.playback.position();
    QVERIFY(areSame(stage.levels(), levelsAt(text, place)));
}

void tst_Playback::childMovedWhilePlayingShowsWhatSeekingShows()
{
    Stage stage(showOf(composite("", effect("Ramp", "gid=1 end=1000")
                                         + effect("Solid", "gid=2 begin=1900 end=2000"))));
    stage.playback.play();
    stage.tickAfter(400);
    Effect *ramp = EffectHost::nested(*stage.show->effects().first()).front();
    ramp->setProperty(QStringLiteral("begin"), QStringLiteral("200"));
    ramp->setProperty(QStringLiteral("end"), QStringLiteral("1200"));
    QSignalSpy frames(&stage.playback, &Playback::frameShown);
    stage.playback.refresh();
    QCOMPARE(frames.count(), 0); // the next frame is soon enough
    stage.tickAfter(100);
    QCOMPARE(frames.count(), 1);
    QCOMPARE(stage.playback.position(), 500u);
    QVERIFY(std::abs(stage.firstLevel() - 0.3) < 1e-9);
    stage.tickAfter(100);
    QCOMPARE(stage.playback.position(), 600u);
    QVERIFY(std::abs(stage.firstLevel() - 0.4) < 1e-9);
}

QTEST_GUILESS_MAIN(tst_Playback)

#include "tst_Playback.moc"
