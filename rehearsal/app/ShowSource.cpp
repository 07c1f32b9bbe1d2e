#include "ShowSource.h"

#include "Console.h"
#include "ShowFile.h"

namespace rehearsal {

std::unique_ptr<Show> openShow(const QString &file, const Show::TypeSetup &types, Console &console)
{
    FileFault fault;
    std::unique_ptr<Show> show = readShow(file, types, &fault);
    if (!show) {
        console.fail(fault.message());
        return {};
    }
    constexpr qsizetype longestType = 100;
    for (const auto &[type, line] : show->unknownTypes()) {
        const FileFault unknown{
            file, line,
            QStringLiteral("effects of the unknown type \"%1\" are kept as they are")
                .arg(type.left(longestType))};
        console.warn(unknown.message());
    }
    return show;
}

} // namespace rehearsal
