#include "BrightnessGrid.h"
#include "BrightnessPicture.h"

#include <QGuiApplication>
#include <QTest>

using namespace rehearsal;

namespace {

QStringList names(int count)
{
    QStringList list;
    for (int i = 1; i <= count; ++i)
        list.append(QStringLiteral("Light %1").arg(i));
    return list;
}

int shade(const BrightnessGrid &grid, int column, int row)
{
    return qGray(grid.cells().pixel(column, row));
}

/// A grid of `lights` that all show one brightness.
BrightnessGrid evenGrid(FrameTimes times, int lights, double brightness)
{
    BrightnessGrid grid(times.count(), lights);
    for (qint64 frame = 0; frame < times.count(); ++frame)
        grid.addFrame(frame, std::vector<double>(static_cast<std::size_t>(lights), brightness));
    return grid;
}

QImage draw(FrameTimes times, int lights, double brightness)
{
    return BrightnessPicture(QStringLiteral("a.show"), names(lights), times)
        .draw(evenGrid(times, lights, brightness));
}

/// Pixels of this very grey.
int countPixels(const QImage &image, int grey)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == qRgb(grey, grey, grey) ? 1 : 0;
    }
    return count;
}

} // namespace

class TestBrightnessPicture : public QObject
{
    Q_OBJECT

private slots:
    void aCellShowsItsFrameAndLight();
    void shadesStayBetweenBlackAndWhite_data();
    void shadesStayBetweenBlackAndWhite();
    void aFlashOfOneFrameIsNotLostAmongMany();
    void aLightIsNotLostAmongThousands();
    void theGridIsBounded_data();
    void theGridIsBounded();

    void brightnessFillsThePlot();
    void thePictureIsBounded_data();
    void thePictureIsBounded();
    void theSameShowGivesTheSamePicture();
    void lightNamesDoNotOverlap();
    void anEmptyRenderHasAPicture_data();
    void anEmptyRenderHasAPicture();
    void ticksAreAtRoundTimes_data();
    void ticksAreAtRoundTimes();
};

// --- The grid ---

void TestBrightnessPicture::aCellShowsItsFrameAndLight()
{
    BrightnessGrid grid(3, 2);
    QCOMPARE(grid.columns(), 3);
    QCOMPARE(grid.rows(), 2);
    grid.addFrame(1, {0.2, 1.0});
    QCOMPARE(shade(grid, 1, 0), 51);
    QCOMPARE(shade(grid, 1, 1), 255);
    QCOMPARE(shade(grid, 0, 0), 0);
    QCOMPARE(shade(grid, 2, 1), 0);
}

void TestBrightnessPicture::shadesStayBetweenBlackAndWhite_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<int>("expected");

    QTest::newRow("dark") << 0.0 << 0;
    QTest::newRow("half") << 0.5 << 128;
    QTest::newRow("full") << 1.0 << 255;
    QTest::newRow("more than full") << 7.0 << 255;
    QTest::newRow("infinite") << qInf() << 255;
    QTest::newRow("negative") << -0.5 << 0;
    QTest::newRow("no number") << qQNaN() << 0;
}

void TestBrightnessPicture::shadesStayBetweenBlackAndWhite()
{
    QFETCH(double, brightness);
    BrightnessGrid grid(1, 1);
    grid.addFrame(0, {brightness});
    QTEST(shade(grid, 0, 0), "expected");
}

void TestBrightnessPicture::aFlashOfOneFrameIsNotLostAmongMany()
{
    constexpr qint64 frames = 100000;
    BrightnessGrid grid(frames, 1);
    for (qint64 frame = 0; frame < frames; ++frame)
        grid.addFrame(frame, {frame == 77777 ? 1.0 : 0.0});
    const auto column = static_cast<int>(77777 / grid.framesPerColumn());
    QCOMPARE(shade(grid, column, 0), 255);
    QCOMPARE(shade(grid, column - 1, 0), 0);
    QCOMPARE(shade(grid, column + 1, 0), 0);
}

void TestBrightnessPicture::aLightIsNotLostAmongThousands()
{
    std::vector<double> brightness(10000, 0.0);
    brightness[5000] = 1.0;
    BrightnessGrid grid(1, 10000);
    grid.addFrame(0, brightness);
    const auto row = static_cast<int>(5000 / grid.lightsPerRow());
    QCOMPARE(shade(grid, 0, row), 255);
    QCOMPARE(shade(grid, 0, row - 1), 0);
    QCOMPARE(shade(grid, 0, row + 1), 0);
}

void TestBrightnessPicture::theGridIsBounded_data()
{
    QTest::addColumn<qint64>("frames");
    QTest::addColumn<int>("lights");
    QTest::addColumn<QSize>("size");

    QTest::newRow("one") << qint64{1} << 1 << QSize(1, 1);
    QTest::newRow("as many as fit") << qint64{1600} << 1600 << QSize(1600, 1600);
    QTest::newRow("one more") << qint64{1601} << 1601 << QSize(801, 801);
    QTest::newRow("weeks") << qint64{4294967295} << 1 << QSize(1600, 1);
}

void TestBrightnessPicture::theGridIsBounded()
{
    QFETCH(qint64, frames);
    QFETCH(int, lights);
    QTEST(BrightnessGrid(frames, lights).cells().size(), "size");
}

// --- The picture ---

void TestBrightnessPicture::brightnessFillsThePlot()
{
    // 400 frames of 4 pixels; 2 rows of 28 pixels, the second of which has a gap above it.
    constexpr int grey = 51;
    const FrameTimes times(40, 10000);
    const int dark = countPixels(draw(times, 2, 0.0), grey);
    const int bright = countPixels(draw(times, 2, 0.2), grey);
    QCOMPARE(bright - dark, 1600 * (28 + 27));
}

void TestBrightnessPicture::thePictureIsBounded_data()
{
    QTest::addColumn<quint32>("lengthMs");
    QTest::addColumn<int>("lights");

    QTest::newRow("one frame of one light") << quint32{1} << 1;
    QTest::newRow("as many frames as columns") << quint32{40000} << 12;
    QTest::newRow("one frame more") << quint32{40025} << 12;
    QTest::newRow("hundreds of lights") << quint32{10000} << 400;
    QTest::newRow("thousands of lights") << quint32{1000} << 5000;
}

void TestBrightnessPicture::thePictureIsBounded()
{
    QFETCH(quint32, lengthMs);
    QFETCH(int, lights);
    const QImage image = draw(FrameTimes(40, lengthMs), lights, 0.5);
    QVERIFY(image.width() >= 800 && image.width() <= 2000);
    QVERIFY(image.height() >= 150 && image.height() <= 1900);
}

void TestBrightnessPicture::theSameShowGivesTheSamePicture()
{
    const FrameTimes times(30, 3000);
    QCOMPARE(draw(times, 20, 0.5), draw(times, 20, 0.5));
    QVERIFY(draw(times, 20, 0.5) != draw(times, 20, 0.6));
}

void TestBrightnessPicture::lightNamesDoNotOverlap()
{
    // Between two names there is a line of pixels, left of the plot, that is all paper.
    for (const int lights : {2, 38, 120, 700, 3000}) {
        const QImage image = draw(FrameTimes(40, 10000), lights, 1.0);
        int textLines = 0;
        int highestText = 0;
        int height = 0;
        for (int y = 80; y < image.height() - 70; ++y) {
            bool isPaper = true;
            for (int x = 0; x < 60 && isPaper; ++x)
                isPaper = image.pixel(x, y) == qRgb(255, 255, 255);
            height = isPaper ? 0 : height + 1;
            textLines += height == 1 ? 1 : 0;
            highestText = std::max(highestText, height);
        }
        QVERIFY2(textLines >= 2 && highestText <= 14,
                 qPrintable(QStringLiteral("%1 lights: %2 lines of text, up to %3 pixels high")
                                .arg(lights)
                                .arg(textLines)
                                .arg(highestText)));
    }
}

void TestBrightnessPicture::anEmptyRenderHasAPicture_data()
{
    QTest::addColumn<quint32>("lengthMs");
    QTest::addColumn<int>("lights");

    QTest::newRow("no frames") << quint32{0} << 3;
    QTest::newRow("no lights") << quint32{1000} << 0;
    QTest::newRow("neither") << quint32{0} << 0;
}

void TestBrightnessPicture::anEmptyRenderHasAPicture()
{
    QFETCH(quint32, lengthMs);
    QFETCH(int, lights);
    const QImage image = draw(FrameTimes(40, lengthMs), lights, 0.0);
    QVERIFY(image.width() >= 800 && image.width() <= 2000);
    QVERIFY(countPixels(image, 0) > 50000); // the plot is there, and dark
}

void TestBrightnessPicture::ticksAreAtRoundTimes_data()
{
    QTest::addColumn<double>("atLeast");
    QTest::addColumn<double>("step");

    QTest::newRow("exactly 1") << 1.0 << 1.0;
    QTest::newRow("above 1") << 1.01 << 2.0;
    QTest::newRow("above 2") << 2.5 << 5.0;
    QTest::newRow("above 5") << 7.0 << 10.0;
    QTest::newRow("small") << 0.03 << 0.05;
    QTest::newRow("a tenth, which is not exact") << 0.1 << 0.1;
    QTest::newRow("large") << 1300.0 << 2000.0;
}

void TestBrightnessPicture::ticksAreAtRoundTimes()
{
    QFETCH(double, atLeast);
    QTEST(niceStep(atLeast), "step");
}

QTEST_MAIN(TestBrightnessPicture)
#include "tst_BrightnessPicture.moc"
