// Opens the editor of a show's first meta effect and takes its picture:
//
//   editor_picture SHOW PICTURE [ROW]
#include "MetaWidget.h"
#include "ParameterEditor.h"
#include "ShowFile.h"
#include "TableWidget.h"
#include "TestTypes.h"

#include <QApplication>
#include <QTest>

#include <cstdio>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "editor_picture SHOW PICTURE [ROW]\n");
        return 2;
    }
    rehearsal::ParameterEditor::registerAsEditor();
    rehearsal::FileFault fault;
    const auto show = rehearsal::readShow(arguments[1], allTypes(), &fault);
    if (!show || show->effects().isEmpty()) {
        std::fprintf(stderr, "there is no show to be read\n");
        return 1;
    }
    auto *form = qobject_cast<MetaWidget *>(show->effects().first()->internalGetEffectWidget());
    if (!form)
        return 1;
    form->resize(1120, 720);
    form->show();
    const bool isShown = QTest::qWaitForWindowExposed(form);
    meta::TableWidget &table = *form->m_effectTable;
    const int row = arguments.value(3, QStringLiteral("2")).toInt();
    const QModelIndex cell = table.model()->index(row, 0);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, table.visualRect(cell).center());
    QTest::qWait(50);
    return isShown && form->grab().save(arguments[2]) ? 0 : 1;
}
