#include "GlowCanvas.h"
#include "GlowColours.h"
#include "GlowSprite.h"
#include "LightSpacing.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>

#include <cmath>
#include <limits>

using rehearsal::GlowCanvas;
using rehearsal::GlowColours;
using rehearsal::GlowScene;
using rehearsal::GlowSprite;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Lights of the given size on a canvas of 400 x 300.
GlowScene makeScene(std::vector<QPoint> lights, double core = 3, double halo = 30)
{
    GlowScene scene;
    scene.size = {400, 300};
    scene.picture = {20, 20, 360, 225};
    scene.lights = std::move(lights);
    scene.coreRadius = core;
    scene.haloRadius = halo;
    return scene;
}

int sum(QRgb colour)
{
    return qRed(colour) + qGreen(colour) + qBlue(colour);
}

/// sRGB encoding as the standard words it, in 0 ... 255.
double encoded(double linear)
{
    const double value =
        linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
    return 255 * value;
}

double decoded(double code)
{
    const double value = code / 255;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// The whole picture, painted at once.
QImage freshImage(const GlowScene &scene, const std::vector<double> &brightness)
{
    GlowCanvas canvas;
    canvas.setScene(scene);
    canvas.show(brightness);
    return canvas.image();
}

} // namespace

class tst_GlowCanvas : public QObject
{
    Q_OBJECT

private slots:
    void middleOfALoneLightHasTheCoreColour_data();
    void middleOfALoneLightHasTheCoreColour();
    void discIsEven();
    void coreColourIsTheEncodingOfLinearLight();
    void coreColourTellsTwoStepsApartAndNeverFalls();
    void faintIsAmberAndFullIsWarmWhite();
    void darkLightStaysVisible();
    void lightsOfOnePlaceAreOneUnlitLamp();
    void haloFadesToNothing();
    void haloesAddUp();
    void manyLightsAtOnePlaceEndInWhite();
    void nothingChangesWithoutAChange();
    void changesAreTiles();
    void onlyReportedPixelsChange();
    void manyFramesEqualAFreshPaint_data();
    void manyFramesEqualAFreshPaint();
    void lightsBeyondTheEdgesAreCut();
    void missingBrightnessIsDark();
    void newSceneStartsDark();
    void emptySceneHasNoImage();
    void nightIsDarkEnoughToBeDimmed();

    void spriteIsRoundAndNeverRisesOutwards();
    void usualSpacingIsTheMedian_data();
    void usualSpacingIsTheMedian();
    void usualSpacingOfACrowdIsQuick();
};

// --- Colours ---

void tst_GlowCanvas::middleOfALoneLightHasTheCoreColour_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<double>("shownAs");
    QTest::newRow("dark") << 0.0 << 0.0;
    QTest::newRow("a trace") << 0.001 << 0.001;
    QTest::newRow("faint") << 0.01 << 0.01;
    QTest::newRow("a tenth") << 0.1 << 0.1;
    QTest::newRow("half") << 0.5 << 0.5;
    QTest::newRow("nearly full") << 0.99 << 0.99;
    QTest::newRow("full") << 1.0 << 1.0;
    QTest::newRow("above") << 1.5 << 1.0;
    QTest::newRow("far above") << infinity << 1.0;
    QTest::newRow("below") << -0.5 << 0.0;
    QTest::newRow("far below") << -infinity << 0.0;
    QTest::newRow("not a number") << notANumber << 0.0;
}

void tst_GlowCanvas::middleOfALoneLightHasTheCoreColour()
{
    QFETCH(double, brightness);
    QFETCH(double, shownAs);
    const QImage image = freshImage(makeScene({{200, 150}}), {brightness});
    QCOMPARE(image.pixel(200, 150), GlowCanvas::coreColour(shownAs));
    QCOMPARE(GlowCanvas::coreColour(brightness), GlowCanvas::coreColour(shownAs));
}

void tst_GlowCanvas::discIsEven()
{
    for (const double brightness : {0.0, 0.02, 0.7}) {
        const QImage image = freshImage(makeScene({{200, 150}}, 2.2, 10), {brightness});
        for (int y = -1; y <= 1; ++y)
            for (int x = -1; x <= 1; ++x)
                QCOMPARE(image.pixel(200 + x, 150 + y), GlowCanvas::coreColour(brightness));
    }
}

void tst_GlowCanvas::coreColourIsTheEncodingOfLinearLight()
{
    for (int step = 0; step <= 1000; ++step) {
        const double brightness = step / 1000.0;
        const double red = encoded(brightness);
        const double left = std::max(0.0, qRed(GlowColours::unlit) - red / 4);
        QVERIFY2(std::abs(qRed(GlowCanvas::coreColour(brightness)) - red - left) <= 2.0,
                 qPrintable(QString::number(brightness)));
    }
}

void tst_GlowCanvas::coreColourTellsTwoStepsApartAndNeverFalls()
{
    QCOMPARE(GlowCanvas::coreColour(0), GlowColours::unlit);
    for (int code = 2; code <= 255; ++code)
        QVERIFY2(sum(GlowCanvas::coreColour(decoded(code)))
                     > sum(GlowCanvas::coreColour(decoded(code - 2))),
                 qPrintable(QString::number(code)));
    QRgb before = GlowCanvas::coreColour(0);
    for (int step = 1; step <= 65535; ++step) {
        const QRgb now = GlowCanvas::coreColour(step / 65535.0);
        QVERIFY(qRed(now) >= qRed(before) && qGreen(now) >= qGreen(before)
                && qBlue(now) >= qBlue(before));
        before = now;
    }
}

void tst_GlowCanvas::faintIsAmberAndFullIsWarmWhite()
{
    const QRgb faint = GlowCanvas::coreColour(0.05);
    QVERIFY(qRed(faint) > 1.3 * qGreen(faint) && qGreen(faint) > 1.5 * qBlue(faint));
    const QRgb full = GlowCanvas::coreColour(1);
    QCOMPARE(qRed(full), 255);
    QVERIFY(qGreen(full) > 225 && qGreen(full) < 255);
    QVERIFY(qBlue(full) > 180 && qBlue(full) < qGreen(full));
}

// --- Shape ---

void tst_GlowCanvas::darkLightStaysVisible()
{
    const QImage image = freshImage(makeScene({{200, 150}}), {0});
    QCOMPARE(image.pixel(200, 150), GlowColours::unlit);
    QVERIFY(sum(image.pixel(200, 150)) > sum(image.pixel(220, 150)) + 30);
    QVERIFY(sum(image.pixel(200, 150)) < 150);
}

void tst_GlowCanvas::lightsOfOnePlaceAreOneUnlitLamp()
{
    const QImage one = freshImage(makeScene({{200, 150}}), {0});
    const QImage two = freshImage(makeScene({{200, 150}, {200, 150}}), {0, 0});
    QCOMPARE(two.pixel(200, 150), GlowColours::unlit);
    // Of lamps that meet, neither takes anything from the other's disc.
    const QImage near = freshImage(makeScene({{200, 150}, {204, 150}}), {0, 0});
    for (const int x : {197, 200, 203, 204, 207})
        QCOMPARE(near.pixel(x, 150), GlowColours::unlit);
    QCOMPARE(one.pixel(200, 150), two.pixel(200, 150));
}

void tst_GlowCanvas::haloFadesToNothing()
{
    const GlowScene scene = makeScene({{200, 150}}, 3, 30);
    const QImage dark = freshImage(scene, {0});
    const QImage lit = freshImage(scene, {1});
    const QRgb near = lit.pixel(200, 158);
    const QRgb far = lit.pixel(200, 168);
    QVERIFY(sum(GlowCanvas::coreColour(1)) > sum(near));
    QVERIFY(sum(near) > sum(far) + 30);
    QVERIFY(sum(far) > sum(dark.pixel(200, 168)));
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 400; ++x)
            if (std::hypot(x - 200, y - 150) >= 30)
                QCOMPARE(lit.pixel(x, y), dark.pixel(x, y));
}

void tst_GlowCanvas::haloesAddUp()
{
    const GlowScene scene = makeScene({{190, 150}, {210, 150}});
    const QImage left = freshImage(scene, {0.8, 0});
    const QImage right = freshImage(scene, {0, 0.6});
    const QImage both = freshImage(scene, {0.8, 0.6});
    for (int y = 140; y <= 160; ++y) {
        QVERIFY(sum(both.pixel(200, y)) > sum(left.pixel(200, y)) + 10);
        QVERIFY(sum(both.pixel(200, y)) > sum(right.pixel(200, y)) + 10);
    }
}

void tst_GlowCanvas::manyLightsAtOnePlaceEndInWhite()
{
    int before = sum(GlowCanvas::coreColour(1));
    for (const int count : {2, 3, 100}) {
        const std::vector<QPoint> lights(static_cast<size_t>(count), QPoint(200, 150));
        const QImage image = freshImage(makeScene(lights), std::vector<double>(lights.size(), 1));
        QVERIFY(sum(image.pixel(200, 150)) > before);
        before = sum(image.pixel(200, 150));
    }
    QVERIFY(before < 3 * 255);
    const std::vector<QPoint> crowd(60000, QPoint(200, 150));
    const QImage image = freshImage(makeScene(crowd, 2.2, 4), std::vector<double>(crowd.size(), 1));
    QCOMPARE(sum(image.pixel(200, 150)), before);
}

// --- What changes ---

void tst_GlowCanvas::nothingChangesWithoutAChange()
{
    GlowCanvas canvas;
    canvas.setScene(makeScene({{100, 100}, {300, 200}}));
    QVERIFY(canvas.show(std::vector<double>{0, 0}).isEmpty());
    QVERIFY(!canvas.show(std::vector<double>{0.5, 1}).isEmpty());
    QVERIFY(canvas.show(std::vector<double>{0.5, 7}).isEmpty());
    QVERIFY(!canvas.show(std::vector<double>{0, notANumber}).isEmpty());
    QVERIFY(canvas.show(std::vector<double>{-1, notANumber}).isEmpty());
}

void tst_GlowCanvas::changesAreTiles()
{
    GlowCanvas canvas;
    canvas.setScene(makeScene({{40, 45}, {360, 250}}, 3, 15));
    const QRegion first = canvas.show(std::vector<double>{1, 0});
    QVERIFY(first.contains(QRect(25, 30, 31, 31)));
    QVERIFY(!first.contains(QPoint(360, 250)));
    QVERIFY(QRect(0, 0, 128, 96).contains(first.boundingRect()));
    const QRegion second = canvas.show(std::vector<double>{1, 0.5});
    QVERIFY(second.contains(QRect(345, 235, 31, 31)));
    QVERIFY(!second.contains(QPoint(40, 45)));
    // Going out is a change as well.
    QCOMPARE(canvas.show(std::vector<double>{1, 0}), second);
}

void tst_GlowCanvas::onlyReportedPixelsChange()
{
    const GlowScene scene = makeScene({{40, 45}, {150, 140}, {155, 150}, {399, 299}}, 3, 17);
    GlowCanvas canvas;
    canvas.setScene(scene);
    QRandomGenerator random(3);
    std::vector<double> brightness(4, 0);
    QImage before = canvas.image().copy();
    for (int frame = 0; frame < 40; ++frame) {
        brightness[random.bounded(4)] = random.bounded(5) / 4.0;
        const QRegion changed = canvas.show(brightness);
        for (int y = 0; y < 300; ++y)
            for (int x = 0; x < 400; ++x)
                if (!changed.contains(QPoint(x, y)))
                    QCOMPARE(canvas.image().pixel(x, y), before.pixel(x, y));
        before = canvas.image().copy();
    }
}

void tst_GlowCanvas::manyFramesEqualAFreshPaint_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<double>("halo");
    QTest::newRow("small") << 1 << 6.0;
    QTest::newRow("usual") << 2 << 19.0;
    QTest::newRow("large") << 3 << 90.5;
}

void tst_GlowCanvas::manyFramesEqualAFreshPaint()
{
    QFETCH(int, seed);
    QFETCH(double, halo);
    QRandomGenerator random(static_cast<quint32>(seed));
    std::vector<QPoint> lights;
    for (int i = 0; i < 150; ++i) // some of them beyond the edges
        lights.emplace_back(random.bounded(500) - 50, random.bounded(400) - 50);
    const GlowScene scene = makeScene(lights, 2.5, halo);
    GlowCanvas canvas;
    canvas.setScene(scene);
    std::vector<double> brightness(lights.size(), 0);
    for (int frame = 0; frame < 200; ++frame) {
        for (double &value : brightness)
            if (random.bounded(3) == 0)
                value = random.bounded(4) == 0 ? 0 : random.bounded(10001) / 10000.0;
        canvas.show(brightness);
        if (frame % 20 == 0)
            QCOMPARE(canvas.image(), freshImage(scene, brightness));
    }
    canvas.show(std::vector<double>(lights.size(), 0));
    QCOMPARE(canvas.image(), freshImage(scene, {}));
}

void tst_GlowCanvas::lightsBeyondTheEdgesAreCut()
{
    // The middle of a large canvas shows what a canvas of that size shows.
    const std::vector<QPoint> lights{{0, 0},     {-20, 40},    {-31, 50},    {399, 150},
                                     {420, 310}, {200, -1000}, {5000, 5000}, {-100000, 200}};
    const std::vector<double> full(lights.size(), 1);
    const QImage small = freshImage(makeScene(lights), full);
    const QImage dark = freshImage(makeScene(lights), {});
    GlowScene large = makeScene({});
    large.size = {800, 700};
    for (const QPoint light : lights)
        large.lights.push_back(light + QPoint(200, 200));
    const QImage wide = freshImage(large, full);
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 400; ++x) {
            // What is behind differs in the grain of the night alone.
            const bool isLit = small.pixel(x, y) != dark.pixel(x, y);
            if (isLit)
                QVERIFY(std::abs(qRed(small.pixel(x, y)) - qRed(wide.pixel(x + 200, y + 200)))
                        <= 8);
            else
                QVERIFY(sum(wide.pixel(x + 200, y + 200)) < 110);
        }
    QVERIFY(small.pixel(0, 40) != dark.pixel(0, 40));
    QCOMPARE(small.pixel(0, 0), GlowCanvas::coreColour(1));
}

void tst_GlowCanvas::missingBrightnessIsDark()
{
    const GlowScene scene = makeScene({{100, 100}, {300, 200}});
    GlowCanvas canvas;
    canvas.setScene(scene);
    canvas.show(std::vector<double>{1, 1});
    canvas.show(std::vector<double>{1});
    QCOMPARE(canvas.image(), freshImage(scene, {1, 0}));
    canvas.show(std::vector<double>{1, 0, 1, 1});
    QCOMPARE(canvas.image(), freshImage(scene, {1, 0}));
}

void tst_GlowCanvas::newSceneStartsDark()
{
    GlowCanvas canvas;
    canvas.setScene(makeScene({{100, 100}}));
    canvas.show(std::vector<double>{1});
    const GlowScene next = makeScene({{300, 200}, {100, 100}}, 5, 50);
    canvas.setScene(next);
    QCOMPARE(canvas.image(), freshImage(next, {}));
    canvas.show(std::vector<double>{1, 0.2});
    QCOMPARE(canvas.image(), freshImage(next, {1, 0.2}));
}

void tst_GlowCanvas::emptySceneHasNoImage()
{
    GlowCanvas canvas;
    QVERIFY(canvas.image().isNull());
    GlowScene scene = makeScene({{1, 1}});
    scene.size = {};
    canvas.setScene(scene);
    QVERIFY(canvas.image().isNull());
    QVERIFY(canvas.show(std::vector<double>{1}).isEmpty());
}

void tst_GlowCanvas::nightIsDarkEnoughToBeDimmed()
{
    const QImage image = freshImage(makeScene({{200, 150}}), {});
    QSet<QRgb> shades;
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 400; ++x) {
            const QRgb colour = image.pixel(x, y);
            shades.insert(colour);
            QVERIFY(std::max({qRed(colour), qGreen(colour), qBlue(colour)})
                    <= GlowColours::brightestBehind);
        }
    QVERIFY(shades.size() > 10); // the night has depth
}

// --- Sizes ---

void tst_GlowCanvas::spriteIsRoundAndNeverRisesOutwards()
{
    for (const auto &[core, halo] : {std::pair(2.2, 10.0), {6.4, 86.0}, {11.0, 120.0}}) {
        const GlowSprite sprite(core, halo);
        QCOMPARE(sprite.reach(), int(std::ceil(halo)));
        for (int y = -sprite.reach(); y <= sprite.reach(); ++y) {
            QCOMPARE(sprite.columns(y), sprite.columns(-y));
            QVERIFY(sprite.columns(y) <= sprite.reach());
            for (int x = 0; x <= sprite.columns(y); ++x) {
                QVERIFY(sprite.row(y)[x] > 0);
                QCOMPARE(sprite.row(y)[x], sprite.row(y)[-x]);
                QCOMPARE(sprite.row(y)[x], sprite.row(-y)[x]);
                QCOMPARE(sprite.row(y)[x], sprite.row(x)[y]);
                if (std::hypot(x, y) <= core)
                    QCOMPARE(sprite.row(y)[x], quint16(65535));
                else if (std::hypot(x, y) > core + 0.5)
                    QVERIFY(sprite.row(y)[x] < 65535);
                if (x > 0)
                    QVERIFY(sprite.row(y)[x] <= sprite.row(y)[x - 1]);
            }
        }
        QVERIFY(sprite.columns(0) > halo * 0.8);
    }
}

void tst_GlowCanvas::usualSpacingIsTheMedian_data()
{
    QTest::addColumn<QList<QPointF>>("places");
    QTest::addColumn<double>("spacing");
    QTest::newRow("none") << QList<QPointF>{} << 0.1;
    QTest::newRow("one") << QList<QPointF>{{0.5, 0.5}} << 0.1;
    QTest::newRow("all at one place") << QList<QPointF>(40, QPointF(0.3, 0.3)) << 0.1;
    QTest::newRow("two") << QList<QPointF>{{0.2, 0.5}, {0.6, 0.2}} << 0.5;
    QList<QPointF> row;
    QList<QPointF> column;
    QList<QPointF> grid;
    for (int i = 0; i < 60; ++i) {
        row.append({i / 60.0, 0.5});
        column.append({0.25, i / 120.0});
        for (int j = 0; j < 40; ++j)
            grid.append({i / 60.0, j / 100.0});
    }
    QTest::newRow("a row") << row << 1 / 60.0;
    QTest::newRow("a column") << column << 1 / 120.0;
    QTest::newRow("a grid") << grid << 1 / 100.0;
    QTest::newRow("a grid and a far light") << grid + QList<QPointF>{{0.99, 0.99}} << 1 / 100.0;
    QTest::newRow("pairs at one place") << row + row << 1 / 60.0;
}

void tst_GlowCanvas::usualSpacingIsTheMedian()
{
    QFETCH(QList<QPointF>, places);
    QFETCH(double, spacing);
    QVERIFY(std::abs(rehearsal::usualSpacing({places.begin(), places.end()}) - spacing) < 1e-9);
}

void tst_GlowCanvas::usualSpacingOfACrowdIsQuick()
{
    std::vector<QPointF> places;
    for (int i = 0; i < 20000; ++i)
        places.emplace_back(0.5 + i * 1e-9, 0.5);
    places.emplace_back(0, 0);
    places.emplace_back(1, 1);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(rehearsal::usualSpacing(places) > 0);
    QVERIFY(timer.elapsed() < 1000);
}

QTEST_GUILESS_MAIN(tst_GlowCanvas)
#include "tst_GlowCanvas.moc"
