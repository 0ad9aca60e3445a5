# Targets of this project: one library a folder, one test program a folder.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(KZ_CCACHE ccache)
if(KZ_CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER "${KZ_CCACHE}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${KZ_CCACHE}")
endif()

# Flags that every target of ours gets; headers of others are system headers and stay silent.
add_library(kz_flags INTERFACE)
target_include_directories(kz_flags INTERFACE
    "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/src>"
    "$<INSTALL_INTERFACE:include/kzspackager>")
target_compile_definitions(kz_flags INTERFACE _FILE_OFFSET_BITS=64)
# These are for our own sources, not for those who build on an installed tree.
set(kz_options
    # Durations are rounded by a rule in plain double arithmetic: a fused multiply-add changes them.
    -ffp-contract=off
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
    $<$<BOOL:${KZ_WERROR}>:-Werror>)
foreach(option IN LISTS kz_options)
    target_compile_options(kz_flags INTERFACE "$<BUILD_INTERFACE:${option}>")
endforeach()
if(KZ_SANITIZE)
    target_compile_options(kz_flags INTERFACE
        -fsanitize=${KZ_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kz_flags INTERFACE -fsanitize=${KZ_SANITIZE})
endif()

# With KZ_LTO an object has both machine code and what the optimiser needs: the program is linked
# from the second, all others from the first, in a fraction of the time.
set(kz_lto_compile)
set(kz_lto_link)
if(KZ_LTO AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(kz_lto_compile -flto=auto -ffat-lto-objects)
    set(kz_lto_link -flto=auto)
    target_link_options(kz_flags INTERFACE
        "$<BUILD_INTERFACE:$<$<NOT:$<BOOL:$<TARGET_PROPERTY:KZ_IS_PROGRAM>>>:-fno-lto>>")
endif()

# kz_library(NAME SOURCES file... USES target...)
# A folder without sources yet becomes an interface target, so that others can name it.
function(kz_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    if(ARG_SOURCES)
        add_library(${name} STATIC ${ARG_SOURCES})
        target_link_libraries(${name} PUBLIC kz_flags ${ARG_USES})
        target_compile_options(${name} PRIVATE ${kz_lto_compile})
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE kz_flags ${ARG_USES})
    endif()
endfunction()

# kz_test(NAME SOURCES file... USES target...)
# Each TEST becomes a test of its own, found when the tests run.
function(kz_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    if(NOT ARG_SOURCES)
        return()
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE kz_flags ${ARG_USES} test_support GTest::gmock GTest::gtest_main)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_compile_definitions(${name} PRIVATE
        KZ_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data")
    if(KZ_COVERAGE)
        # One test a program: each process adds its counts to a hundred files when it ends.
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES TIMEOUT 1500)
        return()
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300)
endfunction()
