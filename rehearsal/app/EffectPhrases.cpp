#include "EffectPhrases.h"

#include <algorithm>

namespace rehearsal {

namespace {

enum RuleCode { FixedRule = 0, LinkedRule = 1, CyclesRule = 2 };

/// The keys of one of the two rules.
struct RuleKeys
{
    QStringView type;
    QStringView fixedTime;
    QStringView linkEid;
    QStringView linkStart;
    QStringView linkOffset;
};

constexpr RuleKeys startKeys{u"starttype", u"startfixedtime", u"startlinkeid", u"startlinkstart",
                             u"startlinkoffset"};
constexpr RuleKeys endKeys{u"endtype", u"endfixedtime", u"endlinkeid", u"endlinkstart",
                           u"endlinkoffset"};

// As effects read them: what is missing or no number is 0.
quint32 number(const EffectText &effect, QStringView key)
{
    return propertyOf(effect, key).value_or(QString()).toUInt();
}

double real(const EffectText &effect, QStringView key)
{
    return propertyOf(effect, key).value_or(QString()).toDouble();
}

bool flag(const EffectText &effect, QStringView key)
{
    const QString text = propertyOf(effect, key).value_or(QString());
    return text == u"1" || text.compare(u"true", Qt::CaseInsensitive) == 0;
}

QString seconds(double ms)
{
    return QStringLiteral("%1 s").arg(QString::number(ms / 1000, 'g', 10));
}

QString linkPhrase(const EffectText &effect, const RuleKeys &keys)
{
    const QString target =
        QStringLiteral("the %1 of %2")
            .arg(flag(effect, keys.linkStart) ? QStringLiteral("start") : QStringLiteral("end"))
            .arg(number(effect, keys.linkEid));
    const double offset = real(effect, keys.linkOffset);
    if (offset > 0)
        return QStringLiteral("%1 after %2").arg(seconds(offset), target);
    if (offset < 0)
        return QStringLiteral("%1 before %2").arg(seconds(-offset), target);
    return QStringLiteral("at %1").arg(target);
}

} // namespace

std::optional<QString> propertyOf(const EffectText &effect, QStringView key)
{
    const auto found =
        std::find_if(effect.properties.rbegin(), effect.properties.rend(),
                     [key](const EffectText::Property &property) { return property.key == key; });
    if (found == effect.properties.rend())
        return {};
    return found->text;
}

QString startPhrase(const EffectText &effect)
{
    const quint32 code = number(effect, startKeys.type);
    if (code == FixedRule)
        return QStringLiteral("starts at %1").arg(seconds(number(effect, startKeys.fixedTime)));
    if (code == LinkedRule)
        return QStringLiteral("starts %1").arg(linkPhrase(effect, startKeys));
    return QStringLiteral("keeps its start (rule %1)").arg(code);
}

QString endPhrase(const EffectText &effect)
{
    const quint32 code = number(effect, endKeys.type);
    if (code == FixedRule)
        return QStringLiteral("lasts %1").arg(seconds(number(effect, endKeys.fixedTime)));
    if (code == LinkedRule)
        return QStringLiteral("ends %1").arg(linkPhrase(effect, endKeys));
    if (code == CyclesRule) {
        const quint32 cycles = number(effect, u"endcyclecount");
        return QStringLiteral("lasts %1 %2")
            .arg(QString::number(cycles),
                 cycles == 1 ? QStringLiteral("cycle") : QStringLiteral("cycles"));
    }
    return QStringLiteral("keeps its end (rule %1)").arg(code);
}

QString secondsColumn(const std::optional<QString> &ms)
{
    bool isNumber = false;
    const quint32 value = ms.value_or(QString()).toUInt(&isNumber);
    return isNumber ? QStringLiteral("%1 s").arg(value / 1000.0, 0, 'f', 3)
                    : ms.value_or(QStringLiteral("-"));
}

} // namespace rehearsal
