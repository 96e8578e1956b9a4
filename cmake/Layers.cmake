# g++ 12 takes headers of the system that were read beforehand for ours, and warns falsely of their
# texts of 16-bit units.
foreach(warning array-bounds restrict stringop-overread stringop-overflow)
  list(APPEND kpx_precompiled_options $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-${warning}>)
endforeach()

# kpx_layer(NAME SOURCES ... [LINK libraries...])
#
# One layer of the library: an object library `kpx_NAME`. The layers become one shared and one
# static library in kpx/CMakeLists.txt. What a layer may include is checked by a test, see
# tests/layers.
function(kpx_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;LINK" ${ARGN})
  add_library(kpx_${name} OBJECT ${LAYER_SOURCES})
  target_include_directories(kpx_${name} PUBLIC ${PROJECT_SOURCE_DIR}
                             ${PROJECT_BINARY_DIR}/generated)
  target_compile_definitions(kpx_${name} PRIVATE KPX_BUILDING)
  target_link_libraries(kpx_${name} PUBLIC ${LAYER_LINK})
  target_compile_features(kpx_${name} PUBLIC cxx_std_20)
  # The release build does without, so that every file has to include what it uses.
  if(KPX_PRECOMPILE)
    target_compile_options(kpx_${name} PRIVATE ${kpx_precompiled_options})
    set_target_properties(kpx_${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  endif()
  if(KPX_PRECOMPILE AND name STREQUAL report)
    target_precompile_headers(kpx_report PRIVATE <algorithm> <chrono> <functional> <map> <memory>
                              <optional> <span> <string> <string_view> <utility> <vector>)
  elseif(KPX_PRECOMPILE)
    target_precompile_headers(kpx_${name} REUSE_FROM kpx_report)
  endif()
endfunction()

# kpx_add_test(NAME [LABELS labels...] [ENVIRONMENT variables...] COMMAND ...)
#
# A test as ctest runs it: with a time limit, and after everything has been built.
function(kpx_add_test name)
  cmake_parse_arguments(TEST "" "" "COMMAND;LABELS;ENVIRONMENT" ${ARGN})
  add_test(NAME ${name} COMMAND ${TEST_COMMAND})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 FIXTURES_REQUIRED built
                       LABELS "${TEST_LABELS}" ENVIRONMENT "${TEST_ENVIRONMENT}")
endfunction()

# kpx_test(NAME LAYERS layers... SOURCES ... [LINK ...] [THREADS tests...])
#
# One GoogleTest program for one folder of tests/. It links only the layers named, so a layer
# that secretly needs a higher one does not link. Below the context there is no error reporter.
# THREADS are its tests that use several threads, for the thread sanitizer.
function(kpx_test name)
  cmake_parse_arguments(TEST "" "" "LAYERS;SOURCES;LINK;THREADS" ${ARGN})
  if(NOT context IN_LIST TEST_LAYERS)
    list(APPEND TEST_SOURCES ${PROJECT_SOURCE_DIR}/tests/common/NoReporter.cpp)
  endif()
  list(TRANSFORM TEST_LAYERS PREPEND kpx_)
  add_executable(test_${name} ${TEST_SOURCES})
  target_link_libraries(test_${name} PRIVATE kpx_test_main ${TEST_LAYERS} ${TEST_LINK})
  target_compile_definitions(test_${name} PRIVATE KPX_STATIC
                             KPX_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data")
  target_precompile_headers(test_${name} REUSE_FROM kpx_test_main)
  kpx_add_test(${name} COMMAND test_${name})
  if(TEST_THREADS AND KPX_SANITIZE STREQUAL thread)
    list(JOIN TEST_THREADS ":" filter)
    kpx_add_test(${name}_threads COMMAND test_${name} --gtest_filter=${filter} LABELS threads)
    add_dependencies(thread_tests test_${name})
  endif()
endfunction()
