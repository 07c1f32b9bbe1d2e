#include "CpuClock.h"
#include "Effect.h"
#include "EffectHost.h"
#include "LargeShow.h"
#include "MetaWidget.h"
#include "Playback.h"
#include "ShowDocument.h"
#include "Soak.h"
#include "TableWidget.h"
#include "TestTypes.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <vector>

namespace {

constexpr int lights = 2000;
constexpr int children = 1000;
constexpr qint64 nsPerFrame = 1'000'000'000 / rehearsal::Playback::framesPerSecond;
/// Of 99.9 percent of the frames, ns; more where the program is not built as it is used.
#ifdef NDEBUG
constexpr qint64 mostForFrame = 5'000'000;
#else
constexpr qint64 mostForFrame = 25'000'000;
#endif
/// All children start within this time of the show as it is made.
constexpr quint32 fullMs = 60'000;
/// One edit in so many frames.
constexpr int framesPerEdit = 10;

/// The times of many calls, ns of processor time of this thread.
class Durations
{
public:
    void add(qint64 ns) { m_times.push_back(ns); }
    std::size_t count() const { return m_times.size(); }

    qint64 percentile(double percent)
    {
        if (m_times.empty())
            return 0;
        std::sort(m_times.begin(), m_times.end());
        const auto place = static_cast<std::size_t>(percent / 100.0 * double(m_times.size()));
        return m_times[std::min(place, m_times.size() - 1)];
    }

    QString summary()
    {
        QString text = QStringLiteral("%1 of them").arg(count());
        for (const double percent : {50.0, 90.0, 99.0, 99.9, 100.0})
            text += QStringLiteral(", %1 % within %2 ms")
                        .arg(percent)
                        .arg(double(percentile(percent)) / 1e6, 0, 'f', 3);
        return text;
    }

    /// How many lie between each power of two and the next.
    void printHistogram() const
    {
        constexpr int widest = 50;
        std::array<std::size_t, 24> counts{};
        for (const qint64 time : m_times) {
            std::size_t bin = 0;
            for (qint64 limit = 8'000; time >= limit && bin + 1 < counts.size(); limit *= 2)
                ++bin;
            ++counts[bin];
        }
        const std::size_t most = *std::max_element(counts.begin(), counts.end());
        for (std::size_t bin = 0; bin < counts.size(); ++bin) {
            if (counts[bin] == 0)
                continue;
            const auto stars = static_cast<int>((counts[bin] * widest + most - 1) / most);
            std::printf("        below %9.3f ms %8zu %s\n", 0.008 * double(1ULL << bin),
                        counts[bin], std::string(static_cast<std::size_t>(stars), '*').c_str());
        }
    }

private:
    std::vector<qint64> m_times;
};

/// A show that plays while a user works in the editor of its meta effect.
class EditedPlay
{
public:
    explicit EditedPlay(quint32 seed)
        : m_random(seed), m_document(allTypes()), m_playback([this] { return m_wallNs; })
    {
        rehearsal::FileFault fault;
        const soak::LargeShow show{.lights = lights,
                                   .groups = 100,
                                   .lightsOfGroup = 20,
                                   .children = children,
                                   .childMs = 30'000};
        if (!m_document.openText(show.text(), QStringLiteral("large show"), {}, &fault))
            qFatal("%s", qPrintable(fault.message()));
        m_top = m_document.show()->effects().first();
        QMetaObject::invokeMethod(m_top, "updateEffectTimes");
        QMetaObject::invokeMethod(m_top, "updateEndTime");
        QObject::connect(&m_document, &rehearsal::ShowDocument::edited, &m_playback,
                         &rehearsal::Playback::refresh);
        m_form = qobject_cast<MetaWidget *>(m_top->internalGetEffectWidget());
        m_form->resize(1000, 800);
        m_form->show();
        if (!QTest::qWaitForWindowExposed(m_form))
            qFatal("the editor is not shown");
        m_playback.setShow(m_document.show());
        m_playback.play();
    }

    ~EditedPlay()
    {
        m_playback.setShow(nullptr);
        delete m_form;
    }

    void frame()
    {
        // Random links make the show long and empty; it is full in its first minute.
        if (m_playback.position() >= fullMs)
            m_playback.seek(0);
        m_wallNs += nsPerFrame;
        const qint64 start = rehearsal::threadCpuNs();
        m_playback.tick();
        frames.add(rehearsal::threadCpuNs() - start);
        for (const Effect *child : EffectHost::nested(*m_top))
            m_running += child->getState() ? 1 : 0;
    }

    /// What the user does, with all that follows from it in the event loop, save the next frame.
    void edit()
    {
        const std::array<void (EditedPlay::*)(), 7> actions{
            &EditedPlay::select,     &EditedPlay::select,    &EditedPlay::changeStart,
            &EditedPlay::link,       &EditedPlay::changeEnd, &EditedPlay::sort,
            &EditedPlay::addOrDelete};
        const auto action = actions[roll(int(actions.size()))];
        const qint64 start = rehearsal::threadCpuNs();
        (this->*action)();
        QCoreApplication::processEvents();
        edits.add(rehearsal::threadCpuNs() - start);
    }

    int rows() const { return table().rowCount(); }
    double meanRunning() const { return double(m_running) / double(frames.count()); }
    bool isPlaying() const { return m_playback.state() == rehearsal::Playback::State::Playing; }
    bool wasEdited() const { return m_document.canUndo(); }

    Durations frames;
    Durations edits;

private:
    std::size_t roll(int sides)
    {
        return static_cast<std::size_t>(m_random() % static_cast<unsigned>(sides));
    }
    meta::TableWidget &table() const { return *m_form->m_effectTable; }

    void select()
    {
        const QModelIndex index = table().model()->index(int(roll(rows())), 0);
        table().scrollTo(index);
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {},
                          table().visualRect(index).center());
    }

    void changeStart()
    {
        QTest::mouseClick(m_form->m_startFixedRadioButton, Qt::LeftButton);
        m_form->m_startFixedLineEdit->setText(QString::number(double(roll(60'000)) / 1000));
    }

    void link()
    {
        QTest::mouseClick(m_form->m_startLinkedRadioButton, Qt::LeftButton);
        QTest::keyClick(m_form->m_startLinkEffectComboBox, roll(2) ? Qt::Key_Down : Qt::Key_Up);
        m_form->m_startLinkOffsetLineEdit->setText(QString::number(double(roll(2000)) / 1000));
    }

    void changeEnd()
    {
        QTest::mouseClick(m_form->m_endFixedRadioButton, Qt::LeftButton);
        m_form->m_endFixedLineEdit->setText(QString::number(15 + double(roll(10'000)) / 1000));
    }

    void sort()
    {
        QHeaderView *header = table().horizontalHeader();
        const int column = int(roll(8));
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          {header->sectionViewportPosition(column) + 5, header->height() / 2});
    }

    // As many children come as go. A new one gets the first group that the picker offers.
    void addOrDelete()
    {
        if (rows() > children) {
            QTest::mouseClick(m_form->m_deleteEffectButton, Qt::LeftButton);
            return;
        }
        QTimer::singleShot(0, m_form, [] {
            QWidget *picker = QApplication::activeModalWidget();
            QTest::keyClick(picker->findChild<QTreeWidget *>(), Qt::Key_Down);
            QTest::keyClick(picker, Qt::Key_Return);
        });
        QTest::mouseClick(m_form->m_newEffectButton, Qt::LeftButton);
    }

    std::mt19937 m_random;
    qint64 m_wallNs = 0;
    rehearsal::ShowDocument m_document;
    rehearsal::Playback m_playback;
    Effect *m_top = nullptr;
    MetaWidget *m_form = nullptr;
    qint64 m_running = 0;
};

int frames(const QStringList &arguments)
{
    // Links that are chosen at random may form a loop, of which every pass warns.
    QLoggingCategory::setFilterRules(
        QStringLiteral("default.debug=false\ndefault.warning=false\nqt.qpa.*=false"));
    const qint64 seconds = soak::numberAt(arguments, 0, 600);
    EditedPlay play(1);
    const qint64 count = seconds * rehearsal::Playback::framesPerSecond;
    for (qint64 frame = 0; frame < count; ++frame) {
        if (frame % framesPerEdit == 0)
            play.edit();
        play.frame();
    }

    int faults = 0;
    faults += !soak::report(play.isPlaying() && play.wasEdited() && play.meanRunning() > 0,
                            QStringLiteral("%1 s played, %2 lights, %3 children, of which %4 ran "
                                           "in a frame, the editor open")
                                .arg(seconds)
                                .arg(lights)
                                .arg(play.rows())
                                .arg(play.meanRunning(), 0, 'f', 0)
                                .toStdString());
    faults += !soak::report(play.frames.percentile(99.9) < mostForFrame,
                            "frames: " + play.frames.summary().toStdString());
    play.frames.printHistogram();
    soak::report(true, "edits:  " + play.edits.summary().toStdString());
    play.edits.printHistogram();
    return faults;
}

const soak::Command
    command("frames", "[SECONDS=600]             frame times while the show is edited", frames);

} // namespace
