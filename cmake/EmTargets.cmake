# Compiler settings and the two shapes of target that the folders use.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program(EM_CCACHE ccache)
if(EM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${EM_CCACHE})
endif()

find_package(Threads REQUIRED)

add_library(em_flags INTERFACE)
target_include_directories(em_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(em_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Unique symbols would keep the unloaded module in the process for ever.
  target_compile_options(em_flags INTERFACE -fno-gnu-unique)
  if(CMAKE_UNITY_BUILD)
    # g++ takes a .cpp that stands in another one for a header.
    target_compile_options(em_flags INTERFACE -Wno-subobject-linkage)
  endif()
elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(em_flags INTERFACE -Wthread-safety)
endif()

# em_library(NAME SOURCES... [DEPENDS targets...]): a folder of the module as a static library.
function(em_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC em_sdk ${arg_DEPENDS} Threads::Threads PRIVATE em_flags)
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
endfunction()

# em_test(NAME SOURCES... [DEPENDS targets...]): one GoogleTest program, a ctest case for each test in it.
function(em_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE em_flags em_test_support ${arg_DEPENDS} GTest::gtest_main)
  # The module looks its trace sink up by name in the running program.
  set_target_properties(${name} PROPERTIES ENABLE_EXPORTS ON)
  # Tests are built more often than they are run.
  target_compile_options(${name} PRIVATE -O0)
  target_compile_definitions(${name} PRIVATE EM_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
