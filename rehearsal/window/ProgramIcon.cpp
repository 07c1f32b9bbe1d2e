#include "ProgramIcon.h"

namespace rehearsal {

QIcon programIcon()
{
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/rehearsal-%1.png").arg(size));
    return icon;
}

} // namespace rehearsal
