#include "NewShow.h"

#include <QString>
#include <QStringList>

namespace rehearsal {

namespace {

constexpr int rows = 5;
constexpr int columns = 8;

// Where the groups' uids start.
constexpr int wholes = 100;
constexpr int rowGroups = 200;
constexpr int columnGroups = 300;
constexpr int singleLights = 400;

/// Rows and columns count from 1.
int lightUid(int row, int column)
{
    return (row - 1) * columns + column;
}

/// The middle of one of `count` equal parts.
QString partMiddle(int number, int count)
{
    return QString::number((number - 0.5) / count);
}

QString lightsText(int firstRow, int lastRow, int firstColumn, int lastColumn)
{
    QStringList uids;
    for (int row = firstRow; row <= lastRow; ++row) {
        for (int column = firstColumn; column <= lastColumn; ++column)
            uids.append(QString::number(lightUid(row, column)));
    }
    return uids.join(u' ');
}

QString groupLine(int uid, const QString &name, const char *type, const QString &lights)
{
    return QStringLiteral("<group uid=\"%1\" name=\"%2\" type=\"%3\" lights=\"%4\"/>\n")
        .arg(QString::number(uid), name, QString::fromLatin1(type), lights);
}

QString lightLines()
{
    QString text;
    for (int row = 1; row <= rows; ++row) {
        for (int column = 1; column <= columns; ++column) {
            text += QStringLiteral("<light uid=\"%1\" name=\"Light %2.%3\" x=\"%4\" y=\"%5\"/>\n")
                        .arg(QString::number(lightUid(row, column)), QString::number(row),
                             QString::number(column), partMiddle(column, columns),
                             partMiddle(row, rows));
        }
    }
    return text;
}

// A row is there to be run along, a column to be lit as one, and a single light to be had alone.
QString groupLines()
{
    const QString all = lightsText(1, rows, 1, columns);
    QString text = groupLine(wholes + 1, QStringLiteral("All"), "synchronized", all);
    text += groupLine(wholes + 2, QStringLiteral("All in turn"), "chasing", all);
    for (int row = 1; row <= rows; ++row)
        text += groupLine(rowGroups + row, QStringLiteral("Row %1").arg(row), "chasing",
                          lightsText(row, row, 1, columns));
    for (int column = 1; column <= columns; ++column)
        text += groupLine(columnGroups + column, QStringLiteral("Column %1").arg(column),
                          "synchronized", lightsText(1, rows, column, column));
    for (int row = 1; row <= rows; ++row) {
        for (int column = 1; column <= columns; ++column)
            text += groupLine(singleLights + lightUid(row, column),
                              QStringLiteral("Light %1.%2").arg(row).arg(column), "leaf",
                              lightsText(row, row, column, column));
    }
    return text;
}

} // namespace

QByteArray newShowText()
{
    const QString text =
        QStringLiteral("<show version=\"1\">\n<map>\n") + lightLines() + groupLines()
        + QStringLiteral("</map>\n<effect type=\"Meta Effect\">\n"
                         "<property key=\"name\">Show</property>\n</effect>\n</show>\n");
    return text.toUtf8();
}

} // namespace rehearsal
