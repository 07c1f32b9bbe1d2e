#pragma once

#include "Effect.h"
#include "StageMap.h"

namespace rehearsal {

/// What the host's own effect types have in common: a cycle time ("cycletime", ms, 1000 unless
/// set), an editor made by the program, and drawing on the lights of the group that "gid" names.
///
/// No property text is refused: a level is drawn as the nearest value from 0 to 1, and what is not
/// a number as 0. With a cycle time of 0 an effect stands at the start of its first cycle.
class StageEffect : public Effect
{
    Q_OBJECT

public:
    /// One widget, as itself and as an object: only the program knows that it is one.
    struct Editor
    {
        QWidget *widget = nullptr;
        QObject *object = nullptr;
    };
    using EditorMaker = Editor (*)(Effect &effect);

    ~StageEffect() override;

    /// Says how editors are made. Without a maker, as at first, the effects have no editor.
    static void setEditorMaker(EditorMaker maker);

    unsigned long getCycleTime() override;
    QString getVersion() override;
    int getBuildNumber() override;
    /// The same widget again for as long as nobody deletes it.
    QWidget *internalGetEffectWidget() override;
    /// Emits cycleTimeChanged() when the cycle time has another value than before.
    void internalSetProperty(const QString &key, const QString &value) override;

protected:
    StageEffect(MapModel *mapModel, const QString &type);

    /// The number of the present cycle, counted from 0.
    quint32 cycleNumber() const;
    /// Milliseconds since the present cycle began; 0 with a cycle time of 0.
    quint32 elapsedInCycle() const;
    /// How much of the present cycle is over: 0 up to, not including, 1.
    double cyclePhase() const;
    /// How much of the time from the effect's begin to its end is over: 0 to 1, and 1 ever after.
    /// Where the end is not after the begin: of the present cycle.
    double spanProgress() const;
    /// The cycle time that cyclePhase() counts with, ms.
    quint32 cycleTime() const { return m_cycleTime; }

    /// Draws every light of the group with the level that `levelOf(index, count)` gives for its
    /// place in the group. A synchronized group shows the first one's level on all lights, a leaf
    /// group is one light. Without a group nothing is drawn.
    template<typename LevelOf>
    void draw(LevelOf levelOf) const
    {
        const StageGroup *group = this->group();
        if (!group || group->lights().isEmpty())
            return;
        const QList<StageLight *> &lights = group->lights();
        const double transparency = clampedToUnit(m_transparency);
        if (group->groupType() == LeafGroup) {
            lights.first()->draw(clampedToUnit(levelOf(0u, 1u)), transparency, m_priority);
            return;
        }
        const auto count = static_cast<quint32>(lights.size());
        const bool isSynchronized = group->groupType() == SynchronizedGroup;
        double level = clampedToUnit(levelOf(0u, count));
        for (quint32 index = 0; index < count; ++index) {
            if (index > 0 && !isSynchronized)
                level = clampedToUnit(levelOf(index, count));
            lights[static_cast<qsizetype>(index)]->draw(level, transparency, m_priority);
        }
    }

private:
    const StageGroup *group() const;

    // Not a number gives 0.
    static double clampedToUnit(double value)
    {
        if (!(value > 0.0))
            return 0.0;
        return value < 1.0 ? value : 1.0;
    }

    quint32 m_cycleTime = 0;
    quint32 m_announcedCycleTime = 0;
    QObject *m_editor = nullptr; ///< the same as m_editorWidget
};

} // namespace rehearsal
