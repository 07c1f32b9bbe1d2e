#pragma once

#include "TableParts.h"
#include "TableWidget.h"

#include <QApplication>
#include <QTest>

#include <utility>

inline QString numbers(const QList<int> &list)
{
    QStringList texts;
    for (const int number : list)
        texts.append(QString::number(number));
    return texts.join(u' ');
}

/// A shown table with a row for each name, and what it tells, in order: "current row,column",
/// "selection rows", "clicked row,column,button", "value row,column" and "menu row,column".
class TableScene
{
public:
    explicit TableScene(const QStringList &names = {"a", "b", "c", "d", "e"},
                        bool selectsCurrent = true)
    {
        table.setColumnCount(4);
        table.setHorizontalHeaderLabels({"Name", "Type", "Group", "Priority"});
        for (const QString &name : names)
            append(name);
        QObject::connect(&table, qOverload<int, int>(&meta::TableWidget::currentChanged), &table,
                         [=, this](int row, int column) {
                             note("current %1,%2", row, column);
                             if (selectsCurrent)
                                 table.selectRow(row);
                         });
        QObject::connect(&table, qOverload<>(&meta::TableWidget::selectionChanged), &table, [this] {
            journal.append(QStringLiteral("selection ") + numbers(table.selectedRows()));
            rowsAtSelection.append(table.rowCount());
        });
        QObject::connect(&table,
                         qOverload<int, int, int, const QPoint &>(&meta::TableWidget::clicked),
                         &table, [this](int row, int column, int button, const QPoint &at) {
                             note("clicked %1,%2", row, column);
                             journal.last() += u',' + QString::number(button);
                             position = at;
                         });
        QObject::connect(&table, &meta::TableWidget::valueChanged, &table,
                         [this](int row, int column) { note("value %1,%2", row, column); });
        QObject::connect(&table, &meta::TableWidget::contextMenuRequested, &table,
                         [this](int row, int column, const QPoint &at) {
                             note("menu %1,%2", row, column);
                             position = at;
                         });
        table.resize(520, 300);
        table.show();
        QApplication::setActiveWindow(&table);
        isActive = QTest::qWaitForWindowActive(&table);
    }

    void append(const QString &name)
    {
        const int row = table.rowCount();
        table.setNumRows(row + 1);
        table.setText(row, Name, name);
        table.setItem(row, Type, new meta::ComboTableItem(&table, {"Cycle", "Wave"}));
        table.setItem(
            row, Group,
            new meta::TableItem(&table, meta::TableItem::Never, name + QStringLiteral(" group")));
        table.setItem(row, Priority,
                      new meta::TableItem(&table, meta::TableItem::WhenCurrent, "0"));
    }

    QPoint at(int row, int column) const
    {
        return table.visualRect(table.model()->index(row, column)).center();
    }
    QPoint below() const { return {20, table.viewport()->height() - 5}; }
    QPoint beside() const { return {table.viewport()->width() - 5, 10}; }

    void press(const QPoint &where, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(table.viewport(), button, modifiers, where);
    }
    void release(const QPoint &where, Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseRelease(table.viewport(), button, modifiers, where);
    }
    void click(int row, int column, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton)
    {
        press(at(row, column), button, modifiers);
        release(at(row, column), button, modifiers);
    }
    void drag(int fromRow, int toRow, Qt::KeyboardModifiers modifiers)
    {
        press(at(fromRow, Group), Qt::LeftButton, modifiers);
        const int step = toRow < fromRow ? -1 : 1;
        for (int row = fromRow; row != toRow + step; row += step) {
            const QPoint where = at(row, Group) + QPoint(3, 3);
            QMouseEvent move(QEvent::MouseMove, where, table.viewport()->mapToGlobal(where),
                             Qt::NoButton, Qt::LeftButton, modifiers);
            QApplication::sendEvent(table.viewport(), &move);
        }
        release(at(toRow, Group), Qt::LeftButton, modifiers);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&table, key, modifiers);
    }

    QString current() const
    {
        return QStringLiteral("%1,%2").arg(table.currentRow()).arg(table.currentColumn());
    }
    QString selected() const { return numbers(table.selectedRows()); }
    QString column(int column) const
    {
        QStringList texts;
        for (int row = 0; row < table.rowCount(); ++row)
            texts.append(table.text(row, column));
        return texts.join(u' ');
    }
    QStringList take() { return std::exchange(journal, {}); }

    QStringList journal;
    QList<int> rowsAtSelection; ///< the row count at each "selection"
    QPoint position;            ///< of the last "clicked" or "menu"
    bool isActive = false;
    meta::TableWidget table; ///< goes first

private:
    void note(const char *form, int row, int column)
    {
        journal.append(QString::fromLatin1(form).arg(row).arg(column));
    }
};
