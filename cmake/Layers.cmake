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
endfunction()

# kpx_test(NAME LAYERS layers... SOURCES ... [LINK ...])
#
# One GoogleTest program for one folder of tests/. It links only the layers named, so a layer
# that secretly needs a higher one does not link. Below the context there is no error reporter.
function(kpx_test name)
  cmake_parse_arguments(TEST "" "" "LAYERS;SOURCES;LINK" ${ARGN})
  if(NOT context IN_LIST TEST_LAYERS)
    list(APPEND TEST_SOURCES ${PROJECT_SOURCE_DIR}/tests/common/NoReporter.cpp)
  endif()
  list(TRANSFORM TEST_LAYERS PREPEND kpx_)
  add_executable(test_${name} ${TEST_SOURCES})
  target_link_libraries(test_${name} PRIVATE kpx_test_main ${TEST_LAYERS} ${TEST_LINK})
  target_compile_definitions(test_${name} PRIVATE KPX_STATIC
                             KPX_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data")
  target_precompile_headers(test_${name} REUSE_FROM kpx_test_main)
  add_test(NAME ${name} COMMAND test_${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()
