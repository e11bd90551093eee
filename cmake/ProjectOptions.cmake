# Options and compile settings shared by every target of the project.

option(ZUCIM_BUILD_SIMULATOR "Build zucim-simulator, the CIM server for tests and demos" ${PROJECT_IS_TOP_LEVEL})
option(ZUCIM_BUILD_EXAMPLES "Build the example programs" ${PROJECT_IS_TOP_LEVEL})
option(ZUCIM_BUILD_TESTS "Build the tests" OFF)
option(ZUCIM_INSTALL "Make the install target install zuCIM" ${PROJECT_IS_TOP_LEVEL})
option(ZUCIM_BUILD_FUZZERS "Build the fuzz targets (clang only)" OFF)
option(ZUCIM_BUILD_BENCH "Build the benchmarks" OFF)
set(ZUCIM_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(ZUCIM_CCACHE ccache)
if(ZUCIM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${ZUCIM_CCACHE}")
endif()

# Freed nodes and attribute arrays are asked for their chunk after their destructor;
# -fno-lifetime-dse keeps the answer.
# g++ 12 warns falsely of overlapping copies in std::string's operator+, hence -Wno-restrict.
# A null `this` is an answered case of several members, so neither the optimiser nor the
# sanitizers may treat it as impossible.
add_library(zucim_settings INTERFACE)
target_compile_options(zucim_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -fno-delete-null-pointer-checks
  $<$<CXX_COMPILER_ID:GNU>:-fno-lifetime-dse;-Wno-nonnull-compare;-Wno-nonnull;-Wno-restrict>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-tautological-undefined-compare;-Wno-undefined-bool-conversion>)
if(ZUCIM_SANITIZE)
  target_compile_options(zucim_settings INTERFACE
    -fsanitize=${ZUCIM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # Among the sanitizers' checks g++ 12 sees uninitialised variables that are none.
  target_compile_options(zucim_settings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(zucim_settings INTERFACE -fsanitize=${ZUCIM_SANITIZE})
  if(ZUCIM_SANITIZE MATCHES "undefined")
    target_compile_options(zucim_settings INTERFACE -fno-sanitize=null)
  endif()
endif()
if(ZUCIM_BUILD_FUZZERS)
  target_compile_options(zucim_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Keeps what a shared library takes in from headers of others (templates of the standard library
# and of Boost) out of its interface: it exports names of `namespace` only.
function(zucim_export_only target namespace)
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/exports.map.in ${map} @ONLY)
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()
