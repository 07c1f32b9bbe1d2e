include(Ccache)

# A room is a folder of sources that forms one library. Its floor says what it may include: files of
# its own floor and of those below (see cmake/Floors.cmake).
#
#   meta_room(<target> SOURCES <files> HEADERS <files> LINKS <targets>)
#
# A header is first in the source of its name; those without one are compiled alone by the target
# all_verify_interface_header_sets.
function(meta_room target)
    cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;HEADERS;LINKS")
    add_library(${target} STATIC ${ROOM_SOURCES})
    set(alone ${ROOM_HEADERS})
    list(TRANSFORM ROOM_SOURCES REPLACE "[.].*" ".h" OUTPUT_VARIABLE first)
    list(REMOVE_ITEM alone ${first})
    target_sources(${target}
        PUBLIC FILE_SET HEADERS BASE_DIRS ${CMAKE_CURRENT_SOURCE_DIR} FILES ${alone}
        PRIVATE ${ROOM_HEADERS})
    set_target_properties(${target} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    target_include_directories(${target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC ${ROOM_LINKS})
    meta_harden(${target})
    meta_cover(${target})
    meta_tidy(${target} ${ROOM_SOURCES})
endfunction()

# Applies the project's warnings and the chosen sanitizers.
function(meta_harden target)
    meta_warnings(${target})
    meta_sanitize(${target})
endfunction()
