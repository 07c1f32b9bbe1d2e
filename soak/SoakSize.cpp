#include "CpuClock.h"
#include "Effect.h"
#include "EffectHost.h"
#include "LargeShow.h"
#include "MetaWidget.h"
#include "Player.h"
#include "ShowDocument.h"
#include "ShowFile.h"
#include "Soak.h"
#include "TableWidget.h"
#include "TestTypes.h"
#include "TimelineModel.h"

#include <QCoreApplication>
#include <QGroupBox>
#include <QLineEdit>
#include <QTemporaryFile>
#include <QTest>

#include <malloc.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using rehearsal::Show;

/// N log N between 1/8 of the largest number and that number itself has an exponent of 1.12 where
/// the largest is 10,000, and of 1.24 where it is 200. More than this is a square at work.
///
/// What is larger also fits the processor's caches less, the more so when other programs use them.
/// By how much is told by a plain walk over the same effects: what its exponent has above 1 is
/// allowed to the others too, as long as that does not hide a square.
constexpr double highestExponent = 1.25;
constexpr double mostForCaches = 0.4;
const std::string walk = "plain walk";
constexpr std::array eighths{1, 2, 4, 8};
constexpr int framesToRender = 1000;
constexpr qint64 frameMs = 25;
constexpr int walks = 20;
#ifdef META_SANITIZED
constexpr bool judgesTimes = false; // they say nothing there
#else
constexpr bool judgesTimes = true;
#endif
/// Each time is the least of so many.
constexpr int attempts = judgesTimes ? 3 : 1;
constexpr int mostAttempts = 15;
/// Below this a time says more about what a call costs than about its size, ns.
constexpr double leastTime = 1'000'000;

struct Shape
{
    const char *name;
    int largest;
    bool hasManyChildrenInOne; ///< edited in the editor of the effect at the top
    std::function<soak::LargeShow(int size)> make;
};

std::vector<Shape> shapes()
{
    return {
        {"children in one meta effect", 10'000, true,
         [](int size) { return soak::LargeShow{.children = size}; }},
        {"nested meta effects of 100 children", 100, true,
         [](int size) {
             return soak::LargeShow{.children = 1, .nested = size, .nestedChildren = 100};
         }},
        {"levels of nesting", 200, false,
         [](int size) { return soak::LargeShow{.children = 2, .depth = size}; }},
        {"lights", 20'000, true,
         [](int size) {
             return soak::LargeShow{.lights = size, .groups = 20, .lightsOfGroup = size / 20};
         }},
        {"groups", 1000, true,
         [](int size) {
             return soak::LargeShow{
                 .lights = 1000, .groups = size, .lightsOfGroup = 10, .children = 500};
         }},
    };
}

std::unique_ptr<Show> load(const QByteArray &text)
{
    rehearsal::FileFault fault;
    std::unique_ptr<Show> show =
        rehearsal::parseShow(text, QStringLiteral("large show"), allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    return show;
}

Effect &top(const Show &show)
{
    return *show.effects().first();
}

// As the program's command of that name does it.
void resolve(const Show &show)
{
    for (Effect *effect : show.loadedEffects()) {
        if (!EffectHost::holdsEffects(*effect))
            continue;
        QMetaObject::invokeMethod(effect, "updateEffectTimes");
        QMetaObject::invokeMethod(effect, "updateEndTime");
    }
}

void collectNested(Effect &effect, std::vector<Effect *> &found)
{
    found.push_back(&effect);
    if (!EffectHost::holdsEffects(effect))
        return;
    for (Effect *nested : EffectHost::nested(effect))
        collectNested(*nested, found);
}

std::vector<Effect *> everyEffect(const Show &show)
{
    std::vector<Effect *> found;
    collectNested(top(show), found);
    return found;
}

double cpuNow()
{
    return static_cast<double>(rehearsal::threadCpuNs());
}

/// The times of one operation at one size, by its name, ns.
using Times = std::map<std::string, double>;

/// Does every operation on a show of one size, and notes the least times.
class Trial
{
public:
    Trial(const Shape &shape, int size, Times &times)
        : m_text(shape.make(size).text()),
          m_hasManyChildrenInOne(shape.hasManyChildrenInOne),
          m_times(times)
    {
    }

    /// Whether what was saved, and what was rebuilt, was what was there.
    bool run()
    {
        std::unique_ptr<Show> show;
        measure("load", [&] { show = load(m_text); });
        measure("resolve", [&] { resolve(*show); });
        walkOver(everyEffect(*show));
        showInTimeline(*show);
        if (m_hasManyChildrenInOne)
            editInEditor(top(*show));
        else
            editWithoutEditor(*show);
        render(*show);
        return save(*show) && undo();
    }

private:
    template<typename Work>
    void measure(const char *name, Work work)
    {
        const double start = cpuNow();
        work();
        const double time = cpuNow() - start;
        const auto known = m_times.find(name);
        m_times[name] = known == m_times.end() ? time : std::min(known->second, time);
    }

    // Asks every effect in turn for what a pass or a frame asks for.
    void walkOver(const std::vector<Effect *> &effects)
    {
        const QStringList keys{QStringLiteral("eid"),
                               QStringLiteral("begin"),
                               QStringLiteral("end"),
                               QStringLiteral("starttype"),
                               QStringLiteral("startfixedtime"),
                               QStringLiteral("priority")};
        quint64 sum = 0;
        measure(walk.c_str(), [&] {
            for (int i = 0; i < walks; ++i) {
                for (Effect *effect : effects) {
                    for (const QString &key : keys)
                        sum += effect->getPropertyULong(key);
                    effect->setState(false);
                }
            }
        });
        if (sum == 0)
            qFatal("there was nothing to walk over");
    }

    void showInTimeline(const Show &show)
    {
        rehearsal::TimelineModel model;
        measure("timeline", [&] {
            model.rebuild(&top(show));
            model.layOut(false);
            model.layOut(true);
        });
    }

    static void select(meta::TableWidget &table, int row)
    {
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {},
                          table.visualRect(table.model()->index(row, 0)).center());
    }

    void editInEditor(Effect &effect)
    {
        QWidget *form = nullptr;
        measure("open editor", [&] { form = effect.internalGetEffectWidget(); });
        auto &editor = *qobject_cast<MetaWidget *>(form);
        editor.show();
        if (!QTest::qWaitForWindowExposed(&editor))
            qFatal("the editor is not shown");
        select(*editor.m_effectTable, 1);
        measure("select", [&] { select(*editor.m_effectTable, 0); });
        editor.m_startFixedLineEdit->setText(QStringLiteral("2.345"));
        const QString before = editor.m_startFixedLineEdit->text();
        measure("edit", [&] { editor.m_startFixedLineEdit->setText(QStringLiteral("1.234")); });
        if (before == editor.m_startFixedLineEdit->text()
            || !editor.m_startButtonGroup->isEnabled())
            qFatal("there was nothing to edit");
        delete form;
    }

    // The longest way: the innermost child lasts longer, and every level follows.
    void editWithoutEditor(const Show &show)
    {
        Effect &innermost = *show.loadedEffects().front();
        measure("edit", [&] {
            innermost.setProperty(QStringLiteral("endtype"), QStringLiteral("0"));
            innermost.setProperty(QStringLiteral("endfixedtime"), QStringLiteral("900000"));
            resolve(show);
        });
        if (top(show).endTime() < 900'000)
            qFatal("the edit did not reach the top");
    }

    void render(Show &show)
    {
        rehearsal::Player player(show.map(), show.effects());
        player.start();
        measure("render", [&] {
            for (int frame = 0; frame < framesToRender; ++frame)
                player.frame(QTime(0, 0).addMSecs(static_cast<int>(frame * frameMs)), 0);
        });
    }

    bool save(const Show &show)
    {
        QByteArray definition;
        measure("definition", [&] { definition = rehearsal::definitionText(show); });
        QString text;
        measure("text", [&] { text = rehearsal::showText(show); });
        QTemporaryFile file;
        rehearsal::FileFault fault;
        bool isSaved = file.open();
        measure("save", [&] { isSaved = isSaved && saveShow(show, file.fileName(), &fault); });
        std::unique_ptr<Show> reloaded;
        measure("reload",
                [&] { reloaded = rehearsal::readShow(file.fileName(), allTypes(), &fault); });
        return isSaved && reloaded && rehearsal::showText(*reloaded) == text
               && definition.size() > 0;
    }

    // The look that finds an edit, and building the show anew for undo.
    bool undo()
    {
        rehearsal::ShowDocument document(allTypes());
        rehearsal::FileFault fault;
        if (!document.openText(m_text, QStringLiteral("large show"), {}, &fault))
            return false;
        const QByteArray before = document.text();
        top(*document.show()).setProperty(QStringLiteral("name"), QStringLiteral("Renamed"));
        measure("find edit", [&] { document.flush(); });
        bool isUndone = false;
        measure("undo", [&] {
            isUndone = document.undo();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        });
        return isUndone && document.text() == before;
    }

    QByteArray m_text;
    bool m_hasManyChildrenInOne;
    Times &m_times;
};

// The slope of the straight line that lies closest to the logarithms.
double exponent(const std::vector<double> &sizes, const std::vector<double> &times)
{
    const auto count = static_cast<double>(sizes.size());
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const double x = std::log(sizes[i]);
        const double y = std::log(times[i]);
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
    }
    return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

/// The times of every operation at several sizes of one shape.
class Series
{
public:
    Series(const Shape &shape, qint64 percent) : m_shape(shape), m_times(eighths.size())
    {
        const qint64 largest = std::max(shape.largest * percent / 100, qint64{8});
        for (const int eighth : eighths)
            m_sizes.push_back(static_cast<double>(largest * eighth / 8));
    }

    /// Once at every size.
    void measure()
    {
        for (std::size_t i = 0; i < m_sizes.size(); ++i)
            m_isSame = Trial(m_shape, static_cast<int>(m_sizes[i]), m_times[i]).run() && m_isSame;
    }

    bool holds() const
    {
        return std::all_of(m_times.back().begin(), m_times.back().end(),
                           [this](const auto &time) { return holds(time.first); });
    }

    /// @returns how many lines do not hold
    int report() const
    {
        QStringList sizes;
        for (const double size : m_sizes)
            sizes.append(QString::number(size));
        int faults = 0;
        faults += !soak::report(
            m_isSame, QStringLiteral("%1 %2: saved and read again, and undone, equal")
                          .arg(sizes.join(QStringLiteral(", ")), QLatin1String(m_shape.name))
                          .toStdString());
        for (const auto &[name, time] : m_times.back())
            faults += !soak::report(holds(name), line(name).toStdString());
        return faults;
    }

private:
    std::vector<double> timesOf(const std::string &name) const
    {
        std::vector<double> found;
        for (const Times &ofSize : m_times)
            found.push_back(ofSize.at(name));
        return found;
    }

    bool holds(const std::string &name) const
    {
        if (!judgesTimes || name == walk || timesOf(name).back() < leastTime)
            return true;
        const double caches =
            std::clamp(exponent(m_sizes, timesOf(walk)) - 1.0, 0.0, mostForCaches);
        return exponent(m_sizes, timesOf(name)) <= highestExponent + caches;
    }

    QString line(const std::string &name) const
    {
        QString text = QStringLiteral("  %1").arg(QString::fromStdString(name), -12);
        for (const double time : timesOf(name))
            text += QStringLiteral("%1").arg(time / 1e6, 11, 'f', 3);
        return text
               + QStringLiteral(" ms   exponent %1")
                     .arg(exponent(m_sizes, timesOf(name)), 0, 'f', 2);
    }

    const Shape &m_shape;
    std::vector<double> m_sizes;
    std::vector<Times> m_times;
    bool m_isSame = true;
};

// What another program disturbed gets more chances; what grows too fast stays so.
int measureShape(const Shape &shape, qint64 percent)
{
    Series series(shape, percent);
    for (int attempt = 0; attempt < attempts || (attempt < mostAttempts && !series.holds());
         ++attempt)
        series.measure();
    return series.report();
}

int size(const QStringList &arguments)
{
    const qint64 percent = std::clamp<qint64>(soak::numberAt(arguments, 0, 100), 1, 100);
    // Memory once taken is kept, so that no time is spent on asking the system for it again.
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    int faults = 0;
    for (const Shape &shape : shapes())
        faults += measureShape(shape, percent);
    return faults;
}

const soak::Command
    command("size", "[PERCENT=100]             large shows: no time grows with the square", size);

} // namespace
