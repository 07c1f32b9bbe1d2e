#pragma once

#include "ChildKeys.h"
#include "EditorContext.h"
#include "EffectColumns.h"
#include "EffectFactory.h"
#include "EffectHost.h"
#include "LinkLegality.h"
#include "MetaWidget.h"
#include "StageMap.h"
#include "StubEffect.h"
#include "TableEdits.h"

#include <QComboBox>

/// The edits of the effect table without a meta effect around them, on a form that is connected to
/// nothing.
///
/// The journal notes "1 name=Sky" for a changed property of the child with eid 1, "init 1" for a
/// child made ready, and what is asked of the meta effect: "updateEffectTimes", "setDirty true".
class EditsAlone final : private meta::EditorPort
{
public:
    EditsAlone()
    {
        map.addGroup(10, QStringLiteral("Roof"), ChasingGroup, {});
        map.addGroup(11, QStringLiteral("Windows"), ChasingGroup, {});
        factory.addType(QStringLiteral("Stub"), [this](MapModel *mapModel) {
            auto *made = new StubEffect(mapModel, 77);
            made->with("starttype", 7).with("startfixedtime", 7).with("endtype", 7);
            made->with("endcyclecount", 7).with("gid", 7);
            watch(*made);
            return made;
        });
        form.m_effectComboBox->addItem(QStringLiteral("Stub"));
    }

    /// Adds a child and a row that shows its eid.
    StubEffect &add(quint32 eid)
    {
        auto *child = new StubEffect(&map, eid);
        roster.insert(child);
        addRow(QString::number(eid));
        watch(*child);
        return *child;
    }

    void addRow(const QString &eid)
    {
        const int row = table().rowCount();
        table().setNumRows(row + 1);
        table().setText(row, meta::EidColumn, eid);
    }

    meta::TableWidget &table() { return *form.m_effectTable; }

    rehearsal::StageMap map;
    rehearsal::EffectFactory factory{map};
    StubEffect effect{&map};
    meta::ChildRoster roster;
    meta::ChildrenByEid dictionary;
    meta::LinkLegality legality{roster, dictionary};
    MetaWidget form;
    const meta::EditorContext context{effect, roster, legality, &map, &factory, *this};
    meta::TableEdits edits{form, context};
    QStringList journal;

private:
    void watch(StubEffect &child)
    {
        child.journal = &journal;
        EffectHost::setObserver(child, [this, &child](const QString &key, const QString &text) {
            journal.append(child.text("eid") + u' ' + key + u'=' + text);
        });
    }

    void updateEffectTimes() override { journal.append(QStringLiteral("updateEffectTimes")); }
    void updateEndTime() override { journal.append(QStringLiteral("updateEndTime")); }
    void refreshWidgets() override { journal.append(QStringLiteral("refreshWidgets")); }
    void addChild(Effect *child) override
    {
        const QString eid = meta::keys::eid.readText(*child);
        journal.append(QStringLiteral("addChild ") + eid);
        roster.insert(child);
        roster.raiseNextEid(*child);
        addRow(eid);
    }
    void adopt(Effect &child) override
    {
        journal.append(QStringLiteral("adopt ") + meta::keys::eid.readText(child));
    }
    void changeEffectType(Effect *child, const QString &newType) override
    {
        journal.append(QStringLiteral("changeEffectType %1 to %2")
                           .arg(meta::keys::eid.readText(*child), newType));
    }
    unsigned long getGID(const QString &name) const override { return name == u"Windows" ? 11 : 0; }
    int getRow(unsigned long eid) override
    {
        for (int row = 0; row < table().rowCount(); ++row) {
            if (table().text(row, meta::EidColumn) == QString::number(eid))
                return row;
        }
        return -1;
    }
    void setDirty(bool dirty) override
    {
        journal.append(QStringLiteral("setDirty ") + QVariant(dirty).toString());
    }
};
