#pragma once

#include "EditorMemory.h"

#include <QDockWidget>
#include <QPointer>

class Effect;
class QLabel;
class QScrollArea;
class QStackedWidget;

namespace rehearsal {

/// Holds the editor of one effect, unchanged, as the effect hands it out. Scrolls where the editor
/// needs more room than there is.
class EditorDock final : public QDockWidget
{
    Q_OBJECT

public:
    explicit EditorDock(QWidget *parent = nullptr);
    /// Lets go of the editor.
    ~EditorDock() override;

    /// Shows the effect's editor; null shows none. The effect is not owned, and may go at any time.
    void setEffect(Effect *effect);
    /// Deletes the editor that is shown, if any, and says what was seen in it. Not to be called
    /// from within a signal of the effect.
    EditorMemory release();
    /// Null while there is none.
    QWidget *editor() const { return m_editor; }

private:
    void tellThereIsNone();

    QStackedWidget *m_pages;
    QScrollArea *m_area;
    QLabel *m_none;
    QPointer<QWidget> m_editor;
};

} // namespace rehearsal
