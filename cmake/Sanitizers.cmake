# meta_sanitize(<target>): builds and links the target with the sanitizers named in META_SANITIZE. Its
# sources then see META_SANITIZED.
function(meta_sanitize target)
    if(META_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${META_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
        target_compile_definitions(${target} PRIVATE META_SANITIZED)
        target_link_options(${target} PUBLIC -fsanitize=${META_SANITIZE})
    endif()
endfunction()

# meta_cover(<target>): with META_FUZZ, instruments the target so that a fuzzer sees which paths it took.
function(meta_cover target)
    if(META_FUZZ)
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
        target_link_options(${target} PUBLIC -fsanitize=fuzzer-no-link)
    endif()
endfunction()
