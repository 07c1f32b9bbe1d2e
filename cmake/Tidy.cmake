# meta_tidy(<target> <sources>): with META_TIDY, clang-tidy reads each source as it is compiled, and again
# when the checks change.
function(meta_tidy target)
    if(META_TIDY)
        set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${META_CLANG_TIDY};--quiet")
        set_source_files_properties(${ARGN} PROPERTIES OBJECT_DEPENDS ${PROJECT_SOURCE_DIR}/.clang-tidy)
    endif()
endfunction()

if(META_TIDY)
    find_program(META_CLANG_TIDY clang-tidy REQUIRED)
    # What moc writes is not ours to judge; the checks would take longer over it than over its class.
    file(WRITE ${PROJECT_BINARY_DIR}/.clang-tidy "Checks: '-*,misc-misplaced-const'\n")
endif()
