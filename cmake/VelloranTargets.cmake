# How the folders become targets: velloran_library, velloran_program, velloran_test,
# velloran_bench, velloran_fuzzer.

include(GoogleTest OPTIONAL)

# velloran_library(<folder> SOURCES ... [DEPENDS folder...] [PRIVATE_DEPENDS target...])
# DEPENDS names folders of lower floors; PRIVATE_DEPENDS are libraries from outside.
function(velloran_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    add_library(velloran_${name} STATIC ${ARG_SOURCES})
    target_link_libraries(velloran_${name} PUBLIC velloran_flags PRIVATE ${ARG_PRIVATE_DEPENDS})
    foreach(folder IN LISTS ARG_DEPENDS)
        target_link_libraries(velloran_${name} PUBLIC velloran_${folder})
    endforeach()
endfunction()

# velloran_test(<folder> test.cpp... [DEPENDS target...]): one binary for tests/<folder>; the
# library of the same name and the test support are linked. Tests with Slow in their name (they
# look at the clock, or kill programs over and over) get the label slow and run alone.
function(velloran_test name)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    add_executable(velloran_${name}_test ${ARG_UNPARSED_ARGUMENTS})
    if(TARGET velloran_${name})
        target_link_libraries(velloran_${name}_test PRIVATE velloran_${name})
    endif()
    target_link_libraries(velloran_${name}_test PRIVATE
        ${ARG_DEPENDS} velloran_test_support GTest::gtest GTest::gtest_main)
    # What a test computes beside the code under test is small; compiling it should be quick.
    target_compile_options(velloran_${name}_test PRIVATE ${VELLORAN_TEST_OPTIONS})
    target_precompile_headers(velloran_${name}_test REUSE_FROM velloran_test_support)
    gtest_discover_tests(velloran_${name}_test DISCOVERY_MODE PRE_TEST TEST_FILTER "-*Slow*"
        PROPERTIES TIMEOUT 600)
    gtest_discover_tests(velloran_${name}_test DISCOVERY_MODE PRE_TEST TEST_FILTER "*Slow*"
        PROPERTIES TIMEOUT 600 LABELS slow RUN_SERIAL ON)
endfunction()

# velloran_bench(<folder> bench.cpp... [DEPENDS target...]): one binary for bench/<folder>; CTest
# runs it for a moment, so that no benchmark rots.
function(velloran_bench name)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    add_executable(velloran_${name}_bench ${ARG_UNPARSED_ARGUMENTS})
    if(TARGET velloran_${name})
        target_link_libraries(velloran_${name}_bench PRIVATE velloran_${name})
    endif()
    target_link_libraries(velloran_${name}_bench PRIVATE
        ${ARG_DEPENDS} velloran_bench_support benchmark::benchmark benchmark::benchmark_main)
    add_test(NAME bench_${name} COMMAND velloran_${name}_bench --benchmark_min_time=0.001)
    set_tests_properties(bench_${name} PROPERTIES LABELS bench TIMEOUT 600)
endfunction()

# velloran_fuzzer(<name> source.cpp DEPENDS target...): a libFuzzer target.
function(velloran_fuzzer name source)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    add_executable(${name} ${source})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
    target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} velloran_flags)
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
