#pragma once

#include "Effect.h"
#include "PropertyStore.h"
#include "VerbatimText.h"

#include <functional>
#include <vector>

/// The host's own access to an effect: what no plug-in sees.
class EffectHost
{
public:
    using Observer = std::function<void(const QString &key, const QString &text)>;

    /// Every property in order of arrival, as it would be saved.
    static std::vector<rehearsal::PropertyStore::Property> properties(const Effect &effect);

    /// Declares an editable unsigned property kept in `*bound`; not owned, lives as long as the
    /// effect.
    static void addPropertyULong(Effect &effect, const QString &key, quint32 defaultValue,
                                 quint32 *bound);

    /// Whether the effect takes nested effects.
    static bool holdsEffects(const Effect &effect);
    static int level(const Effect &effect);

    /// The effects that the effect holds, in its order; no deeper ones. Not to be asked for while
    /// the effect is at work.
    static std::vector<Effect *> nested(Effect &effect);

    /// While one lives, effects are saved as they were defined: with the "transparency" and the
    /// "priority" that they were given outside frames, whatever playback wrote over them.
    class SavingDefinitions
    {
    public:
        SavingDefinitions();
        ~SavingDefinitions();
        Q_DISABLE_COPY_MOVE(SavingDefinitions)

    private:
        bool m_outer;
    };

    /// Called after every real change of a property; one observer an effect, an empty one removes
    /// it.
    static void setObserver(Effect &effect, Observer observer);

    /// From now on the effect is saved as this text, in which only the properties that are changed
    /// from now on are written anew.
    static void setVerbatim(Effect &effect, const rehearsal::VerbatimText &text);

    /// Saved behind the effect's own content: what is nested in an effect that holds none.
    static void setNestedText(Effect &effect, const QString &text);
};
