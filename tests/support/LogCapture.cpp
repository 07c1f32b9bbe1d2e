#include "LogCapture.h"

namespace {

QtMsgType capturedType;
QStringList capturedLines;
QtMessageHandler handlerBehind = nullptr;

void capture(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == capturedType)
        capturedLines.append(text);
    else if (handlerBehind)
        handlerBehind(type, context, text);
}

} // namespace

LogCapture::LogCapture(QtMsgType type)
{
    capturedType = type;
    capturedLines.clear();
    m_previous = qInstallMessageHandler(capture);
    handlerBehind = m_previous;
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
}

QStringList LogCapture::lines() const
{
    return capturedLines;
}
