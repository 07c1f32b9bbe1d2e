#include "SystemVersion.h"

namespace meta {

namespace {

consteval quint32 selector(const char (&name)[5])
{
    quint32 code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<unsigned char>(name[i]);
    return code;
}

// The last packed version whose parts all fit a decimal digit for certain. Later systems go on
// counting, but their packed minor number stops at 9, and their major number at 10.
constexpr qint32 lastTrustedPacked = 0x103F;

} // namespace

QVersionNumber systemVersion(const SystemQuery &query)
{
    int numbers[] = {10, 0, 0};
    if (const std::optional<qint32> packed = query(selector("sysv"))) {
        if (*packed <= lastTrustedPacked) {
            numbers[0] = (*packed >> 12 & 0xF) * 10 + (*packed >> 8 & 0xF);
            numbers[1] = *packed >> 4 & 0xF;
        } else {
            constexpr quint32 selectors[] = {selector("sys1"), selector("sys2"), selector("sys3")};
            for (int i = 0; i < 3; ++i) {
                const std::optional<qint32> number = query(selectors[i]);
                if (!number)
                    break;
                numbers[i] = *number;
            }
        }
    }
    return QVersionNumber(numbers[0], numbers[1], numbers[2]);
}

bool hasNativeDialogs(const QVersionNumber &version)
{
    return version >= QVersionNumber(10, 7);
}

} // namespace meta
