#include "Player.h"
#include "ShowFile.h"
#include "TimelineStage.h"
#include "TimelineView.h"

#include <QHelpEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <memory>

using rehearsal::Edge;
using rehearsal::EidPath;
using rehearsal::LinkKind;
using rehearsal::TimelineView;

namespace {

/// Counts the keys that nobody below wanted.
class Window : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
};

/// The view in a window, with two plain children, a holder of two, and one far below.
class Viewer
{
public:
    Viewer()
    {
        stage.add({1, 0, 4000}, nullptr, QStringLiteral("Ramp"));
        Effect *second = stage.add({2, 4000, 8000});
        TimelineStage::linkStart(second, 1, Edge::End);
        holder = stage.addMeta({3, 2000, 9000});
        stage.add({31, 0, 3000}, holder);
        stage.add({32, 3000, 5000}, holder);
        for (quint32 eid = 4; eid < 40; ++eid)
            stage.add({eid, 9000, 10000});
        stage.top->init();
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins({});
        view = new TimelineView;
        layout->addWidget(view);
        window.resize(900, 300);
        view->setEffect(stage.top);
        window.show();
        static_cast<void>(QTest::qWaitForWindowActive(&window));
        view->setFocus();
    }

    void click(QPoint at) const
    {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }
    void doubleClick(QPoint at) const
    {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }
    void wheel(QPoint at, int delta, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               bool sideways = false) const
    {
        const QPoint angle = sideways ? QPoint(delta, 0) : QPoint(0, delta);
        QWheelEvent event(at, view->viewport()->mapToGlobal(at), {}, angle, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(view->viewport(), &event);
    }
    QPoint middleOf(const EidPath &path) const { return view->barRect(path).center(); }
    QPoint nameOf(const EidPath &path) const
    {
        return {view->headerRect().center().x(), middleOf(path).y()};
    }

    TimelineStage stage;
    Effect *holder;
    Window window;
    TimelineView *view; ///< owned by the window
};

int scrolledX(const TimelineView *view)
{
    return view->horizontalScrollBar()->value();
}

int scrolledY(const TimelineView *view)
{
    return view->verticalScrollBar()->value();
}

} // namespace

class tst_TimelineView : public QObject
{
    Q_OBJECT

private slots:
    void emptyViewShowsNothingAndStandsEverything();
    void barsLieFromBeginToEndOneLaneEach();
    void timesAndPixelsAgreeAtAnyZoom();
    void fitShowsAllOfTheEffect();
    void refreshFollowsEdits();
    void refreshKeepsZoomScrollFoldsAndHighlight();
    void anotherEffectStartsAfresh();
    void rebuiltEffectKeepsTheView();
    void deletedEffectsAreStood();
    void clickInTheRulerSeeks();
    void dragSeeksAndStaysInTheEffect();
    void clickOnABarHighlightsAndSeeksNowhere();
    void clickInEmptySpaceSeeks();
    void otherButtonsDoNothing();
    void doubleClickUnfoldsAHolder_data();
    void doubleClickUnfoldsAHolder();
    void clickOnTheTriangleUnfolds_data();
    void clickOnTheTriangleUnfolds();
    void wheelZoomsAroundTheCursor_data();
    void wheelZoomsAroundTheCursor();
    void wheelScrolls();
    void zoomHasLimits();
    void keysZoom();
    void upAndDownMoveTheHighlight();
    void leftRightAndEnterFold();
    void otherKeysGoToTheWindow_data();
    void otherKeysGoToTheWindow();
    void packingIsAnnouncedOnceAndHidesTheNames();
    void runningChildrenAreShown();
    void childrenOfAStoppedHolderDoNotRun();
    void rowsThatScrollIntoSightShowTheirState();
    void playheadIsFollowedPageByPage();
    void playheadIsNotFollowedWhileDraggingOrScrolledAway();
    void linksAreJudged();
    void hoveringTellsOfTheChild();
    void toolTipTellsRulesAndFades();
    void toolTipTakesNamesAsTheyAre();
    void isAccessible();
    void realShowUnfoldsAndPacks();
};

void tst_TimelineView::emptyViewShowsNothingAndStandsEverything()
{
    TimelineView view;
    view.resize(400, 200);
    view.show();
    QSignalSpy seeks(&view, &TimelineView::seekRequested);
    view.setEffect(nullptr);
    view.refresh();
    view.setPosition(1234);
    view.setPacked(true);
    view.zoomIn();
    view.setHighlighted({1});
    view.setUnfolded({1}, true);
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, {200, 100});
    QVERIFY(!view.grab().isNull());
    QVERIFY(seeks.isEmpty());
    QVERIFY(view.barRect({1}).isNull());
    QVERIFY(view.disclosureRect({1}).isNull());
    QCOMPARE(view.lane({1}), -1);
    QCOMPARE(view.linkKind({1}, Edge::Begin), LinkKind::None);
    QVERIFY(!view.isRunningShown({1}));
    QVERIFY(view.highlighted().isEmpty());
    QVERIFY(!view.horizontalScrollBar()->maximum());
}

void tst_TimelineView::barsLieFromBeginToEndOneLaneEach()
{
    Viewer viewer;
    const QRect first = viewer.view->barRect({1});
    const QRect second = viewer.view->barRect({2});
    QCOMPARE(first.left(), viewer.view->xAt(0));
    QVERIFY(qAbs(first.right() - viewer.view->xAt(4000)) <= 1);
    QVERIFY(qAbs(second.left() - first.right()) <= 1);
    QCOMPARE(viewer.view->lane({1}), 0);
    QCOMPARE(viewer.view->lane({2}), 1);
    QVERIFY(second.top() >= first.bottom());
    QVERIFY(first.top() >= viewer.view->rulerRect().bottom());
    QVERIFY(first.left() >= viewer.view->headerRect().right());
}

void tst_TimelineView::timesAndPixelsAgreeAtAnyZoom()
{
    Viewer viewer;
    for (int step = 0; step < 60; ++step) {
        for (int x = 300; x < 800; x += 37)
            QVERIFY(qAbs(viewer.view->xAt(viewer.view->timeAt(x)) - x)
                    <= 1 + viewer.view->pixelsPerMs());
        viewer.view->zoomIn();
    }
}

void tst_TimelineView::fitShowsAllOfTheEffect()
{
    Viewer viewer;
    const auto isAllSeen = [&viewer] {
        return viewer.view->horizontalScrollBar()->maximum() == 0
               && viewer.view->xAt(0) >= viewer.view->headerRect().right()
               && viewer.view->xAt(10000) < viewer.view->viewport()->width()
               && viewer.view->xAt(10000) > viewer.view->viewport()->width() - 60;
    };
    QVERIFY(isAllSeen());
    viewer.window.resize(1200, 300);
    QCoreApplication::processEvents();
    QVERIFY(isAllSeen());
    viewer.view->zoomIn();
    QVERIFY(!isAllSeen());
    viewer.view->zoomToFit();
    QVERIFY(isAllSeen());
    viewer.stage.add({90, 0, 30000});
    viewer.view->refresh();
    QVERIFY(viewer.view->xAt(30000) < viewer.view->viewport()->width());
}

void tst_TimelineView::refreshFollowsEdits()
{
    Viewer viewer;
    viewer.view->setHighlighted({1});
    Effect *added = viewer.stage.add({50, 1000, 2000});
    QCOMPARE(viewer.view->lane({50}), -1);
    viewer.view->refresh();
    QCOMPARE(viewer.view->lane({50}), 39);
    QCOMPARE(viewer.view->barRect({50}).left(), viewer.view->xAt(1000));
    TimelineStage::set(added, "begin", 1500);
    TimelineStage::linkStart(added, 50, Edge::Begin);
    viewer.view->refresh();
    QCOMPARE(viewer.view->barRect({50}).left(), viewer.view->xAt(1500));
    QCOMPARE(viewer.view->linkKind({50}, Edge::Begin), LinkKind::Looping);
}

void tst_TimelineView::refreshKeepsZoomScrollFoldsAndHighlight()
{
    Viewer viewer;
    TimelineView *view = viewer.view;
    view->setUnfolded({3}, true);
    view->setHighlighted({3, 32});
    for (int step = 0; step < 5; ++step)
        view->zoomIn();
    view->horizontalScrollBar()->setValue(333);
    view->verticalScrollBar()->setValue(44);
    const double scale = view->pixelsPerMs();
    viewer.stage.add({50, 0, 30000});
    view->refresh();
    QCOMPARE(view->pixelsPerMs(), scale);
    QCOMPARE(scrolledX(view), 333);
    QCOMPARE(scrolledY(view), 44);
    QVERIFY(view->isUnfolded({3}));
    QCOMPARE(view->highlighted(), EidPath({3, 32}));
    view->setUnfolded({3}, false);
    QVERIFY(view->highlighted().isEmpty());
}

void tst_TimelineView::anotherEffectStartsAfresh()
{
    Viewer viewer;
    viewer.view->setUnfolded({3}, true);
    viewer.view->setHighlighted({1});
    viewer.view->zoomIn();
    viewer.view->verticalScrollBar()->setValue(44);
    viewer.view->setEffect(viewer.stage.top);
    QVERIFY(!viewer.view->isUnfolded({3}));
    QVERIFY(viewer.view->highlighted().isEmpty());
    QCOMPARE(viewer.view->horizontalScrollBar()->maximum(), 0);
    QCOMPARE(scrolledY(viewer.view), 0);
}

void tst_TimelineView::rebuiltEffectKeepsTheView()
{
    Viewer viewer;
    Viewer other;
    viewer.view->setUnfolded({3}, true);
    viewer.view->setHighlighted({3, 31});
    viewer.view->zoomIn();
    const double scale = viewer.view->pixelsPerMs();
    viewer.view->setEffect(other.stage.top, true);
    QVERIFY(viewer.view->isUnfolded({3}));
    QCOMPARE(viewer.view->highlighted(), EidPath({3, 31}));
    QCOMPARE(viewer.view->pixelsPerMs(), scale);
    viewer.view->setEffect(nullptr);
}

void tst_TimelineView::deletedEffectsAreStood()
{
    TimelineView view;
    view.resize(600, 200);
    view.show();
    auto stage = std::make_unique<TimelineStage>();
    Effect *child = stage->addMeta({1, 0, 1000});
    stage->add({2, 0, 500}, child);
    stage->top->setState(true);
    child->setState(true);
    view.setEffect(stage->top);
    view.setUnfolded({1}, true);
    view.setPosition(10);
    QVERIFY(view.isRunningShown({1}));
    stage.reset();
    view.setPosition(20);
    QVERIFY(!view.isRunningShown({1}));
    QTest::mouseMove(view.viewport(), view.barRect({1, 2}).center());
    QTest::keyClick(&view, Qt::Key_Down);
    QVERIFY(!view.grab().isNull());
    QVERIFY(!view.barRect({1}).isNull());
    view.refresh();
    QVERIFY(view.barRect({1}).isNull());
    QVERIFY(!view.grab().isNull());
}

void tst_TimelineView::clickInTheRulerSeeks()
{
    Viewer viewer;
    QSignalSpy seeks(viewer.view, &TimelineView::seekRequested);
    const int x = viewer.view->xAt(5000);
    viewer.click({x, viewer.view->rulerRect().center().y()});
    QCOMPARE(seeks.size(), 1);
    QVERIFY(qAbs(seeks[0][0].toInt() - 5000) <= 1 / viewer.view->pixelsPerMs());
    viewer.click({viewer.view->headerRect().center().x(), viewer.view->rulerRect().center().y()});
    QCOMPARE(seeks.size(), 1);
}

void tst_TimelineView::dragSeeksAndStaysInTheEffect()
{
    Viewer viewer;
    QSignalSpy seeks(viewer.view, &TimelineView::seekRequested);
    QWidget *field = viewer.view->viewport();
    const int y = viewer.view->rulerRect().center().y();
    QTest::mousePress(field, Qt::LeftButton, Qt::NoModifier, {viewer.view->xAt(2000), y});
    QTest::mouseMove(field, {viewer.view->xAt(3000), y + 90});
    QCOMPARE(seeks.size(), 2);
    QVERIFY(qAbs(seeks[1][0].toInt() - 3000) <= 1 / viewer.view->pixelsPerMs());
    QTest::mouseMove(field, {2, y});
    QCOMPARE(seeks.last()[0].toUInt(), 0U);
    QTest::mouseMove(field, {field->width() - 1, y});
    QCOMPARE(seeks.last()[0].toUInt(), 10000U);
    QTest::mouseRelease(field, Qt::LeftButton, Qt::NoModifier, {field->width() - 1, y});
    const auto count = seeks.size();
    QTest::mouseMove(field, {viewer.view->xAt(3000), y});
    QCOMPARE(seeks.size(), count);
}

void tst_TimelineView::clickOnABarHighlightsAndSeeksNowhere()
{
    Viewer viewer;
    QSignalSpy seeks(viewer.view, &TimelineView::seekRequested);
    viewer.click(viewer.middleOf({2}));
    QCOMPARE(viewer.view->highlighted(), EidPath({2}));
    viewer.click(viewer.nameOf({1}));
    QCOMPARE(viewer.view->highlighted(), EidPath({1}));
    QVERIFY(seeks.isEmpty());
}

void tst_TimelineView::clickInEmptySpaceSeeks()
{
    Viewer viewer;
    QSignalSpy seeks(viewer.view, &TimelineView::seekRequested);
    viewer.view->setHighlighted({2});
    viewer.click({viewer.view->xAt(6000), viewer.middleOf({1}).y()});
    QCOMPARE(seeks.size(), 1);
    QVERIFY(qAbs(seeks[0][0].toInt() - 6000) <= 1 / viewer.view->pixelsPerMs());
    QCOMPARE(viewer.view->highlighted(), EidPath({2}));
}

void tst_TimelineView::otherButtonsDoNothing()
{
    Viewer viewer;
    QSignalSpy seeks(viewer.view, &TimelineView::seekRequested);
    QTest::mouseClick(viewer.view->viewport(), Qt::RightButton, Qt::NoModifier,
                      viewer.middleOf({2}));
    QTest::mouseClick(viewer.view->viewport(), Qt::MiddleButton, Qt::NoModifier,
                      viewer.view->rulerRect().center());
    QVERIFY(viewer.view->highlighted().isEmpty());
    QVERIFY(seeks.isEmpty());
}

void tst_TimelineView::doubleClickUnfoldsAHolder_data()
{
    QTest::addColumn<bool>("packed");
    QTest::newRow("one lane each") << false;
    QTest::newRow("packed") << true;
}

void tst_TimelineView::doubleClickUnfoldsAHolder()
{
    QFETCH(bool, packed);
    Viewer viewer;
    viewer.view->setPacked(packed);
    QVERIFY(viewer.view->barRect({3, 31}).isNull());
    viewer.doubleClick(viewer.middleOf({3}));
    QVERIFY(viewer.view->isUnfolded({3}));
    const QRect holder = viewer.view->barRect({3});
    const QRect nested = viewer.view->barRect({3, 31});
    QCOMPARE(nested.left(), holder.left());
    QVERIFY(nested.top() >= holder.bottom());
    QCOMPARE(viewer.view->lane({3, 31}), viewer.view->lane({3}) + 1);
    viewer.doubleClick(viewer.middleOf({3}));
    QVERIFY(!viewer.view->isUnfolded({3}));
    viewer.doubleClick(viewer.middleOf({1}));
    QVERIFY(!viewer.view->isUnfolded({1}));
}

void tst_TimelineView::clickOnTheTriangleUnfolds_data()
{
    doubleClickUnfoldsAHolder_data();
}

void tst_TimelineView::clickOnTheTriangleUnfolds()
{
    QFETCH(bool, packed);
    Viewer viewer;
    viewer.view->setPacked(packed);
    QVERIFY(viewer.view->disclosureRect({1}).isNull());
    const QRect triangle = viewer.view->disclosureRect({3});
    QCOMPARE(viewer.view->headerRect().contains(triangle.center()), !packed);
    viewer.click(triangle.center());
    QVERIFY(viewer.view->isUnfolded({3}));
    // The second press of a double click counts for itself.
    QTest::mouseDClick(viewer.view->viewport(), Qt::LeftButton, Qt::NoModifier, triangle.center());
    QVERIFY(!viewer.view->isUnfolded({3}));
}

void tst_TimelineView::wheelZoomsAroundTheCursor_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("plain") << Qt::KeyboardModifiers(Qt::NoModifier);
    QTest::newRow("with Ctrl") << Qt::KeyboardModifiers(Qt::ControlModifier);
}

void tst_TimelineView::wheelZoomsAroundTheCursor()
{
    QFETCH(Qt::KeyboardModifiers, modifiers);
    Viewer viewer;
    const QPoint cursor(viewer.view->xAt(4000), 100);
    const double scale = viewer.view->pixelsPerMs();
    for (int notch = 0; notch < 5; ++notch)
        viewer.wheel(cursor, 120, modifiers);
    QVERIFY(viewer.view->pixelsPerMs() > 2 * scale);
    QVERIFY(double(qAbs(viewer.view->timeAt(cursor.x()) - 4000)) <= 2 / scale);
    viewer.wheel(cursor, -120, modifiers);
    QVERIFY(double(qAbs(viewer.view->timeAt(cursor.x()) - 4000)) <= 2 / scale);
    for (int notch = 0; notch < 9; ++notch)
        viewer.wheel(cursor, -120, modifiers);
    QCOMPARE(viewer.view->pixelsPerMs(), scale);
    QCOMPARE(viewer.view->horizontalScrollBar()->maximum(), 0);
}

void tst_TimelineView::wheelScrolls()
{
    Viewer viewer;
    for (int step = 0; step < 6; ++step)
        viewer.view->zoomIn();
    const double scale = viewer.view->pixelsPerMs();
    viewer.view->horizontalScrollBar()->setValue(400);
    const QPoint field(600, 100);
    viewer.wheel(field, -120, Qt::ShiftModifier);
    QVERIFY(scrolledX(viewer.view) > 400);
    viewer.wheel(field, 120, Qt::NoModifier, true);
    QCOMPARE(scrolledX(viewer.view), 400);
    QCOMPARE(scrolledY(viewer.view), 0);

    viewer.wheel(field, -120, Qt::AltModifier);
    const int once = scrolledY(viewer.view);
    QVERIFY(once > 0);
    viewer.wheel(field, -120, Qt::AltModifier, true);
    QCOMPARE(scrolledY(viewer.view), 2 * once);
    viewer.wheel(viewer.view->headerRect().center(), 120);
    QCOMPARE(scrolledY(viewer.view), once);
    QCOMPARE(scrolledX(viewer.view), 400);
    QCOMPARE(viewer.view->pixelsPerMs(), scale);
}

void tst_TimelineView::zoomHasLimits()
{
    Viewer viewer;
    const double fitting = viewer.view->pixelsPerMs();
    viewer.view->zoomOut();
    QCOMPARE(viewer.view->pixelsPerMs(), fitting);
    for (int step = 0; step < 200; ++step)
        viewer.view->zoomIn();
    QCOMPARE(viewer.view->pixelsPerMs(), 10.0);

    // A show of 49 days still scrolls to its end.
    viewer.stage.add({90, 0, 4294967295});
    viewer.view->zoomToFit();
    viewer.view->refresh();
    for (int step = 0; step < 200; ++step)
        viewer.view->zoomIn();
    viewer.view->horizontalScrollBar()->setValue(viewer.view->horizontalScrollBar()->maximum());
    QVERIFY(viewer.view->xAt(4294967295) < viewer.view->viewport()->width());
    QVERIFY(viewer.view->xAt(4294967295) > viewer.view->headerRect().right());
    QVERIFY(!viewer.view->grab().isNull());
}

void tst_TimelineView::keysZoom()
{
    Viewer viewer;
    const double fitting = viewer.view->pixelsPerMs();
    QTest::keyClick(viewer.view, Qt::Key_Plus);
    QTest::keyClick(viewer.view, Qt::Key_Plus);
    const double twice = viewer.view->pixelsPerMs();
    QVERIFY(twice > fitting);
    QTest::keyClick(viewer.view, Qt::Key_Minus);
    QVERIFY(viewer.view->pixelsPerMs() < twice);
    QVERIFY(viewer.view->pixelsPerMs() > fitting);
    QTest::keyClick(viewer.view, Qt::Key_0);
    QCOMPARE(viewer.view->pixelsPerMs(), fitting);
}

void tst_TimelineView::upAndDownMoveTheHighlight()
{
    Viewer viewer;
    QTest::keyClick(viewer.view, Qt::Key_Down);
    QCOMPARE(viewer.view->highlighted(), EidPath({1}));
    QTest::keyClick(viewer.view, Qt::Key_Up);
    QCOMPARE(viewer.view->highlighted(), EidPath({1}));
    viewer.view->setUnfolded({3}, true);
    for (int step = 0; step < 3; ++step)
        QTest::keyClick(viewer.view, Qt::Key_Down);
    QCOMPARE(viewer.view->highlighted(), EidPath({3, 31}));
    for (int step = 0; step < 60; ++step)
        QTest::keyClick(viewer.view, Qt::Key_Down);
    QCOMPARE(viewer.view->highlighted(), EidPath({39}));
    QVERIFY(viewer.view->viewport()->rect().contains(viewer.view->barRect({39})));
    for (int step = 0; step < 60; ++step)
        QTest::keyClick(viewer.view, Qt::Key_Up);
    QCOMPARE(scrolledY(viewer.view), 0);
}

void tst_TimelineView::leftRightAndEnterFold()
{
    Viewer viewer;
    viewer.view->setHighlighted({3});
    QTest::keyClick(viewer.view, Qt::Key_Right);
    QVERIFY(viewer.view->isUnfolded({3}));
    QTest::keyClick(viewer.view, Qt::Key_Down);
    QTest::keyClick(viewer.view, Qt::Key_Left);
    QCOMPARE(viewer.view->highlighted(), EidPath({3}));
    QVERIFY(viewer.view->isUnfolded({3}));
    QTest::keyClick(viewer.view, Qt::Key_Left);
    QVERIFY(!viewer.view->isUnfolded({3}));
    QTest::keyClick(viewer.view, Qt::Key_Return);
    QVERIFY(viewer.view->isUnfolded({3}));
    QTest::keyClick(viewer.view, Qt::Key_Enter);
    QVERIFY(!viewer.view->isUnfolded({3}));
    QVERIFY(viewer.window.keys.isEmpty());
}

void tst_TimelineView::otherKeysGoToTheWindow_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("space") << Qt::Key_Space;
    QTest::newRow("home") << Qt::Key_Home;
    QTest::newRow("end") << Qt::Key_End;
    QTest::newRow("left, nothing to fold") << Qt::Key_Left;
    QTest::newRow("enter, nothing to fold") << Qt::Key_Return;
    QTest::newRow("a letter") << Qt::Key_L;
}

void tst_TimelineView::otherKeysGoToTheWindow()
{
    QFETCH(Qt::Key, key);
    Viewer viewer;
    viewer.view->setHighlighted({1});
    QTest::keyClick(viewer.view, key);
    QCOMPARE(viewer.window.keys, QList<int>{key});
}

void tst_TimelineView::packingIsAnnouncedOnceAndHidesTheNames()
{
    Viewer viewer;
    QSignalSpy packings(viewer.view, &TimelineView::packedChanged);
    QVERIFY(!viewer.view->isPacked());
    QVERIFY(!viewer.view->headerRect().isEmpty());
    viewer.view->setPacked(true);
    viewer.view->setPacked(true);
    QCOMPARE(packings.size(), 1);
    QVERIFY(packings[0][0].toBool());
    QVERIFY(viewer.view->isPacked());
    QVERIFY(viewer.view->headerRect().isEmpty());
    QCOMPARE(viewer.view->lane({2}), viewer.view->lane({1}));
    QCOMPARE(viewer.view->lane({3}), 1);
    QVERIFY(qAbs(viewer.view->barRect({2}).left() - viewer.view->barRect({1}).right()) <= 1);
    viewer.view->setPacked(false);
    QCOMPARE(viewer.view->lane({2}), 1);
    QCOMPARE(packings.size(), 2);
}

void tst_TimelineView::runningChildrenAreShown()
{
    Viewer viewer;
    rehearsal::Player player(viewer.stage.show.map(), viewer.stage.show.effects());
    player.start();
    const auto play = [&](int ms) {
        player.frame(QTime(12, 0).addMSecs(ms), 0);
        viewer.view->setPosition(quint32(ms));
    };
    play(0);
    QVERIFY(viewer.view->isRunningShown({1}));
    QVERIFY(!viewer.view->isRunningShown({2}));
    QVERIFY(!viewer.view->isRunningShown({3}));
    play(3000);
    QVERIFY(viewer.view->isRunningShown({3}));
    play(4000);
    QVERIFY(!viewer.view->isRunningShown({1}));
    QVERIFY(viewer.view->isRunningShown({2}));
    player.stop();
    viewer.view->refresh();
    QVERIFY(!viewer.view->isRunningShown({2}));
}

void tst_TimelineView::childrenOfAStoppedHolderDoNotRun()
{
    Viewer viewer;
    viewer.view->setUnfolded({3}, true);
    viewer.stage.top->setState(true);
    viewer.holder->setState(true);
    viewer.view->model().row(viewer.view->model().find({3, 31})).effect->setState(true);
    viewer.view->setPosition(1);
    QVERIFY(viewer.view->isRunningShown({3, 31}));
    QVERIFY(!viewer.view->isRunningShown({3, 32}));
    viewer.holder->setState(false);
    viewer.view->setPosition(2);
    QVERIFY(!viewer.view->isRunningShown({3, 31}));
    viewer.holder->setState(true);
    viewer.stage.top->setState(false);
    viewer.view->setPosition(3);
    QVERIFY(!viewer.view->isRunningShown({3}));
}

void tst_TimelineView::rowsThatScrollIntoSightShowTheirState()
{
    Viewer viewer;
    viewer.stage.top->setState(true);
    viewer.view->model().row(viewer.view->model().find({39})).effect->setState(true);
    viewer.view->setPosition(1);
    viewer.view->verticalScrollBar()->setValue(viewer.view->verticalScrollBar()->maximum());
    QVERIFY(viewer.view->isRunningShown({39}));
    QVERIFY(!viewer.view->isRunningShown({38}));
}

void tst_TimelineView::playheadIsFollowedPageByPage()
{
    Viewer viewer;
    for (int step = 0; step < 9; ++step)
        viewer.view->zoomIn();
    viewer.view->horizontalScrollBar()->setValue(0);
    const int right = viewer.view->viewport()->width() - 1;
    const auto last = quint32(viewer.view->timeAt(right));
    viewer.view->setPosition(last - 20);
    QCOMPARE(scrolledX(viewer.view), 0);
    viewer.view->setPosition(last + 20);
    const int page = scrolledX(viewer.view);
    QVERIFY(page > 300);
    const int x = viewer.view->xAt(viewer.view->position());
    QVERIFY(x > viewer.view->headerRect().right() && x < right / 2);
    viewer.view->setPosition(last + 60);
    QCOMPARE(scrolledX(viewer.view), page);
    viewer.view->setPosition(0); // from the top again
    QCOMPARE(scrolledX(viewer.view), 0);
}

void tst_TimelineView::playheadIsNotFollowedWhileDraggingOrScrolledAway()
{
    Viewer viewer;
    for (int step = 0; step < 9; ++step)
        viewer.view->zoomIn();
    viewer.view->horizontalScrollBar()->setValue(0);
    const QPoint bar = viewer.middleOf({1});
    QTest::mousePress(viewer.view->viewport(), Qt::LeftButton, Qt::NoModifier, bar);
    viewer.view->setPosition(9000);
    QCOMPARE(scrolledX(viewer.view), 0);
    QTest::mouseRelease(viewer.view->viewport(), Qt::LeftButton, Qt::NoModifier, bar);
    viewer.view->setPosition(9020);
    QCOMPARE(scrolledX(viewer.view), 0);
    viewer.view->setPosition(100);
    viewer.view->horizontalScrollBar()->setSliderDown(true);
    viewer.view->setPosition(9000);
    QCOMPARE(scrolledX(viewer.view), 0);
    viewer.view->horizontalScrollBar()->setSliderDown(false);
    viewer.view->setPosition(100);
    viewer.view->setPosition(9000);
    QVERIFY(scrolledX(viewer.view) > 0);
}

void tst_TimelineView::linksAreJudged()
{
    Viewer viewer;
    QCOMPARE(viewer.view->linkKind({2}, Edge::Begin), LinkKind::Sound);
    QCOMPARE(viewer.view->linkKind({2}, Edge::End), LinkKind::None);
    TimelineStage::linkEnd(viewer.holder, 77, Edge::End);
    viewer.view->refresh();
    QCOMPARE(viewer.view->linkKind({3}, Edge::End), LinkKind::Broken);
}

void tst_TimelineView::hoveringTellsOfTheChild()
{
    Viewer viewer;
    QSignalSpy details(viewer.view, &TimelineView::childHovered);
    QTest::mouseMove(viewer.view->viewport(), viewer.middleOf({2}));
    QCOMPARE(details.size(), 1);
    const QString text = details[0][0].toString();
    QVERIFY2(text.startsWith(QStringLiteral("Child 2: 0:04.000 – 0:08.000 (4 s)")), qPrintable(text));
    QVERIFY2(text.contains(QStringLiteral("starts with the end of “Child 1”")), qPrintable(text));
    QTest::mouseMove(viewer.view->viewport(), viewer.middleOf({2}) + QPoint(5, 0));
    QCOMPARE(details.size(), 1);
    QTest::mouseMove(viewer.view->viewport(), {viewer.view->xAt(9500), viewer.middleOf({2}).y()});
    QCOMPARE(details.size(), 2);
    QVERIFY(details[1][0].toString().isEmpty());
    QTest::mouseMove(viewer.view->viewport(), viewer.nameOf({1}));
    QCOMPARE(details.size(), 3);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(viewer.view->viewport(), &leave);
    QVERIFY(details.last()[0].toString().isEmpty());

    // What it told may be true no more.
    QTest::mouseMove(viewer.view->viewport(), viewer.middleOf({2}));
    QVERIFY(!details.last()[0].toString().isEmpty());
    viewer.view->refresh();
    QVERIFY(details.last()[0].toString().isEmpty());
}

void tst_TimelineView::toolTipTellsRulesAndFades()
{
    Viewer viewer;
    TimelineStage::set(viewer.holder, "fadein", 1500);
    TimelineStage::linkStart(viewer.holder, 2, Edge::Begin);
    TimelineStage::set(viewer.holder, "startlinkoffset", -250);
    TimelineStage::set(viewer.holder, "endtype", 2);
    TimelineStage::set(viewer.holder, "endcyclecount", 3);
    viewer.view->refresh();
    const QPoint at = viewer.middleOf({3});
    QHelpEvent event(QEvent::ToolTip, at, viewer.view->viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(viewer.view->viewport(), &event);
    const QString text = QToolTip::text();
    for (const char *part : {"<b>Child 3</b>", "Meta Effect, EID 3", "0:02.000 – 0:09.000 (7 s)",
                             "starts 0.25 s before the start of “Child 2”", "lasts 3 cycle",
                             "fades in for 1.5 s"})
        QVERIFY2(text.contains(QString::fromUtf8(part)), qPrintable(text));
    QVERIFY(!text.contains(QStringLiteral("fades out")));
}

void tst_TimelineView::toolTipTakesNamesAsTheyAre()
{
    Viewer viewer;
    viewer.holder->setProperty(QStringLiteral("name"), QStringLiteral("<i>5 < 6 & more</i>"));
    viewer.view->refresh();
    const QPoint at = viewer.middleOf({3});
    QHelpEvent event(QEvent::ToolTip, at, viewer.view->viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(viewer.view->viewport(), &event);
    QVERIFY(QToolTip::text().contains(QStringLiteral("&lt;i&gt;5 &lt; 6 &amp; more&lt;/i&gt;")));
}

void tst_TimelineView::isAccessible()
{
    Viewer viewer;
    QCOMPARE(viewer.view->accessibleName(), QStringLiteral("Timeline"));
    QVERIFY(!viewer.view->accessibleDescription().isEmpty());
    viewer.view->setHighlighted({2});
    QVERIFY(viewer.view->accessibleDescription().startsWith(QStringLiteral("Child 2:")));
    QCOMPARE(viewer.view->focusPolicy(), Qt::StrongFocus);
}

void tst_TimelineView::realShowUnfoldsAndPacks()
{
    rehearsal::FileFault fault;
    const auto show = rehearsal::readShow(QStringLiteral(META_SOURCE_DIR "/examples/facade.show"),
                                          allTypes(), &fault);
    QVERIFY2(show, qPrintable(fault.message()));
    TimelineView view;
    view.resize(1000, 500);
    view.show();
    view.setEffect(show->effects().constFirst());
    const int folded = view.model().laneCount();
    for (const rehearsal::TimelineRow &row : view.model().rows()) {
        QVERIFY(row.startLink.kind == LinkKind::None || row.startLink.kind == LinkKind::Sound);
        QVERIFY(row.endLink.kind == LinkKind::None || row.endLink.kind == LinkKind::Sound);
    }
    for (int row = 0; row < int(view.model().rows().size()); ++row)
        view.setUnfolded(view.model().path(row), true);
    QCOMPARE(view.model().laneCount(), int(view.model().rows().size()));
    QVERIFY(view.model().laneCount() > folded);
    view.setPacked(true);
    QVERIFY(view.model().laneCount() < int(view.model().rows().size()));
    QVERIFY(!view.grab().isNull());
}

QTEST_MAIN(tst_TimelineView)
#include "tst_TimelineView.moc"
