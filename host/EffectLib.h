#pragma once

#include <QString>
#include <QStringList>

class Effect;

/// The host's effect factory; one object per host, never owned by an effect.
class EffectLib
{
public:
    /// Builds a complete effect, nested ones included, from the text that Effect::save() wrote.
    /// Null when the text is not exactly one effect of a known type. The caller owns the result.
    Effect *createEffect(const QString &text);

    /// Makes an effect of the named type with default properties; null for an unknown type.
    /// The caller owns the result.
    Effect *effectMaker(const QString &typeName);

    /// The type names that effectMaker() accepts.
    QStringList getEffectNames() const;

protected:
    EffectLib() = default;
    ~EffectLib() = default;
    Q_DISABLE_COPY_MOVE(EffectLib)
};
