# The fuzz targets, for the fuzz programs here and for the tests that replay their corpora. Target "ProfileRead" is
# ProfileReadTarget.cpp with the inputs of corpus/profile_read.
set(EM_FUZZ_TARGETS
  Configuration Markup ProfileRead ProfileWrite Registry Request Scan Simulation TraceFile)

set(EM_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR})

# em_fuzz_name(OUT TARGET): "ProfileRead" as "profile_read".
function(em_fuzz_name out target)
  string(REGEX REPLACE "([a-z])([A-Z])" "\\1_\\2" name ${target})
  string(TOLOWER ${name} name)
  set(${out} ${name} PARENT_SCOPE)
endfunction()

# em_fuzz_support(NAME): what the targets share, as a static library.
function(em_fuzz_support name)
  add_library(${name} STATIC
    ${EM_FUZZ_DIR}/MemoryFile.cpp
    ${EM_FUZZ_DIR}/ScannedSystem.cpp
    ${EM_FUZZ_DIR}/ScratchDirectory.cpp
    ${EM_FUZZ_DIR}/ValueFromBytes.cpp
    ${PROJECT_SOURCE_DIR}/tests/platform/ReferenceProfileReader.cpp)
  target_link_libraries(${name} PUBLIC em_module PRIVATE em_flags)
endfunction()
