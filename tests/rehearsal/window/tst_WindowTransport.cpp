#include "WindowEdits.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QRegularExpression>
#include <QSlider>
#include <QStatusBar>

#include <cmath>

using rehearsal::Playback;

/// Playing, with the transport bar and the Play menu.
class tst_WindowTransport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { useOwnHome(); }
    void init();

    void playsPausesAndGoesOn();
    void stopGoesToTheStartAndIsDark();
    void restartPlaysFromTheStart();
    void loopDecidesWhatHappensAtTheEnd();
    void seeksWithTheSlider();
    void seeksWithTheTimeline();
    void stepsStayWithinTheShow();
    void clockTellsTheTime_data();
    void clockTellsTheTime();
    void lengthFollowsAnEditOfAStoppedShow();
    void speedIsChosen();
    void speedIsSteppedWithinItsBounds();
    void playedTimeFollowsTheSpeed();
    void statusBarTellsWhatFramesCost();
    void droppedFramesAreTold();
    void deletionWhilePlayingDoesNotJump();
    void editWhilePlayingDoesNotJump();
    void everyEffectPlays();
};

void tst_WindowTransport::init()
{
    clearHome();
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!This plugin)")));
}

void tst_WindowTransport::playsPausesAndGoesOn()
{
    WindowScene scene;
    QAction &play = scene.action("playAction");
    const QString word = play.text();
    QCOMPARE(scene.playback().state(), Playback::State::Stopped);
    play.trigger();
    QCOMPARE(scene.playback().state(), Playback::State::Playing);
    QVERIFY(play.text() != word);
    QTRY_VERIFY(scene.playback().position() > 100);
    QCOMPARE(scene.light(1), 1.0);
    play.trigger();
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    QCOMPARE(play.text(), word);
    const quint32 position = scene.playback().position();
    QTest::qWait(80);
    QCOMPARE(scene.playback().position(), position);
    QCOMPARE(scene.light(1), 1.0);
    play.trigger();
    QTRY_VERIFY(scene.playback().position() > position);
    QVERIFY(scene.playback().position() < position + 1000);
}

void tst_WindowTransport::stopGoesToTheStartAndIsDark()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    scene.trigger("playAction");
    scene.trigger("stopAction");
    QCOMPARE(scene.playback().state(), Playback::State::Stopped);
    QCOMPARE(scene.playback().position(), 0u);
    QCOMPARE(scene.timeline().position(), 0u);
    QCOMPARE(scene.light(1) + scene.light(2) + scene.light(3), 0.0);
}

void tst_WindowTransport::restartPlaysFromTheStart()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    scene.trigger("restartAction");
    QCOMPARE(scene.playback().state(), Playback::State::Playing);
    QVERIFY(scene.playback().position() < 1000);
    QCOMPARE(scene.light(1), 1.0);
}

void tst_WindowTransport::loopDecidesWhatHappensAtTheEnd()
{
    WindowScene scene;
    QAction &loop = scene.action("loopAction");
    QVERIFY(loop.isChecked());
    scene.playback().seek(59'950);
    scene.trigger("playAction");
    QTRY_VERIFY(scene.playback().position() < 10'000);
    QCOMPARE(scene.playback().state(), Playback::State::Playing);
    QCOMPARE(scene.light(1), 1.0);

    loop.trigger();
    QVERIFY(!scene.playback().isLooping());
    scene.playback().seek(59'950);
    QTRY_COMPARE(scene.playback().state(), Playback::State::Paused);
    QCOMPARE(scene.playback().position(), 60'000u);
    QCOMPARE(scene.light(3), 0.0);
}

void tst_WindowTransport::seeksWithTheSlider()
{
    WindowScene scene;
    auto &slider = scene.part<QSlider>("seekSlider");
    QCOMPARE(slider.maximum(), 60'000);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, {slider.width() / 2, slider.height() / 2});
    QVERIFY(std::abs(static_cast<double>(scene.playback().position()) - 30'000) < 1500);
    QCOMPARE(scene.playback().state(), Playback::State::Paused);
    QVERIFY(scene.light(3) > 0.4);
    scene.playback().seek(12'000);
    QCOMPARE(slider.value(), 12'000);
}

void tst_WindowTransport::seeksWithTheTimeline()
{
    WindowScene scene;
    const QPoint place(scene.timeline().xAt(42'000), scene.timeline().rulerRect().center().y());
    QTest::mouseClick(scene.timeline().viewport(), Qt::LeftButton, {}, place);
    QVERIFY(std::abs(static_cast<double>(scene.playback().position()) - 42'000) < 500);
    QCOMPARE(scene.timeline().position(), scene.playback().position());
    QVERIFY(scene.light(3) > 0.6);
}

void tst_WindowTransport::stepsStayWithinTheShow()
{
    WindowScene scene;
    const auto at = [&](const char *action) {
        scene.trigger(action);
        return scene.playback().position();
    };
    scene.playback().seek(20'000);
    QCOMPARE(at("forwardAction"), 21'000u);
    QCOMPARE(at("farForwardAction"), 31'000u);
    QCOMPARE(at("backAction"), 30'000u);
    QCOMPARE(at("farBackAction"), 20'000u);
    scene.playback().seek(400);
    QCOMPARE(at("backAction"), 0u);
    QCOMPARE(at("goToEndAction"), 59'999u);
    QCOMPARE(at("forwardAction"), 59'999u);
    QCOMPARE(at("goToStartAction"), 0u);
}

void tst_WindowTransport::clockTellsTheTime_data()
{
    QTest::addColumn<quint32>("position");
    QTest::addColumn<QString>("text");
    QTest::newRow("start") << 0u << "0:00.000";
    QTest::newRow("ms") << 7u << "0:00.007";
    QTest::newRow("seconds") << 12'345u << "0:12.345";
    QTest::newRow("end") << 60'000u << "0:59.999";
}

void tst_WindowTransport::clockTellsTheTime()
{
    QFETCH(quint32, position);
    QFETCH(QString, text);
    WindowScene scene;
    scene.playback().seek(position);
    QCOMPARE(scene.part<QLabel>("clock").text(), text);
    QVERIFY(scene.part<QLabel>("length").text().contains(QStringLiteral("1:00.000")));
}

void tst_WindowTransport::lengthFollowsAnEditOfAStoppedShow()
{
    WindowScene scene;
    scene.typeIntoCell(3, meta::EndColumn, QStringLiteral("90"));
    QCOMPARE(scene.playback().length(), 90'000u);
    QVERIFY(scene.part<QLabel>("length").text().contains(QStringLiteral("1:30.000")));
    QCOMPARE(scene.playback().state(), Playback::State::Stopped);
}

void tst_WindowTransport::speedIsChosen()
{
    WindowScene scene;
    auto &box = scene.part<QComboBox>("speedBox");
    QCOMPARE(box.currentData().toDouble(), 1.0);
    QCOMPARE(box.itemData(0).toDouble(), 0.25);
    QCOMPARE(box.itemData(box.count() - 1).toDouble(), 4.0);
    box.setFocus();
    scene.key(Qt::Key_Down);
    QCOMPARE(scene.playback().speed(), box.currentData().toDouble());
    QVERIFY(scene.playback().speed() > 1.0);
    QCOMPARE(QApplication::focusWidget(), &box);
}

void tst_WindowTransport::speedIsSteppedWithinItsBounds()
{
    WindowScene scene;
    scene.trigger("fasterAction");
    QVERIFY(scene.playback().speed() > 1.0);
    scene.trigger("normalSpeedAction");
    QCOMPARE(scene.playback().speed(), 1.0);
    for (int i = 0; i < 20; ++i)
        scene.trigger("slowerAction");
    QCOMPARE(scene.playback().speed(), 0.25);
    for (int i = 0; i < 20; ++i)
        scene.trigger("fasterAction");
    QCOMPARE(scene.playback().speed(), 4.0);
    QCOMPARE(scene.part<QComboBox>("speedBox").currentData().toDouble(), 4.0);
}

void tst_WindowTransport::playedTimeFollowsTheSpeed()
{
    WindowScene scene;
    for (int i = 0; i < 20; ++i)
        scene.trigger("fasterAction");
    scene.playback().seek(10'000);
    scene.playback().play();
    QElapsedTimer watch;
    watch.start();
    QTest::qWait(250);
    scene.playback().tick();
    const double played = scene.playback().position() - 10'000.0;
    QVERIFY(std::abs(played - static_cast<double>(watch.elapsed()) * 4) < 80);
}

void tst_WindowTransport::statusBarTellsWhatFramesCost()
{
    WindowScene scene;
    const auto &meter = scene.part<QLabel>("frameMeter");
    QVERIFY(meter.isVisible());
    QVERIFY(scene.window.statusBar()->isAncestorOf(&meter));
    QVERIFY(meter.text().isEmpty());
    scene.trigger("playAction");
    QTRY_VERIFY(!meter.text().isEmpty());
    const QRegularExpression form(QStringLiteral("^frame (\\d+\\.\\d) ms \\(effects (\\d+\\.\\d) ms"
                                                 "\\).* (\\d+) fps.* (\\d+) dropped$"));
    const QRegularExpressionMatch match = form.match(meter.text());
    QVERIFY2(match.hasMatch(), qPrintable(meter.text()));
    QVERIFY(match.captured(1).toDouble() >= match.captured(2).toDouble());
    QVERIFY(match.captured(3).toInt() > 5);
    QVERIFY(match.captured(3).toInt() <= 70);
}

void tst_WindowTransport::droppedFramesAreTold()
{
    WindowScene scene;
    scene.trigger("playAction");
    QTest::qSleep(300); // nobody serves the window
    QTRY_VERIFY(scene.part<QLabel>("frameMeter").text().contains(QStringLiteral("dropped")));
    QVERIFY(scene.playback().droppedFrames() >= 15);
    const QString text = scene.part<QLabel>("frameMeter").text();
    const int told = text.section(u' ', -2, -2).toInt();
    QVERIFY2(told >= 15 && told <= scene.playback().droppedFrames(), qPrintable(text));
}

// The last light rises evenly and so tells what time the lights are at.
void tst_WindowTransport::deletionWhilePlayingDoesNotJump()
{
    WindowScene scene;
    scene.playback().seek(30'000);
    scene.playback().play();
    QElapsedTimer watch;
    watch.start();
    for (const quint32 eid : {1u, 4u}) {
        scene.select(eid);
        press(scene, "m_deleteEffectButton");
        QVERIFY2(!scene.top().getEffect(eid), qPrintable(QString::number(eid)));
        for (int i = 0; i < 4; ++i) {
            QTest::qWait(20);
            scene.playback().tick();
            QCOMPARE(scene.playback().state(), Playback::State::Playing);
            const double expected = 30'000 + static_cast<double>(watch.elapsed());
            QVERIFY(std::abs(scene.playback().position() - expected) < 40);
            QVERIFY(std::abs(scene.light(3) * 59'000 + 1000 - scene.playback().position()) < 2);
        }
    }
}

void tst_WindowTransport::editWhilePlayingDoesNotJump()
{
    WindowScene scene;
    scene.playback().seek(3000);
    scene.playback().play();
    QElapsedTimer watch;
    watch.start();
    scene.select(1);
    scene.typeInto("m_endFixedLineEdit", "1.5"); // and what is linked to it begins earlier
    QTest::qWait(50);
    scene.playback().tick();
    QCOMPARE(scene.childText(2, "begin"), QStringLiteral("1500"));
    QVERIFY(std::abs(scene.playback().position() - 3000.0 - static_cast<double>(watch.elapsed()))
            < 40);
    QCOMPARE(scene.light(2), scene.playback().position() < 4500 ? 1.0 : 0.0);
    QVERIFY(std::abs(scene.light(3) * 59'000 + 1000 - scene.playback().position()) < 2);
}

void tst_WindowTransport::everyEffectPlays()
{
    WindowScene scene(twoEffectsShow());
    QCOMPARE(scene.playback().length(), 5000u);
    scene.playback().seek(1000);
    QCOMPARE(scene.light(1), 1.0);
    QCOMPARE(scene.light(3), 1.0);
    auto &box = scene.part<QComboBox>("effectBox");
    box.setFocus();
    scene.key(Qt::Key_Down);
    scene.playback().seek(2000);
    QCOMPARE(scene.light(1), 1.0);
    QCOMPARE(scene.light(3), 1.0);
}

QTEST_MAIN(tst_WindowTransport)
#include "tst_WindowTransport.moc"
