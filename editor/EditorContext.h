#pragma once

#include <QtGlobal>

class Effect;
class EffectLib;
class MapModel;
class QString;

namespace meta {

class ChildRoster;
class LinkLegality;

/// What the parts of the editor ask of the meta effect that they edit.
class EditorPort
{
public:
    /// Recomputes every child's begin and end.
    virtual void updateEffectTimes() = 0;
    /// Recomputes the own end.
    virtual void updateEndTime() = 0;
    /// Takes the child over.
    virtual void addChild(Effect *child) = 0;
    /// Listens to a child that takes another's place, and gives it its level.
    virtual void adopt(Effect &child) = 0;
    /// Puts a child of another type in the child's place.
    virtual void changeEffectType(Effect *child, const QString &newType) = 0;
    /// The uid of the first group of that name; 0 for "None" and for a name that no group has.
    virtual unsigned long getGID(const QString &name) const = 0;
    /// Shows what the selection holds.
    virtual void refreshWidgets() = 0;
    /// The table's row of the child with that eid, or -1.
    virtual int getRow(unsigned long eid) = 0;
    /// Whether the meta effect has unsaved changes of its own.
    virtual void setDirty(bool dirty) = 0;

protected:
    ~EditorPort() = default;
};

/// What the parts of the editor work on. All of it is lent, and outlives the editor.
struct EditorContext
{
    Effect &effect; ///< the meta effect itself
    ChildRoster &roster;
    LinkLegality &legality;
    MapModel *map;        ///< may be null
    EffectLib *effectLib; ///< may be null
    EditorPort &port;
};

} // namespace meta
