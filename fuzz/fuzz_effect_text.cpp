// Text as it comes from the clipboard: it is one effect or none, and an effect that was made of it
// is saved in a form that gives the same effect again.

#include "Effect.h"
#include "Require.h"
#include "TestTypes.h"

#include <QTextStream>

namespace {

QString savedText(Effect &effect)
{
    QString text;
    QTextStream stream(&text);
    effect.save(stream);
    stream.flush();
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    rehearsal::Show show(allTypes());
    EffectLib &library = show.factory();
    const std::unique_ptr<Effect> effect(library.createEffect(text));
    if (!effect)
        return 0;
    const QString saved = savedText(*effect);
    const std::unique_ptr<Effect> again(library.createEffect(saved));
    require(again != nullptr, "a saved effect can be read");
    requireSame(saved, savedText(*again),
                "an effect that was read again is saved as the same text");
    return 0;
}
