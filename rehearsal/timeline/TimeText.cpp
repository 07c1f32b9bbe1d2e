#include "TimeText.h"

#include <QCoreApplication>

namespace rehearsal {

QString timeText(qint64 ms, int decimals)
{
    const auto padded = [](qint64 number, int digits) {
        return QString::number(number).rightJustified(digits, u'0');
    };
    const qint64 hours = ms / 3600000;
    const qint64 minutes = ms / 60000 % 60;
    QString text =
        hours > 0 ? QString::number(hours) + u':' + padded(minutes, 2) : QString::number(minutes);
    text += u':' + padded(ms / 1000 % 60, 2);
    if (decimals > 0)
        text += u'.' + padded(ms % 1000, 3).left(decimals);
    return text;
}

QString secondsText(double ms)
{
    return QCoreApplication::translate("TimeText", "%1 s").arg(QString::number(ms / 1000, 'g', 10));
}

} // namespace rehearsal
