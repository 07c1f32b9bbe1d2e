# Runs Floors.cmake over small trees made here: a clean one, which it must pass, and one with a fault
# of each kind, every one of which it must report, and nothing else.
#
#   cmake -D SCRATCH=<directory to use> -P cmake/FloorsSelfTest.cmake
cmake_minimum_required(VERSION 3.25)

if(NOT SCRATCH)
    message(FATAL_ERROR "SCRATCH is not given")
endif()
file(REMOVE_RECURSE "${SCRATCH}")

# A Qt of a few empty headers.
foreach(header QtCore/QString QtCore/QtCore QtGui/QColor QtWidgets/QWidget QtWidgets/QtWidgets
        QtWidgets/6.4.2/QtWidgets/private/qwidget_p.h QtNetwork/QTcpSocket)
    file(WRITE "${SCRATCH}/qt/${header}" "")
endforeach()

# put(<tree> <file> <line>...): writes a file of these lines, given without '#include'.
function(put tree file)
    set(text "#pragma once\n")
    foreach(line IN LISTS ARGN)
        string(APPEND text "#include ${line}\n")
    endforeach()
    file(WRITE "${SCRATCH}/${tree}/${file}" "${text}")
endfunction()

function(check tree)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -D ROOT=${SCRATCH}/${tree} -D QT_HEADERS=${SCRATCH}/qt
            -P ${CMAKE_CURRENT_LIST_DIR}/Floors.cmake
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    set(result "${result}" PARENT_SCOPE)
    set(output "\n${output}" PARENT_SCOPE)
endfunction()

# --- Everything that is allowed. ---

put(clean host/Effect.h <QString> <QtCore/QString> <memory>)
put(clean plugin/record/Millis.h "\"Effect.h\"" <QtCore>)
put(clean schedule/TimeResolver.h "\"record/Millis.h\"" "\"ChildTransfer.h\"")
put(clean plugin/EditorView.h "\"TimeResolver.h\"")
put(clean plugin/ChildTransfer.h "\"../host/Effect.h\"")
put(clean plugin/FrameRenderer.cpp "\"record/Millis.h\"" "\"moc_FrameRenderer.cpp\"")
put(clean editor/MetaWidget.cpp <QWidget> <QtGui/QColor> "\"toolkit/ItemTable.h\"" "\"EditorView.h\"")
put(clean editor/toolkit/ItemTable.h <QtWidgets/QWidget> "\"GroupPickerDialog.h\"")
put(clean grouppicker/GroupPickerDialog.h <QWidget>)
put(clean dialogs/FileDialogsMac.mm <AppKit/AppKit.h> <QWidget>)
put(clean plugin/MetaEffect.h "\"TimeResolver.h\"" "\"GroupPickerDialog.h\"")
put(clean plugin/CreateEffect.cpp "\"MetaEffect.h\"")
put(clean rehearsal/framework/Player.h "\"Effect.h\"")
put(clean rehearsal/effects/Solid.h "\"Player.h\"")
put(clean rehearsal/show/Show.h "\"Solid.h\"" "\"framework/Player.h\"")
put(clean rehearsal/show/Show.cpp "\"Show.h\"" <QString>)
put(clean rehearsal/app/main.cpp "\"show/Show.h\"" <QWidget> <QTcpSocket> "\"main.moc\"")
put(clean tests/tst_anything.cpp "\"MetaEffect.h\"" "\"Show.h\"")
put(clean build/dev/Generated.cpp "\"Nothing.h\"")
file(APPEND "${SCRATCH}/clean/host/Effect.h" "// #include <QWidget>\nint a[] = {0}; char c = '\\;\n")

check(clean)
if(NOT result EQUAL 0)
    message(SEND_ERROR "the clean tree did not pass:${output}")
endif()

# --- One fault of each kind; it stands in the line that is named. ---

file(COPY "${SCRATCH}/clean/" DESTINATION "${SCRATCH}/faulty")
set(expected "")
macro(expect file line reason)
    list(APPEND expected "${file}:${line}: ${reason}")
endmacro()

put(faulty plugin/record/Up.h "\"Effect.h\"" "\"TimeResolver.h\"")
expect(plugin/record/Up.h 3 "floor 1 includes schedule/TimeResolver.h of floor 2")

put(faulty host/Up.h "\"record/Millis.h\"")
expect(host/Up.h 2 "the host side includes plugin/record/Millis.h of the plugin side")

put(faulty schedule/Up.cpp "\"../editor/toolkit/ItemTable.h\"")
expect(schedule/Up.cpp 2 "floor 2 includes editor/toolkit/ItemTable.h of floor 3")

put(faulty editor/Up.h "<MetaEffect.h>")
expect(editor/Up.h 2 "floor 3 includes plugin/MetaEffect.h of floor 4")

put(faulty rehearsal/effects/Up.h "\"Show.h\"")
expect(rehearsal/effects/Up.h 2 "floor 2 includes rehearsal/show/Show.h of floor 3")

put(faulty rehearsal/app/Across.cpp "\"schedule/TimeResolver.h\"")
expect(rehearsal/app/Across.cpp 2 "the rehearsal side includes schedule/TimeResolver.h of the plugin side")

put(faulty plugin/MetaEffect.cpp "\"MetaEffect.h\"" "\"framework/Player.h\"")
expect(plugin/MetaEffect.cpp 3 "the plugin side includes rehearsal/framework/Player.h of the rehearsal side")

put(faulty host/Across.h "\"Player.h\"")
expect(host/Across.h 2 "the host side includes rehearsal/framework/Player.h of the rehearsal side")

put(faulty host/Widget.h "<QWidget>")
expect(host/Widget.h 2 "QWidget is of QtWidgets, but only Qt Core is allowed here")

put(faulty schedule/Widget.h "<QtWidgets/QWidget>")
expect(schedule/Widget.h 2 "QtWidgets/QWidget is of QtWidgets, but only Qt Core is allowed here")

put(faulty plugin/FrameRenderer.h "\"QColor\"")
expect(plugin/FrameRenderer.cpp 2 "FrameRenderer.h is to be included first")
expect(plugin/FrameRenderer.h 2 "QColor is of QtGui, but only Qt Core is allowed here")

put(faulty rehearsal/show/Widget.h "<QtWidgets>")
expect(rehearsal/show/Widget.h 2 "QtWidgets is of QtWidgets, but only Qt Core is allowed here")

put(faulty rehearsal/framework/Widget.h "<private/qwidget_p.h>")
expect(rehearsal/framework/Widget.h 2 "private/qwidget_p.h is of QtWidgets, but only Qt Core is allowed here")

put(faulty rehearsal/effects/Network.h "<QTcpSocket>")
expect(rehearsal/effects/Network.h 2 "QTcpSocket is of QtNetwork, but only Qt Core is allowed here")

put(faulty editor/Test.cpp "\"../tests/Support.h\"")
put(faulty tests/Support.h)
expect(editor/Test.cpp 2 "tests/Support.h is in no room")

put(faulty rehearsal/show/Show.cpp <QString> "\"Show.h\"")
expect(rehearsal/show/Show.cpp 2 "Show.h is to be included first")

put(faulty rehearsal/effects/Solid.cpp)
expect(rehearsal/effects/Solid.cpp 1 "it does not include the header of its name")

put(faulty editor/Missing.cpp "\"Missing.h\"")
expect(editor/Missing.cpp 2 "there is no Missing.h in the project")

put(faulty editor/Macro.cpp HEADER)
expect(editor/Macro.cpp 2 "cannot tell what is included")

foreach(stray attic/Old.h plugin/Stray.cpp rehearsal/Stray.h editor/deep/er/Stray.mm stray.cpp)
    put(faulty ${stray})
    expect(${stray} 1 "this file is in no room")
endforeach()

check(faulty)
list(LENGTH expected count)
if(result EQUAL 0)
    message(SEND_ERROR "the faulty tree passed")
endif()
foreach(line IN LISTS expected)
    string(FIND "${output}" "\n${line}" place)
    if(place LESS 0)
        message(SEND_ERROR "not reported: ${line}")
    endif()
endforeach()
if(NOT output MATCHES "[^0-9]${count} faults in ")
    message(SEND_ERROR "not exactly ${count} faults were reported:${output}")
endif()
