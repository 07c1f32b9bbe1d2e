# meta_warnings(<target>): the warnings that every target of the project is built with.
function(meta_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        $<$<BOOL:${META_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
