#include "GlowCanvas.h"
#include "StageMap.h"
#include "StageView.h"

#include <QImage>
#include <QLabel>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <cmath>
#include <limits>
#include <memory>

using rehearsal::GlowCanvas;
using rehearsal::StageGroup;
using rehearsal::StageLight;
using rehearsal::StageMap;
using rehearsal::StageView;

namespace {

/// Shows one brightness, as a frame that draws it once.
void light(StageLight *light, double brightness)
{
    light->reset();
    light->draw(brightness, 0, 0);
}

/// Four lights far from each other, of which the second is in the middle; in two groups.
std::unique_ptr<StageMap> makeMap()
{
    auto map = std::make_unique<StageMap>();
    StageLight *first = map->addLight(1, QStringLiteral("Roof <b>1</b>"), {0.2, 0.3});
    StageLight *second = map->addLight(2, QStringLiteral("Clock"), {0.5, 0.5});
    map->addLight(7, QStringLiteral("Door"), {0.8, 0.7});
    map->addLight(9, QStringLiteral("Corner"), {0, 1});
    map->addGroup(10, QStringLiteral("Front"), ChasingGroup, {first, second});
    map->addGroup(11, QStringLiteral("Middle & more"), LeafGroup, {second});
    return map;
}

std::unique_ptr<StageMap> makeRandomMap(int count, quint32 seed)
{
    auto map = std::make_unique<StageMap>();
    QRandomGenerator random(seed);
    for (int i = 1; i <= count; ++i)
        map->addLight(static_cast<quint32>(i), QString::number(i),
                      {random.bounded(1000) / 999.0, random.bounded(1000) / 999.0});
    return map;
}

class ShownView : public StageView
{
public:
    explicit ShownView(const StageMap *map, QSize size = {640, 440})
    {
        resize(size);
        setMap(map);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("the view is not shown");
        settle();
    }

    /// Paints what is waiting to be painted.
    static void settle() { QCoreApplication::processEvents(); }

    QImage image() { return grab().toImage(); }

    /// Of the pixel at the middle of a light.
    QRgb colourOf(quint32 uid)
    {
        return image().pixel((positionOf(uid) * devicePixelRatioF()).toPoint());
    }

    void wheel(QPointF at, int turned)
    {
        QWheelEvent event(at, mapToGlobal(at), {}, {0, turned}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(this, &event);
    }

    void moveMouse(QPointF to, Qt::MouseButtons buttons = Qt::NoButton)
    {
        QMouseEvent event(QEvent::MouseMove, to, mapToGlobal(to), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(this, &event);
    }

    void drag(QPoint from, QPoint by, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(this, button, {}, from);
        moveMouse(from + by / 2, button);
        moveMouse(from + by, button);
        QTest::mouseRelease(this, button, {}, from + by);
    }

    const QLabel *label() const { return findChild<QLabel *>(QStringLiteral("m_label")); }
    bool isNaming() const { return label()->isVisible(); }

    QRegion painted;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        painted += event->region();
        StageView::paintEvent(event);
    }
};

double distance(QPointF a, QPointF b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

class tst_StageView : public QObject
{
    Q_OBJECT

private slots:
    void lightsGlowAtTheirPlaces();
    void pictureKeepsItsShape_data();
    void pictureKeepsItsShape();
    void frameRepaintsOnlyWhatChanged();
    void steadyFrameRepaintsNothing();
    void manyFramesEqualAFreshView_data();
    void manyFramesEqualAFreshView();
    void positionsAreWholeDevicePixels();
    void unknownLightHasNoPosition();

    void emptyShowSaysSo();
    void nullMapIsAnEmptyNight();
    void sameLightsKeepZoomAndPan();
    void otherLightsFit_data();
    void otherLightsFit();
    void oldMapMayDieOnceReplaced();
    void placesBeyondAllBoundsAreBorne();

    void wheelZoomsAroundTheCursor();
    void zoomIsBounded();
    void sidewaysWheelIsLeftToTheWindow();
    void dragPans_data();
    void dragPans();
    void pictureCannotBeLost();
    void fittedPictureDoesNotPan();
    void doubleClickFits();
    void keysZoomAndPan();
    void arrowsAreLeftToTheWindowUnlessZoomed();
    void otherKeysAreLeftToTheWindow();
    void panKeepsDistances();

    void hoverNamesTheLight();
    void hoverFollowsTheFrame();
    void hoverPrefersTheNearest();
    void hoverEnds_data();
    void hoverEnds();
    void hoverRingsTheLight();
    void manyGroupsAreCut();
    void labelStaysInside();
    void hoverIsToldOnceAChange();
    void hoverOfANewMapIsItsOwn();

    void isAccessible();
    void sizesAreSensible();
    void nightIsDarkInALightPalette();
};

// --- Painting ---

void tst_StageView::lightsGlowAtTheirPlaces()
{
    const auto map = makeMap();
    ShownView view(map.get());
    QCOMPARE(view.colourOf(1), GlowCanvas::coreColour(0));
    for (const double brightness :
         {0.0, 0.03, 0.4, 1.0, 0.2, 2.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        light(map->light(2), brightness);
        view.showFrame();
        QCOMPARE(view.colourOf(2), GlowCanvas::coreColour(brightness));
        QCOMPARE(view.colourOf(7), GlowCanvas::coreColour(0));
    }
    // Brightness is what a light shows, its factor included.
    light(map->light(2), 0.8);
    map->light(2)->setBrightness(0.5);
    view.showFrame();
    QCOMPARE(view.colourOf(2), GlowCanvas::coreColour(0.4));
}

void tst_StageView::pictureKeepsItsShape_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("usual") << QSize(640, 440);
    QTest::newRow("wide") << QSize(900, 300);
    QTest::newRow("high") << QSize(300, 700);
    QTest::newRow("small") << QSize(240, 150);
}

void tst_StageView::pictureKeepsItsShape()
{
    QFETCH(QSize, size);
    StageMap map;
    map.addLight(1, {}, {0, 0});
    map.addLight(2, {}, {1, 1});
    map.addLight(3, {}, {0.5, 0.5});
    ShownView view(&map, size);
    const QPointF extent = view.positionOf(2) - view.positionOf(1);
    QVERIFY(std::abs(extent.x() / extent.y() - 1.6) < 0.02);
    const QRectF room = view.rect();
    QVERIFY(room.contains(view.positionOf(1)) && room.contains(view.positionOf(2)));
    QVERIFY(distance(view.positionOf(3), room.center()) <= 1.5);
    const double left = std::min(room.width() - extent.x(), room.height() - extent.y());
    QVERIFY2(left > 8 && left < 60, qPrintable(QString::number(left)));
}

void tst_StageView::frameRepaintsOnlyWhatChanged()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.painted = {};
    light(map->light(7), 1);
    view.showFrame();
    ShownView::settle();
    const QRect around = QRectF(view.positionOf(7) - QPointF(8, 8), QSizeF(16, 16)).toRect();
    QVERIFY(view.painted.contains(around));
    QVERIFY(!view.painted.contains(view.positionOf(1).toPoint()));
}

void tst_StageView::steadyFrameRepaintsNothing()
{
    const auto map = makeMap();
    light(map->light(7), 0.5);
    ShownView view(map.get());
    view.painted = {};
    view.showFrame();
    ShownView::settle();
    QVERIFY(view.painted.isEmpty());
}

void tst_StageView::manyFramesEqualAFreshView_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<QPoint>("pan");
    QTest::newRow("few") << 5 << 1.0 << QPoint();
    QTest::newRow("many") << 800 << 1.0 << QPoint();
    QTest::newRow("zoomed") << 200 << 2.5 << QPoint();
    QTest::newRow("zoomed and panned") << 200 << 3.0 << QPoint(150, -90);
    QTest::newRow("near") << 200 << 20.0 << QPoint(-33, 71);
}

void tst_StageView::manyFramesEqualAFreshView()
{
    QFETCH(int, count);
    QFETCH(double, zoom);
    QFETCH(QPoint, pan);
    const auto map = makeRandomMap(count, 5);
    const std::vector<StageLight *> lights = map->lights();
    const auto look = [&](ShownView &view) {
        while (view.zoom() < zoom)
            view.zoomIn();
        view.drag({320, 220}, pan);
        view.moveMouse({-50, -50}); // away from every light
        ShownView::settle();
    };
    ShownView view(map.get());
    look(view);
    QRandomGenerator random(11);
    for (int frame = 0; frame < 24; ++frame) {
        for (StageLight *one : lights)
            if (random.bounded(4) == 0)
                light(one, random.bounded(3) == 0 ? 0 : random.bounded(1001) / 1000.0);
        view.showFrame();
        ShownView::settle();
        if (frame % 12 != 11)
            continue;
        ShownView fresh(map.get());
        look(fresh);
        QCOMPARE(view.image(), fresh.image());
    }
}

void tst_StageView::positionsAreWholeDevicePixels()
{
    const auto map = makeRandomMap(50, 9);
    ShownView view(map.get());
    view.wheel({100, 80}, 313);
    for (const StageLight *one : map->lights()) {
        const QPointF pixel = view.positionOf(one->uid()) * view.devicePixelRatioF();
        QVERIFY(distance(pixel, QPointF(pixel.toPoint())) < 1e-6);
    }
}

void tst_StageView::unknownLightHasNoPosition()
{
    const auto map = makeMap();
    const ShownView view(map.get());
    QVERIFY(view.positionOf(3).isNull());
    QVERIFY(!view.positionOf(2).isNull());
}

// --- Maps ---

void tst_StageView::emptyShowSaysSo()
{
    const StageMap empty;
    const auto map = makeMap();
    ShownView view(&empty);
    const QImage without = view.image();
    view.setMap(map.get());
    view.setMap(&empty);
    QCOMPARE(view.image(), without);
    // Letters in the middle, brighter than anything else of the night.
    const double ratio = view.devicePixelRatioF();
    int bright = 0;
    for (int y = 0; y < without.height(); ++y)
        for (int x = 0; x < without.width(); ++x)
            if (qGray(without.pixel(x, y)) > 60) {
                ++bright;
                QVERIFY(distance(QPointF(x, y) / ratio, {320, 220}) < 60);
            }
    QVERIFY(bright > 50);
}

void tst_StageView::nullMapIsAnEmptyNight()
{
    const StageMap empty;
    ShownView without(nullptr);
    ShownView view(&empty);
    QCOMPARE(without.image(), view.image());
    without.showFrame();
    without.moveMouse({320, 220});
    QVERIFY(!without.isNaming());
}

void tst_StageView::sameLightsKeepZoomAndPan()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.wheel({200, 200}, 480);
    const QPointF position = view.positionOf(7);
    const double zoom = view.zoom();
    QVERIFY(zoom > 2);
    const auto again = makeMap();
    light(again->light(7), 0.6);
    view.setMap(again.get());
    QCOMPARE(view.zoom(), zoom);
    QCOMPARE(view.positionOf(7), position);
    view.setMap(nullptr);
    QCOMPARE(view.zoom(), 1.0);
}

void tst_StageView::otherLightsFit_data()
{
    QTest::addColumn<quint32>("uid");
    QTest::addColumn<QPointF>("place");
    QTest::newRow("another uid") << 3u << QPointF(0.5, 0.5);
    QTest::newRow("another place") << 2u << QPointF(0.5, 0.51);
}

void tst_StageView::otherLightsFit()
{
    QFETCH(quint32, uid);
    QFETCH(QPointF, place);
    StageMap map;
    map.addLight(2, {}, {0.5, 0.5});
    StageMap other;
    other.addLight(uid, {}, place);
    ShownView view(&map);
    view.zoomIn();
    view.setMap(&other);
    QCOMPARE(view.zoom(), 1.0);
}

void tst_StageView::oldMapMayDieOnceReplaced()
{
    auto map = makeMap();
    ShownView view(map.get());
    view.moveMouse(view.positionOf(2));
    QVERIFY(view.isNaming());
    auto next = makeMap();
    light(next->light(2), 0.7);
    view.setMap(next.get());
    map.reset();
    view.showFrame();
    view.moveMouse({-50, -50});
    QCOMPARE(view.colourOf(2), GlowCanvas::coreColour(0.7));
    view.setMap(nullptr);
    next.reset();
    view.showFrame();
    view.image();
}

void tst_StageView::placesBeyondAllBoundsAreBorne()
{
    constexpr double huge = std::numeric_limits<double>::max();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    StageMap map;
    map.addLight(1, {}, {huge, -huge});
    map.addLight(2, {}, {nan, 0.5});
    map.addLight(3, {}, {0.5, 0.5});
    ShownView view(&map);
    for (StageLight *one : map.lights())
        light(one, 1);
    view.showFrame();
    QCOMPARE(view.colourOf(3), GlowCanvas::coreColour(1));
    while (view.zoom() < StageView::maximumZoom)
        view.zoomIn();
    QCOMPARE(view.colourOf(3), GlowCanvas::coreColour(1));
}

// --- Zoom and pan ---

void tst_StageView::wheelZoomsAroundTheCursor()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.zoomIn(); // the picture is larger than the view: nothing is centred any more
    const QPointF cursor = view.positionOf(7);
    const double gap = distance(view.positionOf(2), view.positionOf(7));
    QSignalSpy zoomed(&view, &StageView::zoomChanged);
    view.wheel(cursor, 240);
    QVERIFY(distance(view.positionOf(7), cursor) <= 1.5);
    QVERIFY(std::abs(distance(view.positionOf(2), view.positionOf(7)) / gap - 1.5625) < 0.02);
    QCOMPARE(zoomed.size(), 1);
    QCOMPARE(zoomed[0][0].toDouble(), view.zoom());
    view.wheel(cursor, -120);
    QVERIFY(distance(view.positionOf(7), cursor) <= 1.5);
}

void tst_StageView::zoomIsBounded()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.wheel({300, 200}, 100000);
    QCOMPARE(view.zoom(), 32.0);
    QSignalSpy zoomed(&view, &StageView::zoomChanged);
    view.zoomIn();
    QCOMPARE(view.zoom(), 32.0);
    QCOMPARE(zoomed.size(), 0);
    view.wheel({300, 200}, -100000);
    QCOMPARE(view.zoom(), 1.0);
    view.zoomOut();
    QCOMPARE(view.zoom(), 1.0);
    QCOMPARE(zoomed.size(), 1);
    QVERIFY(distance(view.positionOf(2), {320, 220}) <= 1.5);
}

void tst_StageView::sidewaysWheelIsLeftToTheWindow()
{
    const auto map = makeMap();
    ShownView view(map.get());
    QWheelEvent sideways({300, 200}, view.mapToGlobal(QPointF(300, 200)), {}, {120, 0},
                         Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&view, &sideways);
    QVERIFY(!sideways.isAccepted());
    QCOMPARE(view.zoom(), 1.0);
}

void tst_StageView::dragPans_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("pans");
    QTest::newRow("left") << Qt::LeftButton << true;
    QTest::newRow("middle") << Qt::MiddleButton << true;
    QTest::newRow("right") << Qt::RightButton << false;
}

void tst_StageView::dragPans()
{
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, pans);
    const auto map = makeMap();
    ShownView view(map.get());
    view.wheel({320, 220}, 480);
    const QPointF before = view.positionOf(2);
    const QPoint by(40, -25);
    view.drag({300, 200}, by, button);
    QVERIFY(distance(view.positionOf(2), before + (pans ? by : QPoint())) <= 1);
    view.moveMouse({100, 100}); // the button is up
    QVERIFY(distance(view.positionOf(2), before + (pans ? by : QPoint())) <= 1);
}

void tst_StageView::pictureCannotBeLost()
{
    StageMap map;
    map.addLight(1, {}, {0, 0});
    map.addLight(2, {}, {1, 1});
    ShownView view(&map);
    view.wheel({320, 220}, 480);
    const QRectF room = view.rect();
    view.drag({300, 200}, {5000, 5000});
    QVERIFY(room.contains(view.positionOf(1)));
    QVERIFY(distance(view.positionOf(1), {0, 0}) < 60);
    view.drag({300, 200}, {-9000, -9000});
    QVERIFY(room.contains(view.positionOf(2)));
    QVERIFY(distance(view.positionOf(2), room.bottomRight()) < 60);
    view.resize(300, 200);
    ShownView::settle();
    QVERIFY(QRectF(view.rect()).contains(view.positionOf(2)));
}

void tst_StageView::fittedPictureDoesNotPan()
{
    const auto map = makeMap();
    ShownView view(map.get());
    const QPointF before = view.positionOf(7);
    view.drag({300, 200}, {50, 60});
    QCOMPARE(view.positionOf(7), before);
}

void tst_StageView::doubleClickFits()
{
    const auto map = makeMap();
    ShownView view(map.get());
    const QPointF before = view.positionOf(7);
    view.wheel({50, 40}, 600);
    view.drag({300, 200}, {-50, 60});
    QTest::mouseDClick(&view, Qt::LeftButton, {}, {200, 200});
    QCOMPARE(view.zoom(), 1.0);
    QCOMPARE(view.positionOf(7), before);
    view.zoomIn();
    QTest::mouseDClick(&view, Qt::RightButton, {}, {200, 200});
    QVERIFY(view.zoom() > 1);
}

void tst_StageView::keysZoomAndPan()
{
    const auto map = makeMap();
    ShownView view(map.get());
    const QPointF fitted = view.positionOf(7);
    QTest::keyClick(&view, Qt::Key_Plus);
    QTest::keyClick(&view, Qt::Key_Plus, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Plus, Qt::KeypadModifier);
    QVERIFY(std::abs(view.zoom() - std::pow(1.25, 3)) < 1e-9);
    QTest::keyClick(&view, Qt::Key_Minus);
    QVERIFY(std::abs(view.zoom() - std::pow(1.25, 2)) < 1e-9);
    const auto panned = [&](Qt::Key key) {
        const QPointF before = view.positionOf(2);
        QTest::keyClick(&view, key);
        return view.positionOf(2) - before;
    };
    QVERIFY(panned(Qt::Key_Right).x() < -20); // the view goes right, the picture left
    QVERIFY(panned(Qt::Key_Left).x() > 20);
    QVERIFY(panned(Qt::Key_Down).y() < -20);
    QVERIFY(panned(Qt::Key_Up).y() > 20);
    QTest::keyClick(&view, Qt::Key_0);
    QCOMPARE(view.positionOf(7), fitted);
}

void tst_StageView::arrowsAreLeftToTheWindowUnlessZoomed()
{
    const auto map = makeMap();
    ShownView view(map.get());
    const auto isTaken = [&](Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &event);
        return event.isAccepted();
    };
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
        view.fit();
        QVERIFY(!isTaken(key));
        view.zoomIn();
        QVERIFY(isTaken(key));
    }
}

void tst_StageView::otherKeysAreLeftToTheWindow()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.zoomIn();
    const double zoom = view.zoom();
    const auto isTaken = [&](int key, Qt::KeyboardModifiers modifiers) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(&view, &event);
        return event.isAccepted();
    };
    QVERIFY(!isTaken(Qt::Key_Space, Qt::NoModifier));
    QVERIFY(!isTaken(Qt::Key_Home, Qt::NoModifier));
    QVERIFY(!isTaken(Qt::Key_Plus, Qt::ControlModifier));
    QVERIFY(!isTaken(Qt::Key_0, Qt::AltModifier));
    QVERIFY(!isTaken(Qt::Key_Left, Qt::ControlModifier));
    QCOMPARE(view.zoom(), zoom);
}

void tst_StageView::panKeepsDistances()
{
    const auto map = makeRandomMap(30, 2);
    ShownView view(map.get());
    view.wheel({311, 207}, 333);
    const QPointF gap = view.positionOf(3) - view.positionOf(4);
    for (int i = 0; i < 20; ++i) {
        view.drag({300, 200}, {3, 7});
        QCOMPARE(view.positionOf(3) - view.positionOf(4), gap);
    }
}

// --- Hover ---

void tst_StageView::hoverNamesTheLight()
{
    const auto map = makeMap();
    light(map->light(2), 0.425);
    ShownView view(map.get());
    QVERIFY(!view.isNaming());
    QSignalSpy hovered(&view, &StageView::lightHovered);
    view.moveMouse(view.positionOf(2) + QPointF(5, -4));
    QVERIFY(view.isNaming());
    QCOMPARE(hovered.size(), 1);
    QCOMPARE(hovered[0][0].value<quint32>(), 2u);
    const QString text = view.label()->text();
    for (const char *part : {"Clock", "Light 2", "43 %", "Front", "Middle &amp; more"})
        QVERIFY2(text.contains(QLatin1String(part)), qPrintable(text));
    // Names are texts, not markup.
    view.moveMouse(view.positionOf(1));
    QVERIFY(view.label()->text().contains(QStringLiteral("Roof &lt;b&gt;1&lt;/b&gt;")));
    QVERIFY(!view.label()->text().contains(QStringLiteral("Middle")));
}

void tst_StageView::hoverFollowsTheFrame()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.moveMouse(view.positionOf(2));
    QVERIFY(view.label()->text().contains(QStringLiteral(" 0 %")));
    for (const auto &[brightness, shown] :
         {std::pair(0.5, "50 %"), {1.7, "100 %"}, {-3.0, " 0 %"}}) {
        light(map->light(2), brightness);
        view.showFrame();
        QVERIFY(view.label()->text().contains(QLatin1String(shown)));
    }
}

void tst_StageView::hoverPrefersTheNearest()
{
    StageMap map;
    map.addLight(1, QStringLiteral("left"), {0.5, 0.5});
    map.addLight(2, QStringLiteral("right"), {0.515, 0.5}); // 9 px
    ShownView view(&map);
    QSignalSpy hovered(&view, &StageView::lightHovered);
    view.moveMouse(view.positionOf(1) + QPointF(3, 0));
    view.moveMouse(view.positionOf(2) - QPointF(3, 0));
    QCOMPARE(hovered.size(), 2);
    QCOMPARE(hovered[0][0].value<quint32>(), 1u);
    QCOMPARE(hovered[1][0].value<quint32>(), 2u);
}

void tst_StageView::hoverEnds_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"out of reach", "leaving", "dragging", "zooming", "no map"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void tst_StageView::hoverEnds()
{
    QFETCH(QString, how);
    const auto map = makeMap();
    ShownView view(map.get());
    const QPointF cursor = view.positionOf(1) + QPointF(8, 0);
    view.moveMouse(cursor);
    QVERIFY(view.isNaming());
    QSignalSpy hovered(&view, &StageView::lightHovered);
    if (how == u"out of reach") {
        view.moveMouse(cursor + QPointF(40, 0));
    } else if (how == u"leaving") {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&view, &leave);
    } else if (how == u"dragging") {
        QTest::mousePress(&view, Qt::LeftButton, {}, cursor.toPoint());
        view.moveMouse(cursor + QPointF(2, 2), Qt::LeftButton);
    } else if (how == u"zooming") {
        for (int i = 0; i < 8; ++i)
            view.zoomIn();
    } else {
        view.setMap(nullptr);
    }
    QVERIFY(!view.isNaming());
    QCOMPARE(hovered.size(), 1);
    QCOMPARE(hovered[0][0].value<quint32>(), 0u);
    if (how == u"dragging") {
        QTest::mouseRelease(&view, Qt::LeftButton, {}, cursor.toPoint() + QPoint(2, 2));
        QVERIFY(view.isNaming());
    }
}

void tst_StageView::hoverRingsTheLight()
{
    const auto map = makeMap();
    ShownView view(map.get());
    const QImage before = view.image();
    view.painted = {};
    view.moveMouse(view.positionOf(2));
    ShownView::settle();
    QVERIFY(!view.painted.isEmpty() && !view.painted.contains(view.positionOf(7).toPoint()));
    const QImage ringed = view.image();
    // Something blue stands on each side, near the light and not upon it.
    const QPoint middle = (view.positionOf(2) * view.devicePixelRatioF()).toPoint();
    for (const QPoint side : {QPoint(1, 0), {-1, 0}, {0, -1}}) {
        int bluest = 0;
        for (int away = 0; away < 40; ++away)
            bluest = std::max(bluest, qBlue(ringed.pixel(middle + side * away)));
        QVERIFY(bluest > 150);
    }
    QCOMPARE(ringed.pixel(middle), before.pixel(middle));
    view.moveMouse({-50, -50});
    ShownView::settle();
    QCOMPARE(view.image(), before);
}

void tst_StageView::manyGroupsAreCut()
{
    StageMap map;
    StageLight *one = map.addLight(1, QStringLiteral("One"), {0.5, 0.5});
    for (quint32 uid = 1; uid <= 6; ++uid)
        map.addGroup(uid, QStringLiteral("Group %1.").arg(uid), ChasingGroup, {one, one});
    ShownView view(&map);
    view.moveMouse(view.positionOf(1));
    QCOMPARE(view.label()->text().count(QStringLiteral("Group ")), 6);
    QVERIFY(!view.label()->text().contains(QStringLiteral("more")));
    for (quint32 uid = 7; uid <= 9; ++uid)
        map.addGroup(uid, QStringLiteral("Group %1.").arg(uid), ChasingGroup, {one});
    view.setMap(&map);
    QCOMPARE(view.label()->text().count(QStringLiteral("Group ")), 6);
    QVERIFY(view.label()->text().contains(QStringLiteral("Group 6.")));
    QVERIFY(view.label()->text().contains(QStringLiteral("and 3 more")));
}

void tst_StageView::labelStaysInside()
{
    StageMap map;
    for (quint32 i = 0; i < 9; ++i)
        map.addLight(i + 1,
                     QStringLiteral("A name that is rather long, and then some. ").repeated(3),
                     {(i % 3) / 2.0, (i / 3) / 2.0});
    for (const QSize size : {QSize(640, 440), QSize(330, 220)}) {
        ShownView view(&map, size);
        for (quint32 uid = 1; uid <= 9; ++uid) {
            view.moveMouse(view.positionOf(uid));
            QVERIFY(view.isNaming());
            QVERIFY2(view.rect().contains(view.label()->geometry()),
                     qPrintable(QString::number(uid)));
        }
    }
}

void tst_StageView::hoverIsToldOnceAChange()
{
    const auto map = makeMap();
    ShownView view(map.get());
    QSignalSpy hovered(&view, &StageView::lightHovered);
    const QPointF position = view.positionOf(2);
    for (int i = -5; i <= 5; ++i)
        view.moveMouse(position + QPointF(i, 0));
    view.showFrame();
    QCOMPARE(hovered.size(), 1);
}

void tst_StageView::hoverOfANewMapIsItsOwn()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.moveMouse(view.positionOf(2));
    StageMap other;
    other.addLight(5, QStringLiteral("Other"), {0.5, 0.5});
    view.setMap(&other);
    QVERIFY(view.isNaming());
    QVERIFY(view.label()->text().contains(QStringLiteral("Other")));
}

// --- The widget ---

void tst_StageView::isAccessible()
{
    const StageView view;
    QVERIFY(!view.accessibleName().isEmpty());
    QVERIFY(!view.accessibleDescription().isEmpty());
    QCOMPARE(view.focusPolicy(), Qt::StrongFocus);
}

void tst_StageView::sizesAreSensible()
{
    const StageView view;
    QCOMPARE(view.minimumSizeHint(), QSize(240, 150));
    QVERIFY(view.sizeHint().width() > 400 && view.sizeHint().height() > 250);
}

void tst_StageView::nightIsDarkInALightPalette()
{
    const auto map = makeMap();
    ShownView view(map.get());
    view.setPalette(QPalette(Qt::white));
    ShownView::settle();
    const QImage image = view.image();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            QVERIFY(qGray(image.pixel(x, y)) < 64);
}

QTEST_MAIN(tst_StageView)
#include "tst_StageView.moc"
