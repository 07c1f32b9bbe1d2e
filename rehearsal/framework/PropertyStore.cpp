#include "PropertyStore.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace rehearsal {

namespace {

// Keys that are found without comparing texts. The first six are those that every effect has.
constexpr int countOfEveryEffect = 6;
constexpr std::array<std::u16string_view, 36> wellKnownKeys{
    u"priority",     u"transparency",   u"begin",
    u"end",          u"fadein",         u"fadeout",
    u"type",         u"name",           u"eid",
    u"gid",          u"starttype",      u"startfixedtime",
    u"startlinkeid", u"startlinkstart", u"startlinkoffset",
    u"endtype",      u"endfixedtime",   u"endlinkeid",
    u"endlinkstart", u"endlinkoffset",  u"endcyclecount",
    u"cycletime",    u"level",          u"from",
    u"to",           u"width",          u"low",
    u"high",         u"duty",           u"seed",
    u"density",      u"loop",           u"brightness",
    u"caption",      u"comment",        u"colour"};

constexpr std::size_t tableSize = 256;

constexpr std::size_t slotOf(const char16_t *text, std::size_t size)
{
    return (size * 5 + text[0] * 17 + text[size / 2] * 7 + text[size - 1] * 3) % tableSize;
}

// Open addressing over the keys above; -1 marks a free place.
constexpr std::array<qint8, tableSize> makeKeyTable()
{
    std::array<qint8, tableSize> table{};
    table.fill(-1);
    for (std::size_t id = 0; id < wellKnownKeys.size(); ++id) {
        std::size_t place = slotOf(wellKnownKeys[id].data(), wellKnownKeys[id].size());
        while (table[place] >= 0)
            place = (place + 1) % tableSize;
        table[place] = static_cast<qint8>(id);
    }
    return table;
}

constexpr auto keyTable = makeKeyTable();

int wellKnownId(const QString &key)
{
    const auto size = static_cast<std::size_t>(key.size());
    if (size == 0)
        return -1;
    const auto *text = reinterpret_cast<const char16_t *>(key.constData());
    for (std::size_t place = slotOf(text, size); keyTable[place] >= 0;
         place = (place + 1) % tableSize) {
        const std::u16string_view known = wellKnownKeys[static_cast<std::size_t>(keyTable[place])];
        if (known.size() == size && std::memcmp(known.data(), text, size * 2) == 0)
            return keyTable[place];
    }
    return -1;
}

template<typename... Alternatives>
struct Overloaded : Alternatives...
{
    using Alternatives::operator()...;
};
template<typename... Alternatives>
Overloaded(Alternatives...) -> Overloaded<Alternatives...>;

QString writtenText(const PropertyStore::Variable &variable, int precision)
{
    return std::visit(
        Overloaded{
            [](std::monostate) { return QString(); },
            [](const bool *flag) { return *flag ? QStringLiteral("1") : QStringLiteral("0"); },
            [precision](const double *real) { return QString::number(*real, 'g', precision); },
            [](const quint32 *number) { return QString::number(*number); },
            [](const qint32 *number) { return QString::number(*number); }},
        variable);
}

bool readFlag(const QString &text, bool *ok)
{
    const bool isTrue = text == u"1" || text.compare(u"true", Qt::CaseInsensitive) == 0;
    const bool isFalse = text == u"0" || text.compare(u"false", Qt::CaseInsensitive) == 0;
    *ok = isTrue || isFalse;
    return isTrue;
}

double readReal(const QString &text, bool *ok)
{
    const double real = text.toDouble(ok);
    return *ok ? real : 0.0;
}

void assign(const PropertyStore::Variable &variable, const QString &text)
{
    bool ok = false;
    std::visit(Overloaded{[](std::monostate) {}, [&](bool *flag) { *flag = readFlag(text, &ok); },
                          [&](double *real) { *real = readReal(text, &ok); },
                          [&](quint32 *number) { *number = text.toUInt(&ok); },
                          [&](qint32 *number) {
                              *number = text.toInt(&ok);
                              if (!ok)
                                  *number = static_cast<qint32>(text.toUInt(&ok));
                          }},
               variable);
}

} // namespace

std::array<PropertyStore::AskedKey, PropertyStore::askedCount> PropertyStore::s_asked;

PropertyStore::PropertyStore()
{
    static_assert(wellKnownKeys.size() == wellKnownCount);
}

const PropertyStore::Reading *PropertyStore::findByText(const QString &key) const
{
    const int id = wellKnownId(key);
    if (id >= 0) {
        if (key.capacity() > 0) // else its text is not counted, and no copy keeps it alive
            s_asked[askedPlace(key)] = {key, id};
        const Reading &reading = m_wellKnown[static_cast<std::size_t>(id)];
        return reading.state & Present ? &reading : nullptr;
    }
    const auto found = m_otherIndex.constFind(key);
    return found == m_otherIndex.constEnd() ? nullptr : &m_others[*found];
}

PropertyStore::Reading &PropertyStore::add(const QString &key)
{
    const int id = wellKnownId(key);
    if (id < 0) {
        m_otherIndex.insert(key, static_cast<quint32>(m_others.size()));
        m_others.emplace_back();
    }
    Reading &reading = id < 0 ? m_others.back() : m_wellKnown[static_cast<std::size_t>(id)];
    reading.state = Present;
    reading.position = static_cast<quint32>(m_properties.size());
    m_properties.push_back({key, {}, false});
    return reading;
}

void PropertyStore::followVariable(const Reading &reading) const
{
    if (isInStep(reading))
        return;
    const Binding &binding = m_bindings[reading.binding - 1u];
    binding.text = writtenText(binding.variable, binding.precision);
    reading.state = Present;
    binding.inStep = binding.bits();
}

const QString *PropertyStore::text(const QString &key) const
{
    const Reading *reading = find(key);
    if (!reading)
        return nullptr;
    followVariable(*reading);
    return &textOf(*reading);
}

void PropertyStore::readNumber(const Reading &reading) const
{
    followVariable(reading);
    bool ok = false;
    reading.value.number = textOf(reading).toUInt(&ok);
    reading.state &= static_cast<quint8>(~(RealKnown | ValueOk));
    reading.state |= NumberKnown | (ok ? ValueOk : 0);
}

bool PropertyStore::flag(const QString &key, bool *ok) const
{
    const Reading *reading = find(key);
    if (reading) {
        followVariable(*reading);
        if (!(reading->state & FlagKnown)) {
            bool isFlag = false;
            const bool value = readFlag(textOf(*reading), &isFlag);
            reading->state |= FlagKnown | (isFlag ? FlagOk : 0) | (value ? FlagIsTrue : 0);
        }
    }
    if (ok)
        *ok = reading && (reading->state & FlagOk);
    return reading && (reading->state & FlagIsTrue);
}

double PropertyStore::real(const QString &key, bool *ok) const
{
    const Reading *reading = find(key);
    if (reading) {
        followVariable(*reading);
        if (!(reading->state & RealKnown)) {
            bool isReal = false;
            reading->value.real = readReal(textOf(*reading), &isReal);
            reading->state &= static_cast<quint8>(~(NumberKnown | ValueOk));
            reading->state |= RealKnown | (isReal ? ValueOk : 0);
        }
    }
    if (ok)
        *ok = reading && (reading->state & ValueOk);
    return reading ? reading->value.real : 0.0;
}

bool PropertyStore::setOther(const Reading *reading, const QString &key, const QString &text)
{
    if (reading) {
        followVariable(*reading);
        QString &present = textOf(*reading);
        const bool isChange = present != text;
        present = text; // shared with the caller: the next such call compares addresses only
        if (!isChange)
            return false;
    } else {
        reading = &add(key);
        textOf(*reading) = text;
    }
    reading->state = Present;
    if (reading->binding > 0) {
        const Binding &binding = m_bindings[reading->binding - 1u];
        assign(binding.variable, text);
        binding.inStep = binding.bits();
    }
    return true;
}

void PropertyStore::bind(const QString &key, Variable variable, int precision)
{
    auto *reading = const_cast<Reading *>(find(key));
    if (!reading)
        reading = &add(key);
    if (reading->binding == 0) {
        m_bindings.emplace_back();
        reading->binding = static_cast<quint8>(m_bindings.size());
    }
    Binding &binding = m_bindings[reading->binding - 1u];
    std::visit(Overloaded{[](std::monostate) {},
                          [&binding](auto *address) {
                              binding.address = address;
                              binding.width = sizeof(*address);
                          }},
               variable);
    binding.variable = variable;
    binding.precision = precision;
    binding.text = writtenText(variable, precision);
    m_properties[reading->position].kind = static_cast<Kind>(variable.index());
    reading->state = Present;
    binding.inStep = binding.bits();
}

void PropertyStore::declare(const QString &key)
{
    if (const Reading *reading = find(key))
        m_properties[reading->position].declared = true;
}

std::vector<PropertyStore::Property> PropertyStore::properties() const
{
    std::vector<Property> properties = m_properties;
    const auto renew = [this, &properties](const Reading &reading) {
        followVariable(reading);
        properties[reading.position].text = textOf(reading);
    };
    for (const Reading &reading : m_wellKnown) {
        if (reading.state & Present)
            renew(reading);
    }
    for (const Reading &reading : m_others)
        renew(reading);
    const auto isOfEveryEffect = [](const Property &property) {
        const int id = wellKnownId(property.key);
        return id >= 0 && id < countOfEveryEffect;
    };
    std::stable_partition(properties.begin(), properties.end(), std::not_fn(isOfEveryEffect));
    return properties;
}

} // namespace rehearsal
