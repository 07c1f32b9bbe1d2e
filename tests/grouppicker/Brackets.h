#pragma once

#include <QTranslator>

/// Puts every text of the group picker in brackets, and leaves all others alone.
class Brackets : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char * /*disambiguation*/,
                      int /*n*/) const override
    {
        return QByteArray(context).startsWith("GroupPicker")
                   ? u'[' + QString::fromUtf8(source) + u']'
                   : QString();
    }
    bool isEmpty() const override { return false; }
};
