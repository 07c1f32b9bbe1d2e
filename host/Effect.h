#pragma once

#include <QObject>
#include <QString>
#include <QTime>

#include <memory>

class EffectLib;
class MapModel;
class QTextStream;
class QWidget;

/// The host's base class of every effect.
///
/// An effect sets, once a frame, the brightness of the lights of its group. Everything an effect
/// remembers is text in its property store. Six properties are mirrored by members, in both
/// directions: "begin", "end", "fadein", "fadeout", "priority" and "transparency".
///
/// Times are unsigned 32-bit milliseconds; sums and differences wrap at 2^32. All calls arrive on
/// the host's user-interface thread. The host owns the effects that it makes until it hands them to
/// a parent with addChild().
class Effect : public QObject
{
    Q_OBJECT

public:
    /// @param mapModel the light map, not owned; it outlives the effect
    /// @param arg handed on unchanged from the exported createEffect(); its meaning is the host's
    Effect(MapModel *mapModel, unsigned long arg);
    ~Effect() override;

    // --- What an effect type overrides; the order of these declarations is fixed. ---

    /// The length of one cycle, ms.
    virtual unsigned long getCycleTime();
    virtual QString getVersion();
    virtual int getBuildNumber();
    /// Whether the effect's content changed since it was last made ready by init().
    virtual bool isDirty();
    /// Playback restarts.
    virtual void resetStartTime();
    /// The effect is fully built, after loading or whenever it must be made ready to play.
    virtual void init();
    /// Renders one frame; called by updateLights().
    virtual void internalUpdateLights();
    /// The effect's editor, built on demand; null if it has none. The effect keeps the ownership,
    /// but the host may delete the widget that it was given, though not from within a signal of the
    /// effect.
    virtual QWidget *internalGetEffectWidget();
    /// Writes the effect's own content after its properties.
    virtual void internalSave(QTextStream &stream);
    /// A property now has another text.
    virtual void internalSetProperty(const QString &key, const QString &value);
    /// Sets the nesting depth; 0 for an effect without a parent.
    virtual void setLevel(int level);
    /// Takes over a nested effect. Null is ignored.
    virtual void addChild(Effect *child);

    // --- Properties. A missing key reads as 0, false, 0.0 or empty text. ---
    // `ok`, where given, tells whether the property is there and its text is such a value.

    /// Stores a property as text; creates it if absent. Text equal to the present one changes
    /// nothing and notifies nobody.
    void setProperty(const QString &key, const QString &value);
    /// Reads an unsigned 32-bit decimal number.
    unsigned long getPropertyULong(const QString &key, bool *ok = nullptr) const;
    bool getPropertyBool(const QString &key, bool *ok = nullptr) const;
    double getPropertyDouble(const QString &key, bool *ok = nullptr) const;
    QString getPropertyString(const QString &key, bool *ok = nullptr) const;

    /// Declares an editable property whose value is kept in `*bound`, in step in both directions.
    /// `bound` is not owned and must live as long as the effect.
    void addPropertyBool(const QString &key, bool defaultValue, bool *bound);
    void addPropertyDouble(const QString &key, double defaultValue, double *bound);

    // --- Saving and playing. ---

    /// Writes the whole effect, its properties and then its internalSave(), in the host's text
    /// form.
    void save(QTextStream &stream);

    /// Restarts the effect's clock at the present moment: during a frame, the frame's time.
    void setStartTime();
    /// Sets the time of day at which the effect's time zero lies.
    void setStartTime(QTime time);
    /// Milliseconds from the start time to the current frame time; never negative.
    unsigned long getTotalElapsedTime() const;

    /// Renders the effect for the frame at `now`: records both arguments and calls
    /// internalUpdateLights(). A stopped effect draws nothing.
    void updateLights(QTime now, unsigned long arg);

    /// Whether the effect is running.
    bool getState() const;
    void setState(bool running);

    // --- Members that mirror properties; times in ms. ---

    quint32 beginTime() const { return m_beginTime; }
    quint32 endTime() const { return m_endTime; }
    quint32 fadeInTime() const { return m_fadeInTime; }
    quint32 fadeOutTime() const { return m_fadeOutTime; }
    /// "priority" modulo 2^32: "4294967295" and "-1" both give -1. 0 where it is not a number.
    int priority() const { return m_priority; }

signals:
    /// The length of a cycle changed to `cycleTime` ms.
    void cycleTimeChanged(unsigned long cycleTime);

protected:
    quint32 m_beginTime = 0;      ///< ms from the start of the parent effect
    quint32 m_endTime = 0;        ///< ms from the start of the parent effect
    quint32 m_fadeInTime = 0;     ///< ms
    quint32 m_fadeOutTime = 0;    ///< ms
    double m_transparency = 0;    ///< this effect's own: 0.0 opaque ... 1.0 invisible
    int m_priority = 0;           ///< this effect's own, on the host's scale
    int m_level = 0;              ///< nesting depth
    QTime m_frameTime{0, 0};      ///< time of day of the frame being rendered
    unsigned long m_frameArg = 0; ///< second argument of the frame call; for children, unchanged
    bool m_dirty = false;         ///< content changed since init()
    bool m_holdsEffects = false;  ///< true for an effect that takes nested effects
    QWidget *m_editorWidget = nullptr; ///< the open editor; null while there is none
    MapModel *m_mapModel;              ///< not owned; null if the effect was made without a map
    EffectLib *m_effectLib;            ///< not owned; null if the host has none

private:
    Q_DISABLE_COPY_MOVE(Effect)

    friend class EffectHost;
    friend class EffectList;
    class HostPart;
    std::unique_ptr<HostPart> m_hostPart; ///< what the host keeps for itself
};
