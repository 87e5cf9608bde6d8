# SPDX-License-Identifier: MIT
# How every library, program and test of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
# The headers of the libraries cost more than most sources.
set(CMAKE_UNITY_BUILD ON CACHE BOOL "Compile several sources as one")
set(CMAKE_UNITY_BUILD_BATCH_SIZE 10 CACHE STRING "How many at most")
find_package(Threads REQUIRED)

# Sources that differ between systems stand in folders of these names.
if(WIN32)
  set(VOCAFADE_SYSTEM win32)
else()
  set(VOCAFADE_SYSTEM posix)
endif()

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(VOCAFADE_CCACHE ccache)
if(VOCAFADE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Where it cannot write its cache (a home that is read-only), every compilation through it would fail.
  file(WRITE "${PROJECT_BINARY_DIR}/CMakeFiles/ccache_try.cpp" "")
  execute_process(COMMAND "${VOCAFADE_CCACHE}" "${CMAKE_CXX_COMPILER}" -c ccache_try.cpp -o ccache_try.o
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}/CMakeFiles" RESULT_VARIABLE _ccache_failed OUTPUT_QUIET ERROR_QUIET)
  if(_ccache_failed)
    message(STATUS "ccache cannot write its cache; compiling without it")
  else()
    set(CMAKE_CXX_COMPILER_LAUNCHER "${VOCAFADE_CCACHE}")
  endif()
endif()

add_library(vocafade_flags INTERFACE)
target_include_directories(vocafade_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(vocafade_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Woverloaded-virtual -Wformat=2
  # The written order of operations is the sound: no fused multiply-add.
  -ffp-contract=off
  $<$<BOOL:${VOCAFADE_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Unique symbols would pin the shared object in a host that unloads it.
  target_compile_options(vocafade_flags INTERFACE -fno-gnu-unique)
endif()
# No path of the machine that builds: the same sources give the same bytes in any folder.
target_compile_options(vocafade_flags INTERFACE
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=" "-ffile-prefix-map=${PROJECT_BINARY_DIR}/=build/")
if(VOCAFADE_SANITIZE)
  string(REPLACE ";" "," _sanitizers "${VOCAFADE_SANITIZE}")
  target_compile_options(vocafade_flags INTERFACE -fsanitize=${_sanitizers} -fno-omit-frame-pointer)
  target_link_options(vocafade_flags INTERFACE -fsanitize=${_sanitizers})
  if("undefined" IN_LIST VOCAFADE_SANITIZE)
    target_compile_options(vocafade_flags INTERFACE -fno-sanitize-recover=undefined)
  endif()
else()
  # What Debian hardens its own packages with.
  target_compile_options(vocafade_flags INTERFACE -fstack-protector-strong
    # The checked functions need the optimiser.
    "$<$<AND:$<CONFIG:Release>,$<NOT:$<BOOL:$<TARGET_PROPERTY:VOCAFADE_UNOPTIMISED>>>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  if(NOT WIN32)
    target_link_options(vocafade_flags INTERFACE "LINKER:-z,relro" "LINKER:-z,now")
  endif()
endif()
if(WIN32)
  target_compile_definitions(vocafade_flags INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN STRICT
    _WIN32_WINNT=0x0601 # what Windows 7 has
    _FILE_OFFSET_BITS=64)
  # Everything comes along, and no time stamp: the same sources give the same bytes.
  target_link_options(vocafade_flags INTERFACE -static -fstack-protector-strong "LINKER:--no-insert-timestamp")
endif()

# A static library of one folder: vocafade_library(NAME SOURCES ... [USES ...])
function(vocafade_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC vocafade_flags ${ARG_USES})
endfunction()

# A plug-in: vocafade_module(NAME SOURCES ... EXPORTS version-script OUTPUT folder name)
function(vocafade_module name)
  cmake_parse_arguments(ARG "" "EXPORTS" "SOURCES;OUTPUT" ${ARGN})
  list(GET ARG_OUTPUT 0 folder)
  list(GET ARG_OUTPUT 1 file)
  if(WIN32)
    configure_file("${PROJECT_SOURCE_DIR}/plugin/win32/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/version.rc" @ONLY)
    add_library(${name} MODULE ${ARG_SOURCES} "${ARG_EXPORTS}.def" "${CMAKE_CURRENT_BINARY_DIR}/version.rc"
      "${PROJECT_SOURCE_DIR}/plugin/unload.cpp" "${PROJECT_SOURCE_DIR}/plugin/win32/unload.cpp")
    target_link_libraries(${name} PRIVATE vocafade_instance)
    set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME "${file}" LIBRARY_OUTPUT_DIRECTORY "${folder}")
    target_link_options(${name} PRIVATE "LINKER:--exclude-all-symbols")
    return()
  endif()
  string(APPEND ARG_EXPORTS .map)
  # The last one is compiled into the module itself, since it works by being loaded and nothing refers to it.
  add_library(${name} MODULE ${ARG_SOURCES} "${PROJECT_SOURCE_DIR}/ui/platform/x11/resident_libraries.cpp")
  target_link_libraries(${name} PRIVATE vocafade_instance)
  set_target_properties(${name} PROPERTIES
    PREFIX "" OUTPUT_NAME "${file}" LIBRARY_OUTPUT_DIRECTORY "${folder}" LINK_DEPENDS "${ARG_EXPORTS}")
  target_link_options(${name} PRIVATE
    # Not LINKER:, which would split a folder's name at a comma.
    "SHELL:-Xlinker \"--version-script=${ARG_EXPORTS}\"" "LINKER:-Bsymbolic" "LINKER:--as-needed")
  if(NOT VOCAFADE_SANITIZE)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/plugin/unload.cpp")
    # The C++ library comes along, so that a host that brings another one cannot clash with it.
    target_link_options(${name} PRIVATE -static-libstdc++ -static-libgcc "LINKER:-z,defs"
                        "LINKER:--exclude-libs,ALL")
  endif()
endfunction()

# A program: vocafade_program(NAME SOURCES ... [USES ...]); it lands in the build folder's root.
function(vocafade_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vocafade_flags ${ARG_USES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
endfunction()

# Optimising the tests' own code takes longer than running it as it is, and reading GoogleTest longer than most tests: what
# they include is read once. Sources that compute much are given -O1 and SKIP_PRECOMPILE_HEADERS.
function(vocafade_compile_tests_fast name)
  set_target_properties(${name} PROPERTIES VOCAFADE_UNOPTIMISED ON)
  target_compile_options(${name} PRIVATE -O0)
  if(TARGET test_headers)
    target_compile_options(${name} PRIVATE -pthread -fPIE) # what was read once fits only where these are the same
    if(NOT name STREQUAL test_headers)
      target_precompile_headers(${name} REUSE_FROM test_headers)
    endif()
  endif()
endfunction()

# Builds every test program labelled "threads", the ones worth running under the thread sanitizer.
add_custom_target(thread_tests)
# Builds every test program but those of our own programs (labelled "programs") and those that take minutes: what runs
# inside other people's processes.
add_custom_target(plugin_side_tests)

# A GoogleTest program: vocafade_test(NAME SOURCES ... [USES ...] [LABELS ...] [TIMEOUT seconds])
function(vocafade_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;USES;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 600) # for what hangs: a machine may be busy
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vocafade_flags ${ARG_USES} GTest::gtest_main)
  vocafade_compile_tests_fast(${name})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  if(VOCAFADE_SANITIZE)
    # One run for all tests of a program: under a sanitizer its start takes longer than most of them.
    add_test(NAME ${name} COMMAND ${name})
    math(EXPR timeout "3 * ${ARG_TIMEOUT}")
    set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} LABELS "${ARG_LABELS}")
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 300
      PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
  endif()
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(thread_tests ${name})
  endif()
  if(NOT "programs" IN_LIST ARG_LABELS AND NOT "long" IN_LIST ARG_LABELS)
    add_dependencies(plugin_side_tests ${name})
  endif()
endfunction()
