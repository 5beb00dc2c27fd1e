# Targets of this project: one library a folder, one test program a mirrored test folder.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_GLOBAL_AUTOGEN_TARGET ON) # "autogen": all that moc makes, for tools that read the sources
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(CCACHE ccache)
if(CCACHE)
  # Paths relative to the checkout: what one clone has compiled serves the next.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
endif()

# HUB_SANITIZE: the sanitizers to build with, as -fsanitize takes them; empty for none.
set(HUB_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them")

# The presets, and with them all scripts, turn this on; for a compiler with warnings of its own it stays off.
option(HUB_WARNINGS_AS_ERRORS "Let a warning fail the build" OFF)

add_library(HubFlags INTERFACE)
target_include_directories(HubFlags INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(HubFlags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  # clang, unlike gcc, blames stable_sort's callers for what the standard library uses in it.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>
  $<$<BOOL:${HUB_WARNINGS_AS_ERRORS}>:-Werror>)
if(HUB_SANITIZE)
  set(sanitizerFlags -fsanitize=${HUB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(HubFlags INTERFACE ${sanitizerFlags})
  target_link_options(HubFlags INTERFACE ${sanitizerFlags})
endif()

# HUB_COVERAGE: whether programs count which of their lines run.
option(HUB_COVERAGE "Count which lines run" OFF)
if(HUB_COVERAGE)
  target_compile_options(HubFlags INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(HubFlags INTERFACE --coverage)
endif()

# hub_library(Name SOURCES file... DEPENDS target...): the library of the calling folder. DEPENDS names
# all that the folder may use; cmake/check_layers.py holds the includes to the same rule.
function(hub_library name)
  cmake_parse_arguments(HUB "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${HUB_SOURCES})
  target_link_libraries(${name} PUBLIC HubFlags ${HUB_DEPENDS})
endfunction()

# hub_test(Name SOURCES file... DEPENDS target... [SLOW pattern...]): a program of unit tests, each its own CTest test.
# Those that SLOW names, as --gtest_filter does, take over a second and get the label "slow".
# CTest shows a test behind the folder that its program tests: "Platform/V4l2/CaptureTest.AReaderOfNoSourceFails".
function(hub_test name)
  cmake_parse_arguments(HUB "" "" "SOURCES;DEPENDS;SLOW" ${ARGN})
  file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR}/Tests ${CMAKE_CURRENT_SOURCE_DIR})
  add_executable(${name} ${HUB_SOURCES})
  # Not optimised: the tests of all presets together take most of a build.
  target_compile_options(${name} PRIVATE -O0 -g1)
  target_link_libraries(${name} PRIVATE HubFlags ${HUB_DEPENDS} GTest::gmock GTest::gtest GTest::gtest_main)
  set(options NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST TEST_PREFIX ${folder}/)
  set(quick *)
  if(HUB_SLOW)
    list(JOIN HUB_SLOW : slow)
    set(quick *-${slow})
    gtest_discover_tests(${name} ${options} TEST_FILTER ${slow} TEST_LIST ${name}Slow
      PROPERTIES TIMEOUT 600 LABELS slow)
  endif()
  gtest_discover_tests(${name} ${options} TEST_FILTER ${quick} PROPERTIES TIMEOUT 600)
endfunction()
