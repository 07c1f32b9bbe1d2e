#pragma once

#include "TimelineColours.h"
#include "TimelineGeometry.h"
#include "TimelineModel.h"

#include <QAbstractScrollArea>
#include <QPixmap>
#include <QRegion>

#include <vector>

namespace rehearsal {

/// Shows the children of an effect as bars over time, with their fades and links, and a playhead.
/// It edits nothing. Times are ms from the start of the shown effect.
class TimelineView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit TimelineView(QWidget *parent = nullptr);
    ~TimelineView() override;

    /// Shows another effect, not owned; null shows none. It may be deleted at any time: what is
    /// shown stays until the next refresh(). Not to be called while an effect is at work.
    /// @param keepView the effect takes the place of the one before: zoom, scroll, what is unfolded
    /// and what is highlighted stay
    void setEffect(Effect *top, bool keepView = false);
    /// Reads the effect anew and keeps the view. Not to be called while an effect is at work.
    void refresh();

    /// Puts the playhead and shows which children run now. Follows it out of the visible part, page
    /// by page, unless the user is dragging or has scrolled away from it.
    void setPosition(quint32 ms);
    quint32 position() const { return m_position; }

    /// One lane for each child, with a column of names; or as few lanes as possible.
    void setPacked(bool packed);
    bool isPacked() const { return m_isPacked; }

    void zoomIn();
    void zoomOut();
    /// All of the effect; stays so until the user zooms.
    void zoomToFit();
    double pixelsPerMs() const { return m_geometry.pixelsPerMs; }

    /// The child whose links are strong; empty for none. Scrolls to it.
    void setHighlighted(const EidPath &path);
    EidPath highlighted() const;
    void setUnfolded(const EidPath &path, bool unfolded);
    bool isUnfolded(const EidPath &path) const;

    const TimelineModel &model() const { return m_model; }
    /// In the viewport's coordinates; null for a child that is folded away or not there.
    QRect barRect(const EidPath &path) const;
    /// The triangle that unfolds; null if there is none.
    QRect disclosureRect(const EidPath &path) const;
    bool isRunningShown(const EidPath &path) const;
    LinkKind linkKind(const EidPath &path, Edge edge) const;
    /// -1 for a child that is folded away or not there.
    int lane(const EidPath &path) const;
    /// May be negative, left of time zero.
    qint64 timeAt(int x) const;
    int xAt(qint64 ms) const;
    QRect rulerRect() const { return m_geometry.ruler(); }
    /// Empty while the names stand in the bars.
    QRect headerRect() const { return m_geometry.header(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The user wants to be at this time.
    void seekRequested(quint32 ms);
    /// What is known of the child under the pointer, in one line; empty when there is none.
    void childHovered(const QString &details);
    void packedChanged(bool packed);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void rebuild(const EidPath &highlighted);
    void layOut();
    void updateGeometryAndBars();
    void updateScrollBars();
    void repaintAll();
    void renderCache();

    double fittingScale() const;
    qint64 shownLength() const;
    void zoomAround(double factor, int x);
    void zoomAroundMiddle(double factor);

    int rowAt(QPoint position) const;
    void highlightRow(int row);
    void moveHighlight(int step);
    bool handleFoldKey(int key);
    void toggle(int row);
    void unfoldRow(int row, bool unfolded);
    void hoverRow(int row);
    void ensureVisible(int row);
    void seekTo(int x);

    bool isPlaying(int row) const;
    std::vector<int> updateRunning();
    void repaintRow(int row);
    QRect playheadStrip() const;
    void paintPlayhead(QPainter &painter) const;
    void follow(int oldX);

    TimelineModel m_model;
    TimelineGeometry m_geometry;
    TimelineColours m_colours;
    QPointer<Effect> m_top;
    std::vector<char> m_running; ///< for every row, as shown; up to date for those in sight
    quint32 m_position = 0;
    int m_highlighted = -1;
    int m_hovered = -1;
    bool m_isPacked = false;
    bool m_isFitted = true;
    bool m_isSeeking = false;
    bool m_isPressed = false;
    QPixmap m_cache;
    QRegion m_stale; ///< of the cache
};

} // namespace rehearsal
