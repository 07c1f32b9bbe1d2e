#include "Require.h"

#include <QLoggingCategory>

namespace {

void handleMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    std::fprintf(stderr, "%s\n", qPrintable(text));
    require(false, "nothing is warned about");
}

} // namespace

// Called once, before the first input.
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    qInstallMessageHandler(handleMessage);
    return 0;
}
