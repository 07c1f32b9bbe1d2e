#include "TypeChange.h"

#include "ChildKeys.h"
#include "ChildRoster.h"
#include "EffectColumns.h"
#include "EffectLib.h"
#include "FileDialogs.h"
#include "MetaWidget.h"

#include <QSettings>

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <utility>

namespace meta {

namespace {

constexpr int yesAndNeverAskAgain = 1;
constexpr int no = 2;

const QString askKey = QStringLiteral("askeffectchange");

class UserSettings : public QSettings
{
public:
    UserSettings()
        : QSettings(NativeFormat, UserScope, QStringLiteral("tessaline"),
                    QStringLiteral("metaeffect"))
    {
        setFallbacksEnabled(false);
    }
};

// What goes over to the new child, in the order in which it is read, and how each is turned into
// the text that is written.
enum class Form { Text, Unsigned, Real, Flag };

struct Carried
{
    const TextKey *key;
    Form form;
};

const Carried carriedKeys[] = {
    {&keys::name, Form::Text},
    {&keys::gid, Form::Unsigned},
    {&keys::transparency, Form::Real},
    {&keys::priority, Form::Unsigned},
    {&keys::begin, Form::Unsigned},
    {&keys::end, Form::Unsigned},
    {&keys::fadeIn, Form::Unsigned},
    {&keys::fadeOut, Form::Unsigned},
    {&keys::eid, Form::Unsigned},
    {&keys::startRule.type, Form::Unsigned},
    {&keys::startRule.fixedTime, Form::Unsigned},
    {&keys::startRule.linkEid, Form::Unsigned},
    {&keys::startRule.linkStart, Form::Flag},
    {&keys::startRule.linkOffset, Form::Real},
    {&keys::endRule.type, Form::Unsigned},
    {&keys::endRule.fixedTime, Form::Unsigned},
    {&keys::endRule.linkEid, Form::Unsigned},
    {&keys::endRule.linkStart, Form::Flag},
    {&keys::endRule.linkOffset, Form::Real},
    {&keys::endCycleCount, Form::Unsigned},
};

constexpr std::size_t carriedCount = std::size(carriedKeys);
// A start's link side is written before its target.
constexpr std::size_t startLinkEid = 11;
constexpr std::size_t startLinkStart = 12;

QString carriedText(const Carried &carried, const Effect &effect)
{
    const QString &name = carried.key->name();
    switch (carried.form) {
    case Form::Text: return carried.key->readText(effect);
    case Form::Unsigned: return QString::number(effect.getPropertyULong(name));
    case Form::Real: return QString::number(effect.getPropertyDouble(name), 'g', 6);
    case Form::Flag:
        return effect.getPropertyBool(name) ? QStringLiteral("1") : QStringLiteral("0");
    }
    return {};
}

} // namespace

AskSetting &askSetting()
{
    static AskSetting setting = {
        // Anything but a clear no leaves the question on.
        [] {
            const QString text = UserSettings().value(askKey).toString();
            return text != u"0" && text.compare(u"false", Qt::CaseInsensitive) != 0;
        },
        [] { UserSettings().setValue(askKey, false); },
    };
    return setting;
}

TypeChange::TypeChange(MetaWidget *form, const EditorContext &context)
    : m_form(form), m_context(context)
{
}

TypeChange::~TypeChange() = default;

void TypeChange::change(Effect &child, const QString &newType)
{
    if (askSetting().isOn()) {
        const QPointer<Effect> effect(&m_context.effect);
        const QPointer<Effect> asked(&child);
        const int answer = FileDialogs::warning(
            m_form, QStringLiteral("Confirm Effect Type Change"),
            QStringLiteral("Are you sure that you want to change the effect type?\n"
                           "All parameter values will be discarded."),
            QStringLiteral("Yes"), QStringLiteral("Yes, and Don't Ask Again"), QStringLiteral("No"),
            0, no);
        if (answer == yesAndNeverAskAgain)
            askSetting().switchOff();
        if (!effect || !asked)
            return;
        if (answer == no) {
            showFormerType(child);
            return;
        }
    }
    if (keys::type.readText(child) != newType)
        replace(child, newType);
}

void TypeChange::showFormerType(const Effect &child) const
{
    const int row = m_context.port.getRow(keys::eid.read(child));
    if (!m_form || row < 0)
        return;
    auto *cell = dynamic_cast<ComboTableItem *>(m_form->m_effectTable->item(row, TypeColumn));
    if (cell)
        cell->setCurrentItem(keys::type.readText(child));
}

void TypeChange::replace(Effect &child, const QString &newType) const
{
    Effect &effect = m_context.effect;
    ChildRoster &roster = m_context.roster;
    effect.setState(false);
    std::array<QString, carriedCount> texts;
    std::transform(std::begin(carriedKeys), std::end(carriedKeys), texts.begin(),
                   [&child](const Carried &carried) { return carriedText(carried, child); });
    const bool wasSelected = roster.selection().contains(&child);
    roster.remove(&child);
    effect.init();
    delete &child;

    EffectLib *effectLib = m_context.effectLib;
    Effect *successor = effectLib ? effectLib->effectMaker(newType) : nullptr;
    if (!successor)
        return;
    std::array<std::size_t, carriedCount> writingOrder;
    std::iota(writingOrder.begin(), writingOrder.end(), 0);
    std::swap(writingOrder[startLinkEid], writingOrder[startLinkStart]);
    for (const std::size_t index : writingOrder)
        carriedKeys[index].key->writeText(*successor, texts[index]);
    successor->init();
    m_context.port.adopt(*successor);
    roster.insert(successor);
    effect.init();
    m_context.port.setDirty(true);
    m_context.port.updateEffectTimes();
    if (wasSelected)
        roster.selection().append(successor);
    m_context.port.refreshWidgets();
    effect.setState(true);
}

} // namespace meta
