#include "RosterBuilder.h"

namespace {

Rule linked(quint32 eid, const char *toStart, double offsetMs)
{
    return {{QStringLiteral("type"), QStringLiteral("1")},
            {QStringLiteral("linkeid"), QString::number(eid)},
            {QStringLiteral("linkstart"), QString::fromLatin1(toStart)},
            {QStringLiteral("linkoffset"), QString::number(offsetMs, 'g', 6)}};
}

} // namespace

Rule fixed(quint32 ms)
{
    return {{QStringLiteral("type"), QStringLiteral("0")},
            {QStringLiteral("fixedtime"), QString::number(ms)}};
}

Rule toStartOf(quint32 eid, double offsetMs)
{
    return linked(eid, "1", offsetMs);
}

Rule toEndOf(quint32 eid, double offsetMs)
{
    return linked(eid, "0", offsetMs);
}

Rule cycles(quint32 count)
{
    return {{QStringLiteral("type"), QStringLiteral("2")},
            {QStringLiteral("cyclecount"), QString::number(count)}};
}

Rule ofCode(const QString &code)
{
    return {{QStringLiteral("type"), code}};
}

StubEffect &RosterBuilder::add(quint32 eid, const Rule &start, const Rule &end)
{
    auto *child = new StubEffect(nullptr, eid);
    for (const auto &[key, text] : start)
        child->setProperty(QStringLiteral("start") + key, text);
    for (const auto &[key, text] : end)
        child->setProperty(QStringLiteral("end") + key, text);
    child->changes.clear();
    roster.insert(child);
    return *child;
}

StubEffect &RosterBuilder::at(int index) const
{
    return *qobject_cast<StubEffect *>(roster.children().at(index));
}

QStringList RosterBuilder::times() const
{
    QStringList times;
    for (int i = 0; i < roster.children().count(); ++i) {
        const StubEffect &child = at(i);
        times.append(QStringLiteral("%1: %2 - %3")
                         .arg(child.text("eid"), child.text("begin"), child.text("end")));
    }
    return times;
}
