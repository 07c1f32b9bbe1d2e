#pragma once

#include "ChildRoster.h"
#include "EditorContext.h"
#include "Effect.h"
#include "FrameRenderer.h"
#include "LinkLegality.h"
#include "Millis.h"
#include "TimeResolver.h"

#include <memory>
#include <optional>
#include <vector>

class Group;
class Light;
class QPoint;

namespace meta {
class Editor;
}

/// A composite effect: it holds child effects of any type, each on its own light group, gives each
/// its begin and end, plays and blends them, and lasts as long as the last of them.
///
/// The children are owned. Times are ms from the meta effect's own start.
class MetaEffect : public Effect, private meta::EditorPort
{
    Q_OBJECT

public:
    MetaEffect(MapModel *mapModel, unsigned long arg);
    ~MetaEffect() override;

    // --- What the host calls. ---

    /// End minus begin, modulo 2^32, ms.
    unsigned long getCycleTime() override;
    QString getVersion() override;
    int getBuildNumber() override;
    /// Whether this effect or any child, at any depth, has unsaved changes.
    bool isDirty() override;
    /// The restart itself happens in the next frame.
    void resetStartTime() override;
    void init() override;
    void internalUpdateLights() override;
    QWidget *internalGetEffectWidget() override;
    /// Every child's saved text, in list order, with nothing between.
    void internalSave(QTextStream &stream) override;
    void internalSetProperty(const QString &key, const QString &value) override;
    /// The children's level is one deeper.
    void setLevel(int level) override;
    /// Takes the child over. Null is ignored.
    void addChild(Effect *child) override;

    /// Makes every child ready, or stops it; in list order.
    void initChildren();
    void stopChildren();

    // --- Looking up. ---

    /// The first child, in list order, with that eid; null if there is none. An eid has 32 bits;
    /// here and below a larger number matches nothing.
    Effect *getEffect(unsigned long eid) const;
    /// The children, in list order; the list is the caller's, the effects are not.
    EffectList getEffects() const;
    /// The uid of the first group of that name; 0 for "None", even if a group is called so, and for
    /// a name that no group has.
    unsigned long getGID(const QString &name) const override;
    /// Whether `edited` may take `candidate` as a link target; see LinkLegality.
    bool legalToLink(Effect *edited, Effect *candidate);

    // --- Children as text. ---

    /// Writes the selected children.
    void copyEffect(QTextStream &stream);
    /// The same, and deletes each of them.
    void cutEffect(QTextStream &stream);
    /// Adds a child for every readable piece of the text, under a new eid and a new name, and
    /// resolves all times. Unreadable pieces are skipped. Links keep the eids they have.
    void pasteEffect(QString &text);

    // --- The editor. While it is not open, these do nothing. ---

    /// Fills a row of the table from the child. Null is ignored.
    void addToWidget(Effect *child, int row);
    /// The row of the child with that eid; -1 if there is none.
    int getRow(unsigned long eid) override;
    /// Makes all rows anew.
    void refreshMetaWidget();
    /// Shows the parameters and times of the selected child; blanks them when none or several are
    /// selected, and in the latter case empties the selection.
    void refreshWidgets() override;
    /// Fills one group of the time panel from the child. Null is ignored.
    void refreshStartTimeEditor(Effect *child);
    void refreshEndTimeEditor(Effect *child);
    /// Enables those widgets of the time panel that belong to one rule.
    void refreshStartFixed();
    void refreshStartLinked();
    void refreshEndFixed();
    void refreshEndLinked();
    void refreshEndCycles();

public slots:
    // The order of the slots is part of the interface.
    void handleCycleTimeChanged(unsigned long cycleTime);
    void removeFromTable(unsigned long eid);
    void deleteEffect(Effect *child);
    void handleCutEffect();
    void handleCopyEffect();
    void handlePasteEffect();
    void handleDeleteEffect();
    void handleValueChanged(int row, int column);
    void handleCurrentChanged(int row, int column);
    void handleSelectionChanged();
    void handleSharedPropertyChanged(int row, int column);
    void handleClicked(int row, int column, int button, const QPoint &pos);
    void handleHeaderClicked(int column);
    void handleContextMenuRequested(int row, int column, const QPoint &pos);
    void handleNewEffectClicked();
    void handleDeleteSelectedEffectsClicked();
    void changeEffectType(Effect *child, const QString &newType) override;
    void startFixedToggled(bool on);
    void startLinkedToggled(bool on);
    void startFixedTimeChanged(const QString &text);
    void startLinkStartToggled(bool on);
    void startLinkEndToggled(bool on);
    void startLinkEffectActivated(int index);
    void startLinkOffsetChanged(const QString &text);
    void endFixedToggled(bool on);
    void endLinkedToggled(bool on);
    void endCyclesToggled(bool on);
    void endFixedTimeChanged(const QString &text);
    void endLinkStartToggled(bool on);
    void endLinkEndToggled(bool on);
    void endLinkEffectActivated(int index);
    void endLinkOffsetChanged(const QString &text);
    void endCyclesChanged(int value);
    /// Recomputes every child's begin and end from its rules.
    void updateEffectTimes() override;
    /// Resolves one child within a pass; nothing if it was resolved since the pass began.
    void updateEffectTime(Effect *child);
    /// Recomputes the own end as the latest end among the children and announces a change.
    void updateEndTime() override;
    void resizeTable();

signals:
    /// The own end is now at `end` ms.
    void endTimeChanged(unsigned long end);

protected:
    /// The own light group as the last init() found it; null for none. It is the map's, and may be
    /// gone when the map has lost it since.
    Group *group() const { return m_group; }
    /// The children that are cut, copied and deleted: those selected in the open editor, which
    /// selects one at most.
    EffectList &selection() { return m_roster.selection(); }

private:
    /// Nothing for a number that is no eid.
    static std::optional<quint32> asEid(unsigned long number);
    meta::Millis latestEnd() const;
    void takeEnd(meta::Millis newEnd);
    void adopt(Effect &child) override;
    void setDirty(bool dirty) override;
    meta::EditorContext editorContext();
    void forgetEditor();

    bool m_isPasting = false; ///< the editor shows the last of several new children, not each
    bool loop = true;
    double brightness = 1.0;
    Group *m_group = nullptr;
    std::vector<Light *> m_lights; ///< every light of the map; they are the map's
    meta::ChildRoster m_roster;
    meta::ChildrenByEid m_childrenByEid;
    meta::TimeResolver m_resolver{m_roster, m_childrenByEid};
    meta::LinkLegality m_legality{m_roster, m_childrenByEid};
    meta::FrameRenderer m_renderer{m_roster};
    std::unique_ptr<meta::Editor> m_editor; ///< null while the editor is not open
};
