#include "EffectPictures.h"

namespace meta::pictures {

namespace {

// clang-format off
const char *const openCircleXpm[] = {
    "8 8 2 1",
    "# c #000000",
    ". c #c0c0c0",
    "...##...",
    ".##..##.",
    ".#....#.",
    "#......#",
    "#......#",
    ".#....#.",
    ".##..##.",
    "...##...",
};

const char *const closedCircleXpm[] = {
    "8 8 2 1",
    "# c #000000",
    ". c #c0c0c0",
    "...##...",
    ".######.",
    ".######.",
    "########",
    "########",
    ".######.",
    ".######.",
    "...##...",
};

const char *const linkXpm[] = {
    "7 7 3 1",
    " \tc None",
    ".\tc #FFFFFF",
    "+\tc #000000",
    "  ...  ",
    " ..+.  ",
    "..+....",
    ".+++++.",
    "..+....",
    " ..+.  ",
    "  ...  ",
};

const char *const cycleXpm[] = {
    "10 10 3 1",
    " \tc None",
    ".\tc #FFFFFF",
    "+\tc #000000",
    "     ...  ",
    "    ..+.  ",
    " ....+... ",
    "..+.++++..",
    ".+...+..+.",
    ".+. ..+.+.",
    ".+.  ...+.",
    ".+......+.",
    "..++++++..",
    " ........ ",
};
// clang-format on

} // namespace

// A pixmap must not outlive the application that it was made in, and none can be made before there
// is one; these are made late and never destroyed.
const QPixmap &openCircle()
{
    static const auto *const picture = new QPixmap(openCircleXpm);
    return *picture;
}

const QPixmap &closedCircle()
{
    static const auto *const picture = new QPixmap(closedCircleXpm);
    return *picture;
}

const QPixmap &link()
{
    static const auto *const picture = new QPixmap(linkXpm);
    return *picture;
}

const QPixmap &cycle()
{
    static const auto *const picture = new QPixmap(cycleXpm);
    return *picture;
}

} // namespace meta::pictures
