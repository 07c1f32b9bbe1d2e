#pragma once

#include <QTest>

/// A row of a data table that holds only texts.
template<typename... Texts>
void textRow(const char *name, Texts... texts)
{
    (QTest::newRow(name) << ... << texts);
}
