#include "MessageLine.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStyle>

namespace rehearsal {

MessageLine::MessageLine(QWidget *parent)
    : QWidget(parent), m_icon(new QLabel(this)), m_text(new QPlainTextEdit(this))
{
    constexpr int lines = 5;
    // A text box and no label, because long file names are to be broken anywhere.
    m_text->setReadOnly(true);
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->viewport()->setAutoFillBackground(false);
    m_text->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_text->setTabChangesFocus(true);
    m_text->document()->setDocumentMargin(0);
    m_text->setFixedHeight((lines)*m_text->fontMetrics().lineSpacing());
    m_text->setAccessibleName(tr("Message"));
    m_icon->setFixedWidth(style()->pixelMetric(QStyle::PM_ButtonIconSize));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_icon, 0, Qt::AlignTop);
    layout->addWidget(m_text, 1, Qt::AlignTop);
}

void MessageLine::showFault(const QString &text)
{
    put(text, true);
}

void MessageLine::showResult(const QString &text)
{
    put(text, false);
}

void MessageLine::clear()
{
    put({}, false);
}

QString MessageLine::text() const
{
    return m_text->toPlainText();
}

void MessageLine::put(const QString &text, bool isFault)
{
    m_isFault = isFault;
    m_text->setPlainText(text);
    const QStyle::StandardPixmap icon =
        isFault ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    m_icon->setPixmap(text.isEmpty() ? QPixmap()
                                     : style()->standardIcon(icon).pixmap(m_icon->width()));
}

} // namespace rehearsal
