#pragma once

#include "Effect.h"
#include "Millis.h"
#include "Offset.h"

#include <QString>

/// The keys under which a child of a meta effect keeps what places it in the composite.
///
/// Every value is text in the child's own property store. A key object reads and writes the typed
/// value; a missing key, or text that is not such a value, reads as 0, false, 0.0 or empty text.
namespace meta {

class TextKey
{
public:
    explicit TextKey(const char *name) : m_name(QString::fromLatin1(name)) {}

    const QString &name() const { return m_name; }
    QString readText(const Effect &effect) const { return effect.getPropertyString(m_name); }
    void writeText(Effect &effect, const QString &text) const { effect.setProperty(m_name, text); }

private:
    QString m_name;
};

/// Unsigned 32 bits, stored in decimal.
class UnsignedKey : public TextKey
{
public:
    using TextKey::TextKey;

    quint32 read(const Effect &effect, bool *ok = nullptr) const
    {
        return static_cast<quint32>(effect.getPropertyULong(name(), ok));
    }
    void write(Effect &effect, quint32 value) const { writeText(effect, QString::number(value)); }
};

/// Whole milliseconds, stored in decimal.
class TimeKey : public TextKey
{
public:
    using TextKey::TextKey;

    Millis read(const Effect &effect, bool *ok = nullptr) const
    {
        return Millis(static_cast<quint32>(effect.getPropertyULong(name(), ok)));
    }
    void write(Effect &effect, Millis time) const { writeText(effect, time.decimalText()); }
};

/// Stored as "1" or "0".
class FlagKey : public TextKey
{
public:
    using TextKey::TextKey;

    bool read(const Effect &effect) const { return effect.getPropertyBool(name()); }
    void write(Effect &effect, bool value) const
    {
        writeText(effect, value ? QStringLiteral("1") : QStringLiteral("0"));
    }
};

/// Signed milliseconds, not always whole, stored in six significant digits.
class OffsetKey : public TextKey
{
public:
    using TextKey::TextKey;

    Offset read(const Effect &effect) const { return Offset(effect.getPropertyDouble(name())); }
    void write(Effect &effect, Offset offset) const { writeText(effect, offset.storedText()); }
};

/// What "starttype" and "endtype" say. Other codes occur in files; they leave a time as it is.
namespace rule {
constexpr quint32 fixed = 0;
constexpr quint32 linked = 1;
constexpr quint32 cycles = 2; ///< ends only
} // namespace rule

/// The keys of one of a child's two rules, and of the time that the rule gives.
struct RuleKeys
{
    UnsignedKey type;     ///< a code of namespace rule
    TimeKey fixedTime;    ///< start: ms from the parent's start; end: a duration from "begin"
    UnsignedKey linkEid;  ///< eid of the child linked to
    FlagKey linkStart;    ///< true: the target's begin; false: its end
    OffsetKey linkOffset; ///< signed ms
    TimeKey resolved;     ///< ms from the parent's start
};

namespace keys {

// In the order in which a child's settings are listed everywhere; the value of a new child behind.
inline const UnsignedKey eid{"eid"};           // identifier within one parent; the parent's next
inline const TextKey name{"name"};             // free text; "Effect " and a number
inline const TextKey type{"type"};             // an effect type's name; set by the host
inline const UnsignedKey gid{"gid"};           // uid of a light group, 0 for none; picked
inline const UnsignedKey priority{"priority"}; // the host's scale and default
inline const TextKey transparency{"transparency"}; // 0.0 opaque ... 1.0 invisible; host's default
inline const TimeKey begin{"begin"};               // ms from the parent's start; resolved
inline const TimeKey end{"end"};                   // ms from the parent's start; resolved
inline const TimeKey fadeIn{"fadein"};             // ms; host's default
inline const TimeKey fadeOut{"fadeout"};           // ms; host's default

/// "starttype" "0", "startfixedtime" "0"; the link's keys have no value in a new child.
inline const RuleKeys startRule{UnsignedKey{"starttype"},     TimeKey{"startfixedtime"},
                                UnsignedKey{"startlinkeid"},  FlagKey{"startlinkstart"},
                                OffsetKey{"startlinkoffset"}, begin};
/// "endtype" "2"; the other keys have no value in a new child.
inline const RuleKeys endRule{UnsignedKey{"endtype"},     TimeKey{"endfixedtime"},
                              UnsignedKey{"endlinkeid"},  FlagKey{"endlinkstart"},
                              OffsetKey{"endlinkoffset"}, end};
inline const UnsignedKey endCycleCount{"endcyclecount"}; // the child's own cycles; "1"

// What a meta effect carries besides, of its own.
inline const TextKey loop{"loop"};             // flag; true
inline const TextKey brightness{"brightness"}; // master brightness 0.0 ... 1.0; 1.0

} // namespace keys
} // namespace meta
