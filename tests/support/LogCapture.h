#pragma once

#include <QStringList>
#include <QtGlobal>

/// Collects the messages of one type for as long as it lives; the others go on as before. One at a
/// time.
class LogCapture
{
public:
    explicit LogCapture(QtMsgType type);
    ~LogCapture();
    Q_DISABLE_COPY_MOVE(LogCapture)

    QStringList lines() const;

private:
    QtMessageHandler m_previous;
};
