# Compiles through ccache where it is installed, unless the caller chose a launcher.
find_program(META_CCACHE ccache)
mark_as_advanced(META_CCACHE)
if(META_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${META_CCACHE})
endif()
