# Functions with which the directories declare their targets, so that flags and names are decided in
# one place.

function(vor_set_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${VOR_WERROR}>:-Werror>)
  # GCC 12 wrongly warns of an overlap in its own std::string if "text" + string is inlined.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
endfunction()

# vor_library_part(HEADERS public... SOURCES private...): adds files of the calling directory to the
# library.  HEADERS are installed; private headers go with the SOURCES.
function(vor_library_part)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "HEADERS;SOURCES")
  target_sources(VorToolsInfrastructure
    PRIVATE ${arg_SOURCES}
    PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${arg_HEADERS})
endfunction()

# vor_add_test(name SOURCES file... [LIBRARIES target...]): one GoogleTest binary for one directory,
# named test_<name>; CTest runs each test of it in a process of its own.
function(vor_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(test_${name} ${arg_SOURCES})
  vor_set_warnings(test_${name})
  target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(test_${name} PRIVATE
    Vor::ToolsInfrastructure GTest::gmock_main ${arg_LIBRARIES})
  set_target_properties(test_${name} PROPERTIES ENABLE_EXPORTS ON)
  gtest_discover_tests(test_${name}
    TEST_PREFIX "${name}/" DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()

# vor_add_benchmark(name SOURCES file... [LIBRARIES target...]): a Google Benchmark binary
# bench_<name> that measures each operation of the library beside its peer.
function(vor_add_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(bench_${name} ${arg_SOURCES})
  vor_set_warnings(bench_${name})
  target_include_directories(bench_${name} PRIVATE ${PROJECT_SOURCE_DIR}/benchmarks)
  target_link_libraries(bench_${name} PRIVATE
    Vor::ToolsInfrastructure benchmark::benchmark_main ${arg_LIBRARIES})
endfunction()

# vor_add_fuzzer(name file...): a libFuzzer target fuzz_<name> whose seeds are the files of
# fuzz/corpus/<name>.
function(vor_add_fuzzer name)
  add_executable(fuzz_${name} ${ARGN})
  vor_set_warnings(fuzz_${name})
  target_compile_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_include_directories(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
  target_link_libraries(fuzz_${name} PRIVATE Vor::ToolsInfrastructure)
endfunction()
