#pragma once

#include <QString>

#include <cstdio>
#include <cstdlib>

/// Ends the program, as a crash that the fuzzer reports, unless the condition holds.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

/// The same for two texts, which are shown when they differ.
inline void requireSame(const QString &first, const QString &second, const char *what)
{
    if (first != second)
        std::fprintf(stderr, "--- first\n%s\n--- second\n%s\n", qPrintable(first),
                     qPrintable(second));
    require(first == second, what);
}
