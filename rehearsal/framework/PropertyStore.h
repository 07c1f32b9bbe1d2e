#pragma once

#include <QHash>
#include <QString>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

namespace rehearsal {

/// The properties of one effect: text by key, in order of arrival.
///
/// A property may be bound to a variable. The two are kept in step in both directions: a new text
/// is read into the variable, and a variable that was changed gives the property a new text the
/// next time that it is asked for. Typed reads of an unchanged text cost a look-up, no conversion.
class PropertyStore
{
public:
    /// The variable of a bound property; not owned, outlives the store. A qint32 holds an unsigned
    /// text modulo 2^32, so that "4294967295" and "-1" both read as -1.
    using Variable = std::variant<std::monostate, bool *, double *, quint32 *, qint32 *>;

    /// What a property's variable holds, in the order of Variable; one without is free text.
    enum class Kind { Text, Flag, Real, Unsigned, Signed };

    struct Property
    {
        QString key;
        QString text;
        bool declared = false; ///< offered by the parameter editor
        Kind kind = Kind::Text;
    };

    PropertyStore();

    /// Null if there is no such property. Valid until the next property is added.
    const QString *text(const QString &key) const;
    quint32 number(const QString &key, bool *ok) const
    {
        const Reading *reading = find(key);
        if (!reading) {
            if (ok)
                *ok = false;
            return 0;
        }
        if (!isInStep(*reading) || !(reading->state & NumberKnown))
            readNumber(*reading);
        if (ok)
            *ok = reading->state & ValueOk;
        return reading->value.number;
    }
    bool flag(const QString &key, bool *ok) const;
    double real(const QString &key, bool *ok) const;

    /// Whether the property has this very text object, which is quick to tell; false says nothing.
    /// Callers that set the same text again and again mostly do it with the same object.
    bool holds(const QString &key, const QString &text) const
    {
        const Reading *reading = find(key);
        return reading && isInStep(*reading) && isSameObject(textOf(*reading), text);
    }

    /// True if the property is new or its text changed.
    bool set(const QString &key, const QString &text)
    {
        return !holds(key, text) && setOther(find(key), key, text);
    }

    /// Binds a property to a variable; the property takes the variable's present value as its text.
    /// @param precision significant digits of the text of a double
    void bind(const QString &key, Variable variable, int precision = 6);
    /// Offers the property in the parameter editor.
    void declare(const QString &key);

    /// In order of arrival, those that every effect has at the end.
    std::vector<Property> properties() const;

private:
    enum State : quint8 {
        Present = 1,
        NumberKnown = 2, ///< value holds the text read as a number
        RealKnown = 4,   ///< value holds the text read as a real
        ValueOk = 8,     ///< the text is such a value
        FlagKnown = 16,
        FlagOk = 32,
        FlagIsTrue = 64
    };

    // What a frame or a pass asks of a property, close together: its typed value, made when first
    // asked for.
    struct Reading
    {
        mutable union
        {
            quint32 number;
            double real;
        } value{};
        quint32 position = 0; ///< of the property
        mutable quint8 state = 0;
        quint8 binding = 0; ///< index of its binding + 1; 0 if it is not bound
    };

    struct Binding
    {
        const void *address = nullptr;
        mutable quint64 inStep = 0; ///< bits of the variable's value that the text stands for
        mutable QString text;       ///< of the property; its own stays empty
        quint8 width = 0;           ///< bytes of the variable
        int precision = 6;
        Variable variable;

        /// The bits of the variable as they are now.
        quint64 bits() const
        {
            if (width == sizeof(quint32))
                return *static_cast<const quint32 *>(address);
            if (width == sizeof(double))
                return std::bit_cast<quint64>(*static_cast<const double *>(address));
            return *static_cast<const bool *>(address);
        }
    };

    // A well-known key that was asked for, by the address of its text. The copy keeps the text
    // alive, so the same address is the same text: most callers ask with the same few strings for
    // ever.
    struct AskedKey
    {
        QString key;
        int id = -1;
    };
    static constexpr std::size_t askedCount = 256;
    static std::array<AskedKey, askedCount> s_asked;

    static std::size_t askedPlace(const QString &key)
    {
        return (reinterpret_cast<std::uintptr_t>(key.constData()) >> 4) % askedCount;
    }
    static bool isSameObject(const QString &a, const QString &b)
    {
        return a.constData() == b.constData() && a.size() == b.size();
    }

    const Reading *find(const QString &key) const
    {
        const AskedKey &asked = s_asked[askedPlace(key)];
        if (asked.id < 0 || asked.key.constData() != key.constData())
            return findByText(key);
        const Reading &reading = m_wellKnown[static_cast<std::size_t>(asked.id)];
        return reading.state & Present ? &reading : nullptr;
    }

    bool isInStep(const Reading &reading) const
    {
        if (reading.binding == 0)
            return true;
        const Binding &binding = m_bindings[reading.binding - 1u];
        return binding.bits() == binding.inStep;
    }

    QString &textOf(const Reading &reading) const
    {
        return reading.binding == 0 ? m_properties[reading.position].text
                                    : m_bindings[reading.binding - 1u].text;
    }

    const Reading *findByText(const QString &key) const;
    Reading &add(const QString &key);
    bool setOther(const Reading *reading, const QString &key, const QString &text);
    void readNumber(const Reading &reading) const;
    void followVariable(const Reading &reading) const;

    static constexpr std::size_t wellKnownCount = 36;

    std::array<Reading, wellKnownCount> m_wellKnown;
    std::vector<Binding> m_bindings;
    mutable std::vector<Property> m_properties;
    std::vector<Reading> m_others;        ///< of keys that are not well known
    QHash<QString, quint32> m_otherIndex; ///< by key: index in m_others
};

} // namespace rehearsal
