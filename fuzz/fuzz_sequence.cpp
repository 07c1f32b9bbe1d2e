// A sequence of any bytes: it is sound or has one fault, told in one line. The show made of it is
// timed alike with linked effects and without, keeps its times when it is resolved anew, and is
// saved in a form that gives the same show again.

#include "Effect.h"
#include "Require.h"
#include "SequenceImport.h"
#include "ShowFile.h"
#include "TestTypes.h"

using rehearsal::FileFault;
using rehearsal::ImportSummary;
using rehearsal::Show;

namespace {

std::unique_ptr<Show> import(const QByteArray &text, bool linkAdjacent, QString *message)
{
    FileFault fault;
    ImportSummary summary;
    std::unique_ptr<Show> show = rehearsal::parseSequence(text, QStringLiteral("a.xsq"), allTypes(),
                                                          {linkAdjacent}, &summary, &fault);
    *message = show ? QString() : fault.message();
    require((show == nullptr) == !fault.what.isEmpty(), "there is a show or a fault");
    require(!message->contains(u'\n'), "a fault is one line");
    return show;
}

QString timesOf(const Show &show)
{
    QString times;
    for (const Effect *effect : show.loadedEffects())
        times += effect->getPropertyString(QStringLiteral("begin")) + u' '
                 + effect->getPropertyString(QStringLiteral("end")) + u'\n';
    return times;
}

void requireSavedTextIsTheSameShow(const Show &show)
{
    const QString saved = rehearsal::showText(show);
    FileFault fault;
    const std::unique_ptr<Show> again =
        rehearsal::parseShow(saved.toUtf8(), QStringLiteral("a.show"), allTypes(), &fault);
    requireSame(again ? QString() : fault.message(), QString(), "an imported show is sound");
    requireSame(saved, rehearsal::showText(*again),
                "a show that was read again is saved as the same text");
    requireSame(timesOf(show), timesOf(*again), "a show that was read again has the same times");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QString message;
    QString linkedMessage;
    const std::unique_ptr<Show> show = import(text, false, &message);
    const std::unique_ptr<Show> linked = import(text, true, &linkedMessage);
    requireSame(message, linkedMessage, "linking changes no fault");
    if (!show)
        return 0;

    requireSame(timesOf(*show), timesOf(*linked), "linking changes no time");
    const QString before = rehearsal::showText(*linked);
    for (const char *slot : {"updateEffectTimes", "updateEndTime"})
        require(QMetaObject::invokeMethod(linked->effects()[0], slot, Qt::DirectConnection),
                "the meta effect has the slot");
    requireSame(before, rehearsal::showText(*linked), "resolving anew changes nothing");
    requireSavedTextIsTheSameShow(*show);
    requireSavedTextIsTheSameShow(*linked);
    return 0;
}
