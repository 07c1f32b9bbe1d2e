# meta_warnings(<target>): the warnings that every target of the project is built with, the same from
# g++ and clang++.
function(meta_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-sign-conversion> # not in -Wconversion of g++
        $<$<BOOL:${META_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
