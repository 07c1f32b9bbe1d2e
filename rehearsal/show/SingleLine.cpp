#include "SingleLine.h"

namespace rehearsal {

QString singleLine(QString text)
{
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator
            || c == QChar::ParagraphSeparator)
            c = u' ';
    }
    return text;
}

} // namespace rehearsal
