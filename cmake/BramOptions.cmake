# SPDX-License-Identifier: Apache-2.0
# One interface target with the language level, warnings and Qt restrictions every target uses.
add_library(bram_options INTERFACE)
target_compile_features(bram_options INTERFACE cxx_std_23)
# For whoever works on the program and for .ci/run. Elsewhere a newer compiler or library, with a warning
# nobody has met yet, must not keep the program from being built.
option(BRAM_WERROR "Treat warnings as errors" OFF)
target_compile_options(bram_options INTERFACE
    -Wall -Wextra -Wpedantic $<$<BOOL:${BRAM_WERROR}>:-Werror> -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough
    -fstack-protector-strong)
target_compile_definitions(bram_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_FOREACH
    QT_STRICT_ITERATORS QT_DISABLE_DEPRECATED_BEFORE=0x060400
    BRAM_VERSION="${PROJECT_VERSION}")
# GCC 12 reports false null dereferences and uninitialised uses from inside coroutine frames and
# the standard library once sanitizers instrument them.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(bram_options INTERFACE -Wno-null-dereference)
    if(BRAM_SANITIZE)
        target_compile_options(bram_options INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
# Clang warns about a deprecated helper inside std::stable_sort, and puts that at our call.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(bram_options INTERFACE -Wno-deprecated-declarations)
endif()
if(BRAM_SANITIZE)
    target_compile_options(bram_options INTERFACE
        -fsanitize=${BRAM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined -g1)
    target_link_options(bram_options INTERFACE -fsanitize=${BRAM_SANITIZE})
else()
    target_compile_definitions(bram_options INTERFACE $<$<CONFIG:RelWithDebInfo>:_FORTIFY_SOURCE=2>)
    target_compile_options(bram_options INTERFACE $<$<CONFIG:RelWithDebInfo>:-g1>)
endif()
target_link_options(bram_options INTERFACE -Wl,-z,relro,-z,now -Wl,--as-needed)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
