# Checks every #include of the project's rooms against the table of floors.
#
#   cmake -D ROOT=<tree> -D QT_HEADERS=<Qt's include directory> -P cmake/Floors.cmake
#
# A room lies on a floor of one of three sides. It may include the host, and of its own side the
# files of its floor and of those below, never one above. Of Qt a room may include Qt Core alone,
# except where the table says "any".
#
# A source includes the header of its own name first, which so proves to need nothing before it.
#
# Every fault is printed as file:line: reason, and any fault makes the script fail.
cmake_minimum_required(VERSION 3.25)

#   pattern of the files                                        side       floor  Qt
set(rooms
    "^host/[^/]+$"                                              host       0      core
    "^plugin/record/[^/]+$"                                     plugin     1      core
    "^schedule/[^/]+$"                                          plugin     2      core
    "^plugin/(FrameRenderer|ChildTransfer|EditorView)[.][^/]+$" plugin     2      core
    "^editor/([^/]+|toolkit/[^/]+)$"                            plugin     3      any
    "^grouppicker/[^/]+$"                                       plugin     3      any
    "^dialogs/[^/]+$"                                           plugin     3      any
    "^plugin/(MetaEffect|MetaEffectEditor|CreateEffect)[.][^/]+$"                plugin     4      any
    "^rehearsal/framework/[^/]+$"                               rehearsal  1      core
    "^rehearsal/effects/[^/]+$"                                 rehearsal  2      core
    "^rehearsal/show/[^/]+$"                                    rehearsal  3      core
    "^rehearsal/(playback|document)/[^/]+$"                     rehearsal  4      core
    "^rehearsal/render/[^/]+$"                                  rehearsal  4      any
    "^rehearsal/(stage|timeline)/[^/]+$"                        rehearsal  5      any
    "^rehearsal/window/[^/]+$"                                  rehearsal  6      any
    "^rehearsal/app/[^/]+$"                                     rehearsal  7      any)

# Files that are in no room and need none.
set(elsewhere "^(build|tests|bench|soak|fuzz|docs|examples|cmake|tools)/|^[.]|/[.]")

# Sets <prefix>Side, <prefix>Floor and <prefix>Qt for a file given relative to the root; they are
# empty for a file that no room claims.
function(look_up_room file prefix)
    set(rows ${rooms})
    while(rows)
        list(POP_FRONT rows pattern side floor qt)
        if(file MATCHES "${pattern}")
            break()
        endif()
        set(side "")
    endwhile()
    set(${prefix}Side "${side}" PARENT_SCOPE)
    set(${prefix}Floor "${floor}" PARENT_SCOPE)
    set(${prefix}Qt "${qt}" PARENT_SCOPE)
endfunction()

# Sets <result> to the project file that an #include of <name> in <file> finds, or to "".
function(find_in_project name file result)
    cmake_path(GET file PARENT_PATH folder)
    cmake_path(SET beside NORMALIZE "${folder}/${name}")
    set(${result} "" PARENT_SCOPE)
    if(beside IN_LIST projectFiles)
        set(${result} "${beside}" PARENT_SCOPE)
        return()
    endif()
    string(REGEX REPLACE "^([.][.]?/)+" "" name "${name}")
    string(REGEX REPLACE "([.+])" "[\\1]" name "${name}")
    foreach(candidate IN LISTS projectFiles)
        if("/${candidate}" MATCHES "/${name}$")
            set(${result} "${candidate}" PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

# Sets <result> to the modules of Qt that have the header, as a list; "" when it is not Qt's.
function(find_in_qt name result)
    set(modules "")
    if(name MATCHES "^(Qt[A-Za-z0-9]+)/" AND IS_DIRECTORY "${QT_HEADERS}/${CMAKE_MATCH_1}")
        set(modules "${CMAKE_MATCH_1}")
    else()
        file(GLOB found RELATIVE "${QT_HEADERS}"
            "${QT_HEADERS}/Qt*/${name}" "${QT_HEADERS}/Qt*/*/Qt*/${name}")
        list(TRANSFORM found REPLACE "/.*" "" OUTPUT_VARIABLE modules)
    endif()
    set(${result} "${modules}" PARENT_SCOPE)
endfunction()

# Sets <reason> to what is wrong with an #include in a file of the room given by own..., or to "".
function(judge directive file reason)
    set(${reason} "" PARENT_SCOPE)
    if(NOT directive MATCHES "^[^<\"]*([<\"])([^>\"]+)[>\"]")
        set(${reason} "cannot tell what is included" PARENT_SCOPE)
        return()
    endif()
    set(quoted FALSE)
    if(CMAKE_MATCH_1 STREQUAL "\"")
        set(quoted TRUE)
    endif()
    set(name "${CMAKE_MATCH_2}")
    if(name MATCHES "(^|/)moc_[^/]+[.]cpp$|[.]moc$") # what moc makes of the room's own headers
        return()
    endif()

    find_in_project("${name}" "${file}" target)
    if(target)
        look_up_room("${target}" their)
        if(NOT theirSide)
            set(${reason} "${target} is in no room" PARENT_SCOPE)
        elseif(NOT theirSide STREQUAL "host" AND NOT theirSide STREQUAL ownSide)
            set(${reason} "the ${ownSide} side includes ${target} of the ${theirSide} side"
                PARENT_SCOPE)
        elseif(theirFloor GREATER ownFloor)
            set(${reason} "floor ${ownFloor} includes ${target} of floor ${theirFloor}"
                PARENT_SCOPE)
        endif()
        return()
    endif()

    find_in_qt("${name}" modules)
    if(modules)
        if(ownQt STREQUAL "core" AND NOT "QtCore" IN_LIST modules)
            list(JOIN modules ", " modules)
            set(${reason} "${name} is of ${modules}, but only Qt Core is allowed here" PARENT_SCOPE)
        endif()
    elseif(quoted)
        set(${reason} "there is no ${name} in the project" PARENT_SCOPE)
    endif()
endfunction()

if(NOT IS_DIRECTORY "${ROOT}")
    message(FATAL_ERROR "ROOT is not a directory: '${ROOT}'")
endif()
if(NOT IS_DIRECTORY "${QT_HEADERS}/QtCore")
    message(FATAL_ERROR "QT_HEADERS has no QtCore: '${QT_HEADERS}'")
endif()

file(GLOB folders RELATIVE "${ROOT}" "${ROOT}/*")
list(REMOVE_ITEM folders build) # may hold anything, and much of it
set(projectFiles "")
foreach(extension h hh hpp hxx inl c cc cpp cxx mm)
    file(GLOB files RELATIVE "${ROOT}" "${ROOT}/*.${extension}")
    list(APPEND projectFiles ${files})
    foreach(folder IN LISTS folders)
        file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.${extension}")
        list(APPEND projectFiles ${files})
    endforeach()
endforeach()
list(SORT projectFiles)
set(roomFiles ${projectFiles})
list(FILTER roomFiles EXCLUDE REGEX "${elsewhere}")

set(faults 0)
macro(fault file line reason)
    message(NOTICE "${file}:${line}: ${reason}")
    math(EXPR faults "${faults} + 1")
endmacro()

foreach(file IN LISTS roomFiles)
    look_up_room("${file}" own)
    if(NOT ownSide)
        fault("${file}" 1 "this file is in no room (the rooms are in cmake/Floors.cmake)")
        continue()
    endif()
    file(READ "${ROOT}/${file}" text)
    string(REGEX REPLACE "[][;\\]" " " text "${text}") # these would join or split the lines
    string(REPLACE "\n" ";" lines "${text}")
    cmake_path(REPLACE_EXTENSION file ".h" OUTPUT_VARIABLE own)
    if(own STREQUAL file OR NOT own IN_LIST projectFiles)
        set(own "")
    endif()
    set(number 0)
    foreach(line IN LISTS lines)
        math(EXPR number "${number} + 1")
        if(line MATCHES "^[ \t]*#[ \t]*(include|import)")
            judge("${line}" "${file}" reason)
            if(own AND NOT reason)
                cmake_path(GET own FILENAME name)
                if(NOT line MATCHES "\"${name}\"")
                    set(reason "${name} is to be included first")
                endif()
            endif()
            set(own "")
            if(reason)
                fault("${file}" ${number} "${reason}")
            endif()
        endif()
    endforeach()
    if(own)
        fault("${file}" 1 "it does not include the header of its name")
    endif()
endforeach()

list(LENGTH roomFiles count)
if(faults)
    message(FATAL_ERROR "${faults} faults in ${count} files")
endif()
message(NOTICE "${count} files keep to their floors")
