# meta_find_appkit(<reason>): finds the free implementation of AppKit and what it takes to use its
# panels, and makes the target meta_appkit of it. Sets <reason> to what is missing, or to "".
function(meta_find_appkit reason)
    set(${reason} "" PARENT_SCOPE)
    if(META_SANITIZE)
        set(${reason} "not with sanitizers, which see the faults of the libraries it runs on"
            PARENT_SCOPE)
        return()
    endif()

    foreach(program g++ gnustep-config make Xvfb xdotool)
        string(MAKE_C_IDENTIFIER "META_${program}" variable)
        find_program(${variable} ${program})
        mark_as_advanced(${variable})
        if(NOT ${variable})
            set(${reason} "${program} is not installed" PARENT_SCOPE)
            return()
        endif()
    endforeach()

    execute_process(COMMAND ${META_gnustep_config} --variable=GNUSTEP_SYSTEM_LIBRARY
        OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(GLOB backends "${folder}/Bundles/libgnustep-*.bundle")
    if(NOT backends)
        set(${reason} "AppKit has no backend (on Debian: gnustep-back-cairo)" PARENT_SCOPE)
        return()
    endif()

    execute_process(COMMAND ${META_gnustep_config} --objc-flags
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
    execute_process(COMMAND ${META_gnustep_config} --gui-libs
        OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    separate_arguments(libraries UNIX_COMMAND "${libraries}")
    set(folders ${flags})
    list(FILTER folders INCLUDE REGEX "^-I/")
    list(TRANSFORM folders REPLACE "^-I" "")
    list(FILTER flags INCLUDE REGEX "^-[Df]")

    # Its Objective-C runtime is that of GCC, whatever compiles the C++.
    list(TRANSFORM folders PREPEND "-I" OUTPUT_VARIABLE includes)
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/cocoa.mm "#import <Cocoa/Cocoa.h>\n")
    execute_process(COMMAND ${META_g__} ${flags} ${includes} -w -fsyntax-only
        ${CMAKE_CURRENT_BINARY_DIR}/cocoa.mm RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
    if(failed)
        set(${reason} "g++ cannot compile Objective-C++ (on Debian: gobjc++ libgnustep-gui-dev)"
            PARENT_SCOPE)
        return()
    endif()
    set(CMAKE_OBJCXX_COMPILER ${META_g__} CACHE FILEPATH "Compiler of Objective-C++")

    add_library(meta_appkit INTERFACE)
    target_compile_options(meta_appkit INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${flags}>")
    target_include_directories(meta_appkit SYSTEM INTERFACE ${folders})
    target_link_libraries(meta_appkit INTERFACE ${libraries})
endfunction()
