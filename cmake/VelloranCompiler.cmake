# The one place of compiler flags. `velloran_flags` is linked by every target of the project.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
# Broken promises of our own code are asserts; they stay on where speed does not matter.
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

find_program(VELLORAN_CCACHE ccache)
if(VELLORAN_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # The cache looks into precompiled headers only when it is told that it may.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros ${VELLORAN_CCACHE})
endif()
# Last on the command line, so that it wins over the build type.
set(VELLORAN_TEST_OPTIONS -O1)

add_library(velloran_flags INTERFACE)
target_include_directories(velloran_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(velloran_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wnon-virtual-dtor -Woverloaded-virtual
    -Wextra-semi
    # Results must not hang on what the compiler contracts.
    -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # This compiler warns of overlaps and bounds inside its own std::string, where there are none.
    target_compile_options(velloran_flags INTERFACE -Wno-restrict)
    list(APPEND VELLORAN_TEST_OPTIONS -Wno-array-bounds)
endif()
if(VELLORAN_WERROR)
    target_compile_options(velloran_flags INTERFACE -Werror)
endif()
if(VELLORAN_SANITIZE)
    target_compile_options(velloran_flags INTERFACE
        -fsanitize=${VELLORAN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(velloran_flags INTERFACE -fsanitize=${VELLORAN_SANITIZE})
endif()

if(VELLORAN_OPENMP)
    find_package(OpenMP REQUIRED COMPONENTS CXX)
else()
    # The pragmas then fall silent and loops run on one thread.
    add_library(velloran_no_openmp INTERFACE)
    target_compile_options(velloran_no_openmp INTERFACE -Wno-unknown-pragmas)
    add_library(OpenMP::OpenMP_CXX ALIAS velloran_no_openmp)
endif()
