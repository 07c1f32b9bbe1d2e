#pragma once

#include "TableParts.h"
#include "TableWidget.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>

#include <functional>
#include <memory>
#include <utility>

/// A form of a table and a line beside it, shown. The journal notes "row,column text" for each
/// edited value and "selection" for each change of the selection.
class EditingScene
{
public:
    explicit EditingScene(int rows = 3) : form(std::make_unique<QWidget>())
    {
        table = new meta::TableWidget(form.get());
        table->setGeometry(0, 0, 560, 260);
        beside = new QLineEdit(form.get());
        beside->setGeometry(0, 270, 560, 25);
        table->setColumnCount(4);
        table->setNumRows(rows);
        for (int row = 0; row < rows; ++row) {
            table->setText(row, Name, QStringLiteral("name"));
            table->setItem(row, Type, new meta::ComboTableItem(table, {"Cycle", "Fade", "Wave"}));
            table->setItem(row, Group, new meta::TableItem(table, meta::TableItem::Never, "group"));
            table->setItem(row, Priority,
                           new meta::TableItem(table, meta::TableItem::WhenCurrent, "0"));
        }
        QObject::connect(
            table, &meta::TableWidget::valueChanged, table, [this](int row, int column) {
                journal.append(
                    QStringLiteral("%1,%2 %3").arg(row).arg(column).arg(table->text(row, column)));
                if (onValue)
                    onValue();
            });
        QObject::connect(table, qOverload<int, int>(&meta::TableWidget::currentChanged), table,
                         [this](int row, int) { table->selectRow(row); });
        QObject::connect(table, qOverload<>(&meta::TableWidget::selectionChanged), table, [this] {
            if (notesSelection)
                journal.append(QStringLiteral("selection"));
        });
        form->resize(560, 300);
        form->show();
        QApplication::setActiveWindow(form.get());
        isActive = QTest::qWaitForWindowActive(form.get());
        table->setFocus();
    }

    QPoint at(int row, int column) const
    {
        return table->visualRect(table->model()->index(row, column)).center();
    }
    void click(int row, int column)
    {
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at(row, column));
    }
    void doubleClick(int row, int column)
    {
        click(row, column);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, at(row, column));
    }
    void key(Qt::Key key) { QTest::keyClick(table, key); }

    QWidget *editor(int row, int column) const
    {
        return table->indexWidget(table->model()->index(row, column));
    }
    /// The open line editor of a cell, or null.
    QLineEdit *line(int row, int column) const
    {
        return qobject_cast<QLineEdit *>(editor(row, column));
    }
    /// The open chooser of a row, or null.
    QComboBox *chooser(int row) const { return qobject_cast<QComboBox *>(editor(row, Type)); }
    QLineEdit *openName(int row)
    {
        table->setCurrentCell(row, Name);
        key(Qt::Key_F2);
        return line(row, Name);
    }
    QComboBox *openChooser(int row)
    {
        click(row, Type);
        return chooser(row);
    }

    QStringList take() { return std::exchange(journal, {}); }

    meta::TableWidget *table;
    QLineEdit *beside;
    QStringList journal;
    std::function<void()> onValue;
    bool notesSelection = false;
    bool isActive = false;
    std::unique_ptr<QWidget> form; ///< goes first: an open line writes its text then
};

inline void runQueued()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
