#include "EditorDock.h"

#include "Effect.h"

#include <QLabel>
#include <QScrollArea>
#include <QStackedWidget>

namespace rehearsal {

EditorDock::EditorDock(QWidget *parent)
    : QDockWidget(tr("Editor"), parent),
      m_pages(new QStackedWidget(this)),
      m_area(new QScrollArea(m_pages)),
      m_none(new QLabel(tr("This effect has no editor"), m_pages))
{
    setObjectName(QStringLiteral("editorDock"));
    m_area->setObjectName(QStringLiteral("editorArea"));
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_none->setAlignment(Qt::AlignCenter);
    m_none->setEnabled(false);
    m_pages->addWidget(m_area);
    m_pages->addWidget(m_none);
    setWidget(m_pages);
    tellThereIsNone();
}

EditorDock::~EditorDock()
{
    release();
}

void EditorDock::setEffect(Effect *effect)
{
    release();
    m_editor = effect ? effect->internalGetEffectWidget() : nullptr;
    if (!m_editor) {
        tellThereIsNone();
        return;
    }
    // An effect that goes takes its editor with it.
    connect(m_editor, &QObject::destroyed, this, &EditorDock::tellThereIsNone);
    m_area->setWidget(m_editor);
    m_pages->setCurrentWidget(m_area);
}

EditorMemory EditorDock::release()
{
    EditorMemory memory = EditorMemory::of(m_editor);
    if (m_editor)
        m_editor->disconnect(this);
    delete m_area->takeWidget();
    tellThereIsNone();
    return memory;
}

void EditorDock::tellThereIsNone()
{
    m_pages->setCurrentWidget(m_none);
}

} // namespace rehearsal
