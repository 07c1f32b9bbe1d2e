# Tells which tests of a build tree need not run: those that passed there with the very files that they
# would run with now.
#
#   cmake -D ROOT=<tree> -D BUILD=<build tree> -P cmake/PassedTests.cmake
#
# Prints a regular expression for ctest's -E, or nothing. What a test runs with are the programs in its
# command, its REQUIRED_FILES, the installed packages, and everything in the tree that is neither
# compiled nor prose. A test without a program of the build tree is always to run, and so is what
# searches at random, with the label "fuzz". The state of each is written to
# BUILD/passing-tests; once they have passed, the caller renames that to BUILD/passed-tests.
cmake_minimum_required(VERSION 3.25)

# Sets <result> to what tells what is in the files now from everything else. Each is read once.
function(state_of result)
    set(states "")
    foreach(file IN LISTS ARGN)
        get_property(content GLOBAL PROPERTY "content of ${file}")
        if(NOT content)
            set(content "none")
            if(EXISTS "${file}" AND NOT IS_DIRECTORY "${file}")
                file(SHA1 "${file}" content)
            endif()
            set_property(GLOBAL PROPERTY "content of ${file}" "${content}")
        endif()
        list(APPEND states "${file} ${content}")
    endforeach()
    string(SHA1 state "${states}")
    set(${result} "${state}" PARENT_SCOPE)
endfunction()

# Sets <result> to a regular expression of that very text.
function(escape result text)
    string(REGEX REPLACE "([][+.*()^$?|\\])" "\\\\\\1" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# Sets <result> to the list in a JSON array.
function(read_array result json)
    set(elements "")
    string(JSON count ERROR_VARIABLE none LENGTH "${json}")
    if(count GREATER 0)
        math(EXPR last "${count} - 1")
        foreach(i RANGE ${last})
            string(JSON element GET "${json}" ${i})
            list(APPEND elements "${element}")
        endforeach()
    endif()
    set(${result} "${elements}" PARENT_SCOPE)
endfunction()

execute_process(COMMAND ctest --show-only=json-v1 WORKING_DIRECTORY "${BUILD}"
    OUTPUT_VARIABLE json COMMAND_ERROR_IS_FATAL ANY)

file(STRINGS "${BUILD}/CMakeCache.txt" sequences REGEX "^META_SHARED_DATA:")
string(REGEX REPLACE "^[^=]*=" "" sequences "${sequences}")
if(sequences)
    set(sequences "${sequences}/*")
endif()
file(GLOB_RECURSE data LIST_DIRECTORIES FALSE "${ROOT}/*" ${sequences})
list(APPEND data /var/lib/dpkg/status) # installed packages
escape(root "${ROOT}")
list(FILTER data EXCLUDE REGEX "^${root}/([.]git|build)/|[.](cpp|h|mm|md)$")
state_of(common ${data})

escape(build "${BUILD}")
set(passed "")
if(EXISTS "${BUILD}/passed-tests")
    file(STRINGS "${BUILD}/passed-tests" passed)
endif()

set(states "")
set(names "")
string(JSON tests GET "${json}" tests)
string(JSON count LENGTH "${tests}")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
    string(JSON name GET "${tests}" ${i} name)
    string(JSON command ERROR_VARIABLE none GET "${tests}" ${i} command)
    read_array(files "${command}")
    list(FILTER files INCLUDE REGEX "^${build}/bin/")
    if(NOT files)
        continue()
    endif()
    string(JSON properties GET "${tests}" ${i} properties)
    string(JSON propertyCount LENGTH "${properties}")
    math(EXPR lastProperty "${propertyCount} - 1")
    set(isRandom FALSE)
    foreach(j RANGE ${lastProperty})
        string(JSON property GET "${properties}" ${j} name)
        string(JSON value GET "${properties}" ${j} value)
        if(property STREQUAL "REQUIRED_FILES")
            read_array(required "${value}")
            list(APPEND files ${required})
        elseif(property STREQUAL "LABELS" AND value MATCHES "\"fuzz\"")
            set(isRandom TRUE)
        endif()
    endforeach()
    if(isRandom)
        continue()
    endif()
    state_of(state ${files})
    string(SHA1 state "${state} ${common} ${command}")
    list(APPEND states "${name} ${state}")
    if("${name} ${state}" IN_LIST passed)
        list(APPEND names "${name}")
    endif()
endforeach()

list(JOIN states "\n" states)
file(WRITE "${BUILD}/passing-tests" "${states}\n")
if(names)
    list(JOIN names "|" names)
    execute_process(COMMAND ${CMAKE_COMMAND} -E echo "^(${names})$")
endif()
