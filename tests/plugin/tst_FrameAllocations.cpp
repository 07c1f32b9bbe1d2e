#include "Effect.h"
#include "Player.h"
#include "ShowFile.h"
#include "TestTypes.h"

#include <QApplication>
#include <QTest>

#include <cstddef>
#include <cstdlib>
#include <memory>

#if defined(__GLIBC__) && !defined(META_SANITIZED)
#define COUNTS_ALLOCATIONS
#endif

namespace {

std::size_t allocations = 0;

} // namespace

#ifdef COUNTS_ALLOCATIONS
// The program's own malloc and its relatives, which every library of the process then calls,
// operator new included: they count, and hand on to the system's.
extern "C" {

void *systemMalloc(std::size_t size) __asm__("__libc_malloc");
void *systemCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void *systemRealloc(void *old, std::size_t size) __asm__("__libc_realloc");
void *systemMemalign(std::size_t alignment, std::size_t size) __asm__("__libc_memalign");

Q_DECL_EXPORT void *malloc(std::size_t size) noexcept
{
    ++allocations;
    return systemMalloc(size);
}

Q_DECL_EXPORT void *calloc(std::size_t count, std::size_t size) noexcept
{
    ++allocations;
    return systemCalloc(count, size);
}

Q_DECL_EXPORT void *realloc(void *old, std::size_t size) noexcept
{
    ++allocations;
    return systemRealloc(old, size);
}

Q_DECL_EXPORT void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    ++allocations;
    return systemMemalign(alignment, size);
}

Q_DECL_EXPORT int posix_memalign(void **place, std::size_t alignment, std::size_t size) noexcept
{
    ++allocations;
    *place = systemMemalign(alignment, size);
    return *place ? 0 : ENOMEM;
}

} // extern "C"
#endif

namespace {

constexpr int runMs = 60'000;

QString setting(const char *key, const QString &text)
{
    return QStringLiteral("<property key=\"%1\">%2</property>").arg(QLatin1String(key), text);
}

// Plays from the start of the show to its end.
QString effectText(const QString &type, int eid, int group, const QString &more = {})
{
    return QStringLiteral("<effect type=\"%1\">").arg(type) + setting("eid", QString::number(eid))
           + setting("gid", QString::number(group)) + setting("cycletime", "700")
           + setting("starttype", "0") + setting("startfixedtime", "0") + setting("begin", "0")
           + setting("endtype", "0") + setting("endfixedtime", QString::number(runMs))
           + setting("end", QString::number(runMs)) + more + QStringLiteral("</effect>");
}

// A child of every type that the host has on every kind of group.
QString everyType()
{
    const QStringList types{"Solid", "Ramp", "Chase", "Pulse", "Strobe", "Twinkle", "White Fade"};
    QString text;
    int eid = 0;
    for (const QString &type : types) {
        for (int group = 0; group <= 3; ++group) {
            ++eid;
            text += effectText(type, eid, group, setting("priority", QString::number(eid % 3)));
        }
    }
    return text;
}

/// @param settings of the meta effect at the top
std::unique_ptr<rehearsal::Show> makeShow(const QString &settings, const QString &children)
{
    const QString text =
        QStringLiteral("<show version=\"1\"><map><light uid=\"1\" name=\"A\" x=\"0\" y=\"0\"/>"
                       "<light uid=\"2\" name=\"B\" x=\"0.5\" y=\"0\"/>"
                       "<light uid=\"3\" name=\"C\" x=\"1\" y=\"0\"/>"
                       "<group uid=\"1\" name=\"X\" type=\"chasing\" lights=\"1 2 3\"/>"
                       "<group uid=\"2\" name=\"Y\" type=\"synchronized\" lights=\"1 2 3\"/>"
                       "<group uid=\"3\" name=\"Z\" type=\"leaf\" lights=\"2\"/></map>"
                       "<effect type=\"Meta Effect\">")
        + settings + children + QStringLiteral("</effect></show>");
    rehearsal::FileFault fault;
    auto show = rehearsal::parseShow(text.toUtf8(), QStringLiteral("the show"), allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    return show;
}

} // namespace

class tst_FrameAllocations : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
#ifndef COUNTS_ALLOCATIONS
        QSKIP("Allocations are counted with the C library of GNU, and not by a sanitizer's own");
#endif
    }

    void anAllocationIsCounted()
    {
        const std::size_t before = allocations;
        const auto number = std::make_unique<int>(1);
        const QString text = QString::number(before + 10'000);
        QVERIFY(*number == 1 && !text.isEmpty());
        QVERIFY(allocations >= before + 2);
    }

    void aSteadyFrameAllocatesNothing_data()
    {
        QTest::addColumn<QString>("settings");
        QTest::addColumn<QString>("children");
        QTest::addColumn<bool>("isEdited");
        const QString brightness = setting("brightness", "0.5");
        const QString raised = setting("priority", "2") + setting("transparency", "0.25");
        const QString nested = effectText("Meta Effect", 100, 0, raised + brightness + everyType());
        const QString deeper =
            effectText("Meta Effect", 200, 0, raised + brightness + everyType() + nested);
        QTest::newRow("no children") << QString() << QString() << false;
        QTest::newRow("every type") << QString() << everyType() << false;
        QTest::newRow("every type, the editor open") << QString() << everyType() << true;
        QTest::newRow("a transparent parent") << raised << everyType() << false;
        QTest::newRow("a dimmed parent") << brightness << everyType() << false;
        QTest::newRow("nested") << QString() << everyType() + nested << false;
        QTest::newRow("nested, the editor open") << raised << everyType() + nested << true;
        QTest::newRow("nested twice") << raised << everyType() + deeper << false;
    }

    void aSteadyFrameAllocatesNothing()
    {
        QFETCH(const QString, settings);
        QFETCH(const QString, children);
        QFETCH(const bool, isEdited);
        const std::unique_ptr<rehearsal::Show> show = makeShow(settings, children);
        if (isEdited)
            QVERIFY(show->effects().first()->internalGetEffectWidget());
        rehearsal::Player player(show->map(), show->effects());
        player.start();
        player.frame(QTime(12, 0), 0);
        for (int frame = 1; frame < 1000; ++frame) {
            const QTime time = QTime(12, 0).addMSecs(frame * 25);
            const std::size_t before = allocations;
            player.frame(time, static_cast<unsigned long>(frame));
            QCOMPARE(allocations - before, std::size_t{0});
        }
        for (const Effect *effect : show->loadedEffects())
            QVERIFY(effect->getState());
    }
};

QTEST_MAIN(tst_FrameAllocations)
#include "tst_FrameAllocations.moc"
