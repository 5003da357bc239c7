# SPDX-License-Identifier: MIT
# Flags that every target of this project shares, and what makes its test programs and shared libraries.

# The third level bounds objects whose size is known only when they are made. Older compilers have the second.
set(VYNLIB_FORTIFY 3)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
  set(VYNLIB_FORTIFY 2)
endif()

add_library(vynlib_flags INTERFACE)
target_compile_options(vynlib_flags INTERFACE
  -Wall -Wextra -Wconversion -Wshadow
  -fstack-protector-strong -fcf-protection=full)
target_link_options(vynlib_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
if(VYNLIB_WERROR)
  target_compile_options(vynlib_flags INTERFACE -Werror)
endif()
if(VYNLIB_SANITIZE)
  target_compile_options(vynlib_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vynlib_flags INTERFACE -fsanitize=address,undefined)
else()
  # Fortify needs optimisation, and the address sanitizer does its checks better.
  target_compile_options(vynlib_flags INTERFACE -U_FORTIFY_SOURCE
    $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:$<TARGET_PROPERTY:VYN_PLAIN_CALLS>>>>:-D_FORTIFY_SOURCE=${VYNLIB_FORTIFY}>)
endif()
if(VYNLIB_COVERAGE)
  # The files of a coverage run are looked for where they were compiled.
  target_compile_options(vynlib_flags INTERFACE --coverage -O0 -fno-inline)
  target_link_options(vynlib_flags INTERFACE --coverage)
else()
  # Neither the folder of the sources nor that of the build gets into the files: two of each give the same bytes.
  # Of maps that fit, GCC takes the last and Clang the shortest, so Clang is told its folder by itself.
  target_compile_options(vynlib_flags INTERFACE
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-ffile-compilation-dir=.>)
endif()
if(VYNLIB_FUZZ)
  target_compile_options(vynlib_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# vyn_read_once(TARGET): with VYNLIB_PRECOMPILE, a library's sources are compiled with the standard headers read once for
# all libraries. Each source includes what it needs all the same, for without that option it must.
function(vyn_read_once target)
  if(VYNLIB_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM vyn_standard_headers)
    # With headers that were read before, GCC 12 takes the move of a short string for an access out of bounds.
    target_compile_options(${target} PRIVATE
      $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread>)
  endif()
endfunction()

# The library that compiles those headers.
function(vyn_standard_headers)
  file(WRITE ${CMAKE_BINARY_DIR}/standard-headers.cpp "")
  add_library(vyn_standard_headers OBJECT ${CMAKE_BINARY_DIR}/standard-headers.cpp)
  target_link_libraries(vyn_standard_headers PRIVATE vynlib_flags)
  target_precompile_headers(vyn_standard_headers PRIVATE
    <algorithm> <array> <functional> <map> <memory> <optional> <set> <span> <stdexcept> <string> <string_view> <variant>
    <vector>)
endfunction()

# vyn_plain_calls(TARGET): system calls keep their plain names (no __pread_chk for pread), for programs that put functions
# of their own under these names.
function(vyn_plain_calls target)
  set_target_properties(${target} PROPERTIES VYN_PLAIN_CALLS ON)
endfunction()

# vyn_quick_build(TARGET): compiles a test program without optimisation, with the headers of the test framework read once
# for all of them. What is tested keeps its own flags.
function(vyn_quick_build target)
  vyn_plain_calls(${target})
  target_compile_options(${target} PRIVATE -O0 -g1)
  target_precompile_headers(${target} REUSE_FROM vyn_test_headers)
endfunction()

# The program that compiles those headers.
function(vyn_test_headers)
  file(WRITE ${CMAKE_BINARY_DIR}/test-headers.cpp "int main() {}\n")
  add_executable(vyn_test_headers ${CMAKE_BINARY_DIR}/test-headers.cpp)
  vyn_plain_calls(vyn_test_headers)
  target_compile_options(vyn_test_headers PRIVATE -O0 -g1)
  target_link_libraries(vyn_test_headers PRIVATE vynlib_flags GTest::gmock)
  target_precompile_headers(vyn_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endfunction()

# vyn_test(NAME SOURCES... [LIBS libraries...]): one GoogleTest program, which ctest starts once. It says what failed, and
# leaves the verdict on each of its tests in results/NAME.json.
function(vyn_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} vynlib_flags GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  vyn_quick_build(${name})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 3000
    ENVIRONMENT "GTEST_BRIEF=1;GTEST_OUTPUT=json:${CMAKE_BINARY_DIR}/results/${name}.json")
endfunction()

# vyn_start_code(FILE OUT): the compiler's own start code of that name, "" when it has none.
function(vyn_start_code file out)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${file}
    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
    set(path "")
  endif()
  set(${out} "${path}" PARENT_SCOPE)
endfunction()

# vyn_mark_branch_targets(TARGET): the linker marks a file for indirect branch tracking and shadow stacks when each of its
# parts is marked. The C library's start code (crti.o, crtn.o) is not, and a shared library needs nothing of it: it calls
# constructors of a form that no compiler emits any more. The compiler's start code does the rest.
function(vyn_mark_branch_targets target)
  vyn_start_code(crtbeginS.o begin)
  vyn_start_code(crtendS.o end)
  if(VYNLIB_SANITIZE OR VYNLIB_COVERAGE OR VYNLIB_FUZZ OR NOT begin OR NOT end)
    return()
  endif()
  # Options come before the objects, libraries after them: this order counts, for the second ends the unwind tables.
  target_link_options(${target} PRIVATE -nostartfiles ${begin})
  target_link_libraries(${target} PRIVATE ${end})
endfunction()

# vyn_shared_library(TARGET FILE-NAME): soname lib<name>.so.1, and the public functions as the only exports.
function(vyn_shared_library target name)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
  vyn_mark_branch_targets(${target})
endfunction()
