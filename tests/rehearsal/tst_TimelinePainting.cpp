#include "TimelineColours.h"
#include "TimelineStage.h"
#include "TimelineView.h"

#include <QApplication>
#include <QPaintEvent>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include <cmath>
#include <random>

using rehearsal::Edge;
using rehearsal::EidPath;
using rehearsal::TimelineColours;
using rehearsal::TimelineView;

namespace {

const QStringList types{QStringLiteral("Solid"),  QStringLiteral("Ramp"),
                        QStringLiteral("Chase"),  QStringLiteral("Pulse"),
                        QStringLiteral("Strobe"), QStringLiteral("Twinkle"),
                        QStringLiteral("White Fade"), QStringLiteral("Meta Effect")};

QPalette darkPalette()
{
    QPalette palette(QColor(45, 45, 48), QColor(30, 30, 32));
    palette.setColor(QPalette::Window, QColor(45, 45, 48));
    palette.setColor(QPalette::Base, QColor(30, 30, 32));
    palette.setColor(QPalette::Text, QColor(225, 225, 225));
    palette.setColor(QPalette::Highlight, QColor(61, 174, 233));
    return palette;
}

QPalette lightPalette()
{
    QPalette palette(QColor(240, 240, 240));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::Highlight, QColor(48, 140, 198));
    return palette;
}

// As for readable web pages: 1 ... 21.
double contrast(const QColor &left, const QColor &right)
{
    const auto luminance = [](const QColor &colour) {
        const auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
               + 0.0722 * linear(colour.blueF());
    };
    const double a = luminance(left);
    const double b = luminance(right);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

int distance(const QColor &left, const QColor &right)
{
    return qAbs(left.red() - right.red()) + qAbs(left.green() - right.green())
           + qAbs(left.blue() - right.blue());
}

/// A view without a frame, so that its pixels are the viewport's.
class Picture
{
public:
    explicit Picture(const QPalette &palette = lightPalette()) : colours(palette)
    {
        view.setFrameShape(QFrame::NoFrame);
        view.setPalette(palette);
        view.resize(1000, 260);
        view.setFocusPolicy(Qt::NoFocus);
    }

    void show()
    {
        view.setEffect(stage.top);
        view.show();
        static_cast<void>(QTest::qWaitForWindowExposed(&view));
        QCoreApplication::processEvents();
    }
    QImage image() { return view.viewport()->grab().toImage(); }
    QColor at(QPoint point) { return image().pixelColor(point); }
    /// Pixels of this colour, or of one as near as that to it.
    int count(const QRect &area, const QColor &colour, int nearness = 0)
    {
        const QImage shot = image().copy(area & view.viewport()->rect());
        int found = 0;
        for (int y = 0; y < shot.height(); ++y) {
            for (int x = 0; x < shot.width(); ++x)
                found += distance(shot.pixelColor(x, y), colour) <= nearness ? 1 : 0;
        }
        return found;
    }
    QRect bar(const EidPath &path) const { return view.barRect(path); }
    QColor laneColour(const EidPath &path) const
    {
        return colours.lane(int(path.size()) - 1, view.lane(path) % 2 != 0);
    }

    TimelineStage stage;
    TimelineView view;
    TimelineColours colours;
};

/// What was asked to be painted in a viewport.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget *watched) { watched->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            painted += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
    int takeArea()
    {
        int area = 0;
        for (const QRect &rect : std::exchange(painted, {}))
            area += rect.width() * rect.height();
        return area;
    }

    QRegion painted;
};

void addPalettes()
{
    QTest::addColumn<QPalette>("palette");
    QTest::newRow("light") << lightPalette();
    QTest::newRow("dark") << darkPalette();
}

} // namespace

class tst_TimelinePainting : public QObject
{
    Q_OBJECT

private slots:
    void typesHaveTheirColours_data() { addPalettes(); }
    void typesHaveTheirColours();
    void textIsReadOnEveryBar_data() { addPalettes(); }
    void textIsReadOnEveryBar();
    void barsAreFilledWithTheirColour_data() { addPalettes(); }
    void barsAreFilledWithTheirColour();
    void fadesSlopeTheUpperEdge();
    void fadesSlopeTheSameWhenZoomedFarIn();
    void runningBarsAreBrighterAndOutlined_data() { addPalettes(); }
    void runningBarsAreBrighterAndOutlined();
    void barsWithoutLengthAreMarks();
    void namesStandInTheColumnOrInTheBars();
    void nestedLanesAreTinted();
    void rulerAndColumnCoverTheBars();
    void whatLiesBehindTheEndIsShaded();
    void linksAreArrows();
    void highlightedLinksAreStrong();
    void faultyLinksWarn_data();
    void faultyLinksWarn();
    void crowdedLinksOfNarrowBarsAreLeftOut();
    void playheadIsALine();
    void movingThePlayheadPaintsTwoStrips();
    void stateChangesPaintTheirBarsOnly();
    void whatIsOnTheScreenIsWhatAFreshViewPaints_data();
    void whatIsOnTheScreenIsWhatAFreshViewPaints();
    void paletteChangesAreFollowed();
};

void tst_TimelinePainting::typesHaveTheirColours()
{
    QFETCH(QPalette, palette);
    const TimelineColours colours(palette);
    for (const QString &type : types) {
        QCOMPARE(colours.bar(type, false), TimelineColours(palette).bar(type, false));
        QVERIFY(distance(colours.bar(type, false), colours.base()) > 60);
        QVERIFY(distance(colours.bar(type, false), colours.fadedBar(type)) > 30);
        for (const QString &other : types) {
            if (type != other)
                QVERIFY2(distance(colours.bar(type, false), colours.bar(other, false)) > 30,
                         qPrintable(type + u' ' + other));
        }
    }
    const QString unknown = QStringLiteral("Fog");
    QCOMPARE(colours.bar(unknown, false), TimelineColours(palette).bar(unknown, false));
}

void tst_TimelinePainting::textIsReadOnEveryBar()
{
    QFETCH(QPalette, palette);
    const TimelineColours colours(palette);
    for (const QString &type : types) {
        QVERIFY(contrast(colours.text(), colours.bar(type, false)) >= 4.5);
        QVERIFY(contrast(colours.text(), colours.fadedBar(type)) >= 4.5);
        QVERIFY2(contrast(colours.text(), colours.bar(type, true)) >= 3, qPrintable(type));
    }
    QVERIFY(contrast(colours.warning(), colours.base()) >= 4.5);
    QVERIFY(contrast(colours.text(), colours.ruler()) >= 4.5);
}

void tst_TimelinePainting::barsAreFilledWithTheirColour()
{
    QFETCH(QPalette, palette);
    Picture picture(palette);
    for (quint32 i = 0; i < quint32(types.size()); ++i)
        picture.stage.add({i + 1, 1000, 3000}, nullptr, types[i]);
    picture.stage.add({20, 0, 10000});
    picture.show();
    const QImage image = picture.image();
    for (quint32 i = 0; i < quint32(types.size()); ++i) {
        const QRect bar = picture.bar({i + 1});
        const QColor fill = picture.colours.bar(types[i], false);
        QCOMPARE(image.pixelColor(bar.right() - 3, bar.center().y()), fill);
        QCOMPARE(image.pixelColor(bar.right() + 4, bar.center().y()), picture.laneColour({i + 1}));
        QCOMPARE(image.pixelColor(bar.right() - 3, bar.top() - 2), picture.laneColour({i + 1}));
    }
}

void tst_TimelinePainting::fadesSlopeTheUpperEdge()
{
    Picture picture;
    Effect *child = picture.stage.add({1, 0, 8000});
    TimelineStage::set(child, "fadein", 4000);
    TimelineStage::set(child, "fadeout", 2000);
    picture.stage.add({2, 0, 10000});
    picture.show();
    const QImage image = picture.image();
    const QRect bar = picture.bar({1});
    const QColor full = picture.colours.bar(QStringLiteral("Solid"), false);
    const auto heightAt = [&](qint64 ms) {
        int height = 0;
        for (int y = bar.bottom() - 1; y > bar.top(); --y)
            height += image.pixelColor(picture.view.xAt(ms), y) == full ? 1 : 0;
        return double(height) / (bar.height() - 2);
    };
    const double pixel = 2.0 / bar.height();
    // Clear of the text.
    QVERIFY(qAbs(heightAt(2000) - 0.5) <= pixel);
    QVERIFY(qAbs(heightAt(3000) - 0.75) <= pixel);
    QVERIFY(qAbs(heightAt(5000) - 1) <= pixel);
    QVERIFY(qAbs(heightAt(7000) - 0.5) <= pixel);
    QVERIFY(qAbs(heightAt(7500) - 0.25) <= pixel);
    QCOMPARE(image.pixelColor(picture.view.xAt(7500), bar.top() + 3),
             picture.colours.fadedBar(QStringLiteral("Solid")));
}

void tst_TimelinePainting::fadesSlopeTheSameWhenZoomedFarIn()
{
    Picture picture;
    Effect *child = picture.stage.add({1, 0, 800000});
    TimelineStage::set(child, "fadein", 400000);
    picture.show();
    for (int step = 0; step < 80; ++step)
        picture.view.zoomIn();
    picture.view.horizontalScrollBar()->setValue(2000000); // a quarter of it, half of the fade
    const QRect bar = picture.bar({1});
    const QImage image = picture.image();
    const int x = picture.view.viewport()->width() - 50;
    const QString type = QStringLiteral("Solid");
    QCOMPARE(image.pixelColor(x, bar.center().y() - 3), picture.colours.fadedBar(type));
    QCOMPARE(image.pixelColor(x, bar.center().y() + 3), picture.colours.bar(type, false));
}

void tst_TimelinePainting::runningBarsAreBrighterAndOutlined()
{
    QFETCH(QPalette, palette);
    Picture picture(palette);
    Effect *child = picture.stage.add({1, 0, 8000});
    picture.show();
    const QRect bar = picture.bar({1});
    const QString type = QStringLiteral("Solid");
    QCOMPARE(picture.at(bar.center()), picture.colours.bar(type, false));
    QCOMPARE(picture.count(bar, picture.colours.accent()), 0);
    picture.stage.top->setState(true);
    child->setState(true);
    picture.view.setPosition(1);
    QCOMPARE(picture.at(bar.center()), picture.colours.bar(type, true));
    QVERIFY(distance(picture.colours.bar(type, true), picture.colours.base())
            > distance(picture.colours.bar(type, false), picture.colours.base()) + 30);
    QVERIFY(picture.count(bar, picture.colours.accent()) > 2 * bar.width());
}

void tst_TimelinePainting::barsWithoutLengthAreMarks()
{
    Picture picture;
    picture.stage.add({1, 5000, 5000});
    picture.stage.add({2, 6000, 3000});
    picture.stage.add({3, 0, 10000});
    picture.show();
    for (const quint32 eid : {1U, 2U}) {
        const QRect bar = picture.bar({eid});
        QVERIFY(qAbs(bar.center().x() - picture.view.xAt(eid == 1 ? 5000 : 6000)) <= 1);
        const QImage image = picture.image();
        QCOMPARE(image.pixelColor(bar.topLeft() + QPoint(1, 1)), picture.laneColour({eid}));
        QCOMPARE(image.pixelColor(bar.topRight() + QPoint(-1, 1)), picture.laneColour({eid}));
        QVERIFY(distance(image.pixelColor(bar.center()), picture.laneColour({eid})) > 20);
        QVERIFY(bar.width() >= 8);
    }
}

void tst_TimelinePainting::namesStandInTheColumnOrInTheBars()
{
    Picture picture;
    picture.stage.add({1, 1000, 9000})
        ->setProperty(QStringLiteral("name"), QStringLiteral("Longer than what type it is of"));
    picture.show();
    const QColor text = picture.colours.text();
    const QRect bar = picture.bar({1});
    const QRect name(picture.view.headerRect().left(), bar.top(),
                     picture.view.headerRect().width() - 2, bar.height());
    QVERIFY(picture.count(name, text, 120) > 20);
    const int typeText = picture.count(bar, text, 120);
    QVERIFY(typeText > 10);
    picture.view.setPacked(true);
    QVERIFY(picture.count(picture.bar({1}), text, 120) > 2 * typeText);
}

void tst_TimelinePainting::nestedLanesAreTinted()
{
    Picture picture;
    Effect *holder = picture.stage.addMeta({1, 0, 10000});
    picture.stage.add({2, 0, 1000}, holder);
    picture.show();
    picture.view.setUnfolded({1}, true);
    const QRect bar = picture.bar({1, 2});
    const QColor lane = picture.at({picture.view.xAt(3300), bar.center().y()});
    QCOMPARE(lane, picture.laneColour({1, 2}));
    QVERIFY(lane != picture.colours.lane(0, true));
}

void tst_TimelinePainting::rulerAndColumnCoverTheBars()
{
    Picture picture;
    for (quint32 eid = 1; eid < 40; ++eid)
        picture.stage.add({eid, 0, 10000});
    picture.show();
    picture.view.zoomIn();
    picture.view.zoomIn();
    picture.view.horizontalScrollBar()->setValue(100);
    picture.view.verticalScrollBar()->setValue(7);
    const QColor fill = picture.colours.bar(QStringLiteral("Solid"), false);
    QCOMPARE(picture.count(picture.view.headerRect(), fill), 0);
    QCOMPARE(picture.count(picture.view.rulerRect(), fill), 0);
    QVERIFY(picture.count(picture.view.viewport()->rect(), fill) > 10000);
    QVERIFY(picture.count(picture.view.rulerRect(), picture.colours.text()) > 50);
}

void tst_TimelinePainting::whatLiesBehindTheEndIsShaded()
{
    Picture picture;
    picture.stage.add({1, 0, 5000});
    picture.stage.top->init();
    TimelineStage::set(picture.stage.top, "end", 3000);
    picture.show();
    const int y = picture.bar({1}).bottom() + 8;
    QVERIFY(picture.at({picture.view.xAt(3000) + 7, y})
            != picture.at({picture.view.xAt(3000) - 7, y}));
    QCOMPARE(picture.at({picture.view.xAt(3000), y}), picture.colours.strongLine());
}

void tst_TimelinePainting::linksAreArrows()
{
    Picture picture;
    picture.stage.add({1, 1000, 3000});
    Effect *other = picture.stage.add({2, 6000, 8000});
    picture.stage.add({3, 0, 10000});
    picture.show();
    const QRect target = picture.bar({1});
    const QRect head(target.right() + 1, target.top(), 9, target.height());
    QCOMPARE(picture.count(head, picture.colours.link()), 0);
    TimelineStage::linkStart(other, 1, Edge::End);
    picture.view.refresh();
    QVERIFY(picture.count(head, picture.colours.link()) >= 12);
    TimelineStage::linkStart(other, 1, Edge::Begin);
    picture.view.refresh();
    const QRect before(target.left() - 10, target.top(), 9, target.height());
    QCOMPARE(picture.count(head, picture.colours.link()), 0);
    QVERIFY(picture.count(before, picture.colours.link()) >= 12);
}

void tst_TimelinePainting::highlightedLinksAreStrong()
{
    Picture picture;
    picture.stage.add({1, 1000, 3000});
    TimelineStage::linkStart(picture.stage.add({2, 6000, 8000}), 1, Edge::End);
    picture.stage.add({3, 0, 10000});
    picture.show();
    const QRect target = picture.bar({1});
    const QRect head(target.right() + 1, target.top(), 9, target.height());
    for (const quint32 eid : {1U, 2U}) {
        picture.view.setHighlighted({eid});
        QVERIFY(picture.count(head, picture.colours.text()) >= 12);
    }
    picture.view.setHighlighted({3});
    QCOMPARE(picture.count(head, picture.colours.text()), 0);
    QVERIFY(picture.count(head, picture.colours.link()) >= 12);
}

void tst_TimelinePainting::faultyLinksWarn_data()
{
    QTest::addColumn<quint32>("target");
    QTest::addColumn<bool>("isEnd");
    QTest::newRow("broken start") << 99U << false;
    QTest::newRow("broken end") << 99U << true;
    QTest::newRow("looping start") << 3U << false;
    QTest::newRow("looping end") << 3U << true;
}

void tst_TimelinePainting::faultyLinksWarn()
{
    QFETCH(quint32, target);
    QFETCH(bool, isEnd);
    Picture picture;
    Effect *child = picture.stage.add({1, 4000, 6000});
    Effect *other = picture.stage.add({3, 0, 10000});
    picture.show();
    const QRect bar = picture.bar({1});
    const QRect sign = isEnd ? QRect(bar.right() - 18, bar.top(), 18, bar.height())
                             : QRect(bar.left(), bar.top(), 18, bar.height());
    const QRect outside = isEnd ? QRect(bar.right() + 2, bar.top(), 22, bar.height())
                                : QRect(bar.left() - 24, bar.top(), 22, bar.height());
    QCOMPARE(picture.count(outside, picture.colours.warning(), 200), 0);
    QCOMPARE(picture.count(sign, picture.colours.warning()), 0);
    const auto link = isEnd ? TimelineStage::linkEnd : TimelineStage::linkStart;
    link(child, target, isEnd ? Edge::End : Edge::Begin);
    link(other, 1, isEnd ? Edge::End : Edge::Begin);
    picture.view.refresh();
    QVERIFY(picture.count(sign, picture.colours.warning()) > 20);
    QVERIFY(picture.count(outside, picture.colours.warning(), 200) > 8);
    QVERIFY(picture.count(sign, picture.colours.base()) > 2); // the mark in the sign
}

void tst_TimelinePainting::crowdedLinksOfNarrowBarsAreLeftOut()
{
    Picture picture;
    for (quint32 eid = 1; eid <= 400; ++eid) {
        Effect *child = picture.stage.add({eid, eid * 25, eid * 25 + 20});
        if (eid > 1)
            TimelineStage::linkStart(child, eid - 1, Edge::End);
    }
    picture.show();
    picture.view.setPacked(true);
    QCOMPARE(picture.view.model().laneCount(), 1);
    const QRect lane(0, picture.bar({1}).top(), picture.view.width(), picture.bar({1}).height());
    QCOMPARE(picture.count(lane, picture.colours.link()), 0);
    picture.view.setHighlighted({200});
    QVERIFY(picture.count(picture.bar({199}).adjusted(-8, 0, 8, 0), picture.colours.text()) > 5);
}

void tst_TimelinePainting::playheadIsALine()
{
    Picture picture;
    picture.stage.add({1, 0, 10000});
    picture.show();
    picture.view.setPosition(6100);
    const int x = picture.view.xAt(6100);
    const QImage image = picture.image();
    for (int y = picture.view.rulerRect().bottom() + 2; y < image.height(); ++y)
        QCOMPARE(image.pixelColor(x, y), picture.colours.text());
    const QRect head(x - 5, 0, 11, picture.view.rulerRect().height());
    QVERIFY(picture.count(head, picture.colours.text()) > 15);
    picture.view.setPosition(2000);
    QCOMPARE(picture.at({x, picture.bar({1}).bottom() + 10}), picture.colours.lane(0, false));
}

void tst_TimelinePainting::movingThePlayheadPaintsTwoStrips()
{
    Picture picture;
    for (quint32 eid = 1; eid < 30; ++eid)
        picture.stage.add({eid, 0, 10000});
    picture.show();
    PaintWatch watch(picture.view.viewport());
    picture.view.setPosition(1);
    QCoreApplication::processEvents();
    QCOMPARE(watch.takeArea(), 0); // not a pixel on
    picture.view.setPosition(5000);
    QCoreApplication::processEvents();
    const int area = watch.takeArea();
    QVERIFY(area > picture.view.viewport()->height());
    QVERIFY(area <= 2 * 16 * picture.view.viewport()->height());
    picture.view.setPosition(5000);
    QCoreApplication::processEvents();
    QCOMPARE(watch.takeArea(), 0);
}

void tst_TimelinePainting::stateChangesPaintTheirBarsOnly()
{
    Picture picture;
    Effect *child = picture.stage.add({1, 1000, 3000});
    picture.stage.add({2, 0, 10000});
    picture.stage.top->setState(true);
    picture.show();
    PaintWatch watch(picture.view.viewport());
    child->setState(true);
    picture.view.setPosition(0);
    QCoreApplication::processEvents();
    QVERIFY(watch.painted.contains(picture.bar({1}).center()));
    QVERIFY(!watch.painted.contains(picture.bar({2}).center()));
    QVERIFY(!watch.painted.contains(picture.view.rulerRect().center()));
}

void tst_TimelinePainting::whatIsOnTheScreenIsWhatAFreshViewPaints_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void tst_TimelinePainting::whatIsOnTheScreenIsWhatAFreshViewPaints()
{
    QFETCH(unsigned, seed);
    std::mt19937 random(seed);
    const auto below = [&random](quint32 end) { return quint32(random() % end); };
    Picture picture(seed % 2 == 0 ? lightPalette() : darkPalette());
    QList<Effect *> children;
    for (quint32 eid = 1; eid < 25; ++eid) {
        const quint32 begin = below(8000);
        Effect *child = eid % 7 == 0
                            ? picture.stage.addMeta({eid, begin, begin + below(3000)})
                            : picture.stage.add({eid, begin, begin + below(3000)}, nullptr,
                                                types[int(eid % 7)]);
        TimelineStage::set(child, "fadein", below(900));
        if (below(2) == 0)
            TimelineStage::linkStart(child, below(28), below(2) == 0 ? Edge::End : Edge::Begin);
        children.append(child);
    }
    picture.stage.top->setState(true);
    picture.show();
    for (int step = 0; step < 25; ++step) {
        switch (below(7)) {
        case 0: picture.view.zoomIn(); break;
        case 1: picture.view.horizontalScrollBar()->setValue(int(below(300))); break;
        case 2: picture.view.verticalScrollBar()->setValue(int(below(300))); break;
        case 3: picture.view.setHighlighted({below(25)}); break;
        case 4: picture.view.setPacked(below(2) == 0); break;
        default: break;
        }
        for (Effect *child : std::as_const(children)) {
            if (below(5) == 0)
                child->setState(!child->getState());
        }
        picture.view.setPosition(below(10000));
        QCoreApplication::processEvents();

        const QImage onScreen = picture.view.screen()->grabWindow(picture.view.winId()).toImage();
        QVERIFY(!onScreen.isNull());
        picture.view.refresh(); // paints all of it
        const QImage afresh = picture.view.grab().toImage();
        QCOMPARE(onScreen.convertToFormat(QImage::Format_RGB32),
                 afresh.convertToFormat(QImage::Format_RGB32));
    }
}

void tst_TimelinePainting::paletteChangesAreFollowed()
{
    Picture picture;
    picture.stage.add({1, 0, 1000});
    picture.show();
    picture.view.setPalette(darkPalette());
    const TimelineColours dark(darkPalette());
    QCOMPARE(picture.at(picture.bar({1}).center() + QPoint(60, 0)),
             dark.bar(QStringLiteral("Solid"), false));
    QCOMPARE(picture.at({picture.view.xAt(530), picture.bar({1}).bottom() + 40}), dark.base());
}

QTEST_MAIN(tst_TimelinePainting)
#include "tst_TimelinePainting.moc"
