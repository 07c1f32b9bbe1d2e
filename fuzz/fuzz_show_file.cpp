// A show file of any bytes: it is sound or has one fault, told in one line, and a sound show is
// saved in a form that gives the same show again.

#include "Require.h"
#include "ShowFile.h"
#include "TestTypes.h"

using rehearsal::FileFault;
using rehearsal::Show;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QString name = QStringLiteral("a.show");
    FileFault fault;
    const std::unique_ptr<Show> show = rehearsal::parseShow(text, name, allTypes(), &fault);
    if (!show) {
        require(!fault.what.isEmpty() && fault.file == name, "a fault is told");
        require(!fault.message().contains(u'\n'), "a fault is one line");
        return 0;
    }
    const QString saved = rehearsal::showText(*show);
    const std::unique_ptr<Show> again =
        rehearsal::parseShow(saved.toUtf8(), name, allTypes(), &fault);
    requireSame(again ? QString() : fault.message(), QString(), "a saved show is sound");
    requireSame(saved, rehearsal::showText(*again),
                "a show that was read again is saved as the same text");
    return 0;
}
