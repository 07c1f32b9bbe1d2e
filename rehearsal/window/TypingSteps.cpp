#include "TypingSteps.h"

#include "ShowDocument.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace rehearsal {

namespace {

constexpr int longestPauseMs = 1000;

bool isTyping(const QKeyEvent &event)
{
    if (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete)
        return true;
    return !event.text().isEmpty() && event.text().at(0).isPrint()
           && !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
}

bool isField(const QObject *widget)
{
    return qobject_cast<const QLineEdit *>(widget)
           || qobject_cast<const QAbstractSpinBox *>(widget);
}

bool isModifier(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt
           || key == Qt::Key_Meta || key == Qt::Key_AltGr;
}

} // namespace

TypingSteps::TypingSteps(ShowDocument &document, QObject *parent)
    : QObject(parent), m_document(document)
{
    qApp->installEventFilter(this);
}

bool TypingSteps::eventFilter(QObject *receiver, QEvent *event)
{
    // Each event passes here on its way to a window first, and then to a widget.
    if (!receiver->isWidgetType() || QApplication::activeModalWidget())
        return false;
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (receiver == QApplication::focusWidget() && !isModifier(key->key()))
            noteKey(receiver, isTyping(*key) && isField(receiver), key->isAutoRepeat());
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
    case QEvent::Drop: startStep(); break;
    default: break;
    }
    return false;
}

void TypingSteps::noteKey(QObject *receiver, bool isTyping, bool isRepeated)
{
    const bool isSame = m_receiver == receiver;
    const bool isTypedOn = isTyping && m_isTyping && m_sinceKey.elapsed() <= longestPauseMs;
    if (!isSame || !(isRepeated || isTypedOn))
        startStep();
    m_receiver = receiver;
    m_isTyping = isTyping;
    m_sinceKey.start();
}

void TypingSteps::startStep()
{
    m_receiver = nullptr;
    m_document.setStepToken(++m_step);
}

} // namespace rehearsal
