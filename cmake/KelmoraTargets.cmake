# One target per subsystem. Public headers live in <dir>/include/<name>/ and are visible to those
# who name the target in DEPS; everything else in <dir> is private, so an include that points
# the wrong way does not compile.

add_library(kelmora_flags INTERFACE)
target_compile_options(kelmora_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual
  -fno-math-errno)
# GCC 12 takes the parts of a std::string that is put together for memory that may overlap.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kelmora_flags INTERFACE -Wno-restrict)
endif()
if(KELMORA_SANITIZE)
  target_compile_options(kelmora_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -O1 -g)
  target_link_options(kelmora_flags INTERFACE -fsanitize=address,undefined)
endif()

if(KELMORA_FUZZ)
  target_compile_options(kelmora_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# kelmora_library(<name> SOURCES <file>... [DEPS <name>...])
function(kelmora_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(kelmora_${name} STATIC ${ARG_SOURCES})
  target_include_directories(kelmora_${name}
    PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR})
  list(TRANSFORM ARG_DEPS PREPEND kelmora_)
  target_link_libraries(kelmora_${name} PUBLIC ${ARG_DEPS} PRIVATE kelmora_flags)
endfunction()

# kelmora_test(<name> SOURCES <file>... DEPS <name>...): one GoogleTest program, one CTest entry.
# The sources may include the private headers of the directory that declares the test.
function(kelmora_test name)
  if(NOT KELMORA_TESTS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR})
  list(TRANSFORM ARG_DEPS PREPEND kelmora_)
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} kelmora_flags GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
endfunction()
