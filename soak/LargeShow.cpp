#include "LargeShow.h"

#include <QString>
#include <QStringList>

#include <cmath>

namespace soak {

namespace {

/// Children start within this time; those that are linked soon after the one they are linked to.
constexpr int startsWithinMs = 60'000;
/// A chain of links is so long.
constexpr int chainLength = 4;

QString setting(const char *key, const QString &text)
{
    return QStringLiteral("<property key=\"%1\">%2</property>").arg(QLatin1String(key), text);
}

QString setting(const char *key, int number)
{
    return setting(key, QString::number(number));
}

QString mapText(const LargeShow &show)
{
    QString text = QStringLiteral("<map>");
    const int columns = static_cast<int>(std::ceil(std::sqrt(show.lights)));
    for (int light = 0; light < show.lights; ++light)
        text += QStringLiteral("<light uid=\"%1\" name=\"Light %1\" x=\"%2\" y=\"%3\"/>")
                    .arg(light + 1)
                    .arg((light % columns + 0.5) / columns)
                    .arg((light / columns + 0.5) / columns);
    const QStringList types{"chasing", "synchronized"};
    for (int group = 0; group < show.groups; ++group) {
        const qint64 first = qint64{group} * show.lights / show.groups;
        QStringList lights;
        for (int light = 0; light < show.lightsOfGroup; ++light)
            lights.append(QString::number((first + light) % show.lights + 1));
        text += QStringLiteral("<group uid=\"%1\" name=\"Group %1\" type=\"%2\" lights=\"%3\"/>")
                    .arg(group + 1)
                    .arg(types[group % types.size()], lights.join(u' '));
    }
    return text + QStringLiteral("</map>");
}

// The first of a chain starts at a fixed time, every other at the end or the start of the one
// before.
QString startRule(int number)
{
    if (number % chainLength == 0)
        return setting("starttype", 0) + setting("startfixedtime", number * 37 % startsWithinMs);
    return setting("starttype", 1) + setting("startlinkeid", number - 1)
           + setting("startlinkstart", number % 2) + setting("startlinkoffset", number % 3 * 100);
}

QString endRule(const LargeShow &show, int number)
{
    if (number % 3 == 0)
        return setting("endtype", 2) + setting("endcyclecount", show.childMs / 1000);
    return setting("endtype", 0) + setting("endfixedtime", show.childMs + number % 5 * 100);
}

QString childText(const LargeShow &show, int number)
{
    const QStringList types{"Chase", "Pulse", "Twinkle", "Ramp", "Solid", "Strobe", "White Fade"};
    return QStringLiteral("<effect type=\"%1\">").arg(types[number % types.size()])
           + setting("name", QStringLiteral("Child %1").arg(number)) + setting("eid", number)
           + setting("gid", number % show.groups + 1) + setting("cycletime", 700 + number % 7 * 100)
           + startRule(number) + endRule(show, number) + setting("fadein", number % 3 * 200)
           + setting("fadeout", number % 2 * 300) + QStringLiteral("</effect>");
}

QString childTexts(const LargeShow &show, int count)
{
    QString text;
    for (int number = 0; number < count; ++number)
        text += childText(show, number);
    return text;
}

// Starts at 0 and lasts as long as what it holds.
QString metaText(int eid, const QString &children)
{
    return QStringLiteral("<effect type=\"Meta Effect\">") + setting("loop", 1)
           + setting("name", QStringLiteral("Nested %1").arg(eid)) + setting("eid", eid)
           + setting("starttype", 0) + setting("startfixedtime", eid % 10 * 500)
           + setting("endtype", 2) + setting("endcyclecount", 1) + children
           + QStringLiteral("</effect>");
}

} // namespace

QByteArray LargeShow::text() const
{
    QString held = childTexts(*this, children);
    for (int i = 0; i < nested; ++i)
        held += metaText(children + i, childTexts(*this, nestedChildren));
    for (int level = 1; level < depth; ++level)
        held = metaText(10, held) + childTexts(*this, 2);
    return (QStringLiteral("<show version=\"1\">") + mapText(*this) + metaText(0, held)
            + QStringLiteral("</show>"))
        .toUtf8();
}

} // namespace soak
