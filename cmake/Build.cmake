# Flags that every target of this project shares.

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
  target_compile_options(vynlib_flags INTERFACE
    $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:$<TARGET_PROPERTY:VYN_TEST_PROGRAM>>>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()
if(VYNLIB_COVERAGE)
  target_compile_options(vynlib_flags INTERFACE --coverage -O0 -fno-inline)
  target_link_options(vynlib_flags INTERFACE --coverage)
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

# vyn_quick_build(TARGET): compiles a test program without optimisation, with the headers of the test framework read once
# for all of them. What is tested keeps its own flags.
function(vyn_quick_build target)
  set_target_properties(${target} PROPERTIES VYN_TEST_PROGRAM ON)
  target_compile_options(${target} PRIVATE -O0 -g1)
  target_precompile_headers(${target} REUSE_FROM vyn_test_headers)
endfunction()

# The program that compiles those headers.
function(vyn_test_headers)
  file(WRITE ${CMAKE_BINARY_DIR}/test-headers.cpp "int main() {}\n")
  add_executable(vyn_test_headers ${CMAKE_BINARY_DIR}/test-headers.cpp)
  set_target_properties(vyn_test_headers PROPERTIES VYN_TEST_PROGRAM ON)
  target_compile_options(vyn_test_headers PRIVATE -O0 -g1)
  target_link_libraries(vyn_test_headers PRIVATE vynlib_flags GTest::gmock)
  target_precompile_headers(vyn_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endfunction()

# vyn_test(NAME SOURCES... [LIBS libraries...]): one GoogleTest program, each of its tests known to ctest.
function(vyn_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES} ${ARG_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} vynlib_flags GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  vyn_quick_build(${name})
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# vyn_shared_library(TARGET FILE-NAME): soname lib<name>.so.1, and the public functions as the only exports.
function(vyn_shared_library target name)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
endfunction()
