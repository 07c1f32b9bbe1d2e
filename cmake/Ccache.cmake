# Compiles through ccache where it is installed, unless the caller chose a launcher. With precompiled
# headers ccache works only when it is told not to be particular about what is in them.
find_program(META_CCACHE ccache)
mark_as_advanced(META_CCACHE)
if(META_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${META_CCACHE})
endif()
