# SPDX-License-Identifier: Apache-2.0

# One static library for each folder of src/. `DEPS` names what its headers may use,
# `PCH` the set of precompiled headers (the one for rooms without widgets where nothing is said).
# Sources are listed, so that a new file is a visible line in a change.
function(bram_room name)
    cmake_parse_arguments(ARG "" "PCH" "SOURCES;DEPS" ${ARGN})
    add_library(bram_${name} STATIC ${ARG_SOURCES})
    target_include_directories(bram_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(bram_${name} PUBLIC bram_options ${ARG_DEPS})
    set_target_properties(bram_${name} PROPERTIES AUTOMOC ON)
    if(ARG_PCH)
        bram_use_pch(bram_${name} ${ARG_PCH})
    else()
        bram_use_pch(bram_${name} core)
    endif()
endfunction()

# One test program for each room. `LABELS unit` runs under the sanitizers as well; `SERIAL` is for
# what needs a machine-wide resource to itself; `LAUNCHER` is a command that the program is run with.
function(bram_test name)
    cmake_parse_arguments(ARG "SERIAL" "LABEL;TIMEOUT" "SOURCES;DEPS;LAUNCHER" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE bram_options bram_testsupport ${ARG_DEPS})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    bram_use_pch(${name} tests)
    if(NOT ARG_LABEL)
        set(ARG_LABEL unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_test(NAME ${name} COMMAND ${ARG_LAUNCHER} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES LABELS ${ARG_LABEL} TIMEOUT ${ARG_TIMEOUT})
    if(ARG_SERIAL)
        set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
    endif()
endfunction()
