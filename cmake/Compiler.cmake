# Language level, warnings, visibility and sanitizers, for every target of the project alike.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES AND PROJECT_IS_TOP_LEVEL)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release or Sanitize" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Optimised enough that the sanitized tests stay quick, with line numbers in their reports.
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer")
set(CMAKE_C_FLAGS_SANITIZE "-O1 -g1 -fno-omit-frame-pointer")
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
endif()

if(MSVC)
  # Nobody has seen all of this compiler's warnings here yet, so they do not stop the build.
  add_compile_options(/utf-8 /bigobj /W4 /permissive- /Zc:preprocessor /Zc:__cplusplus)
else()
  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wcast-align -Wunused -Wformat=2)
  if(KPX_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
  endif()
  foreach(warning -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:${warning}>)
  endforeach()
endif()

if(WIN32)
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00)
endif()

if(KPX_SANITIZE)
  add_compile_options(-fsanitize=${KPX_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KPX_SANITIZE})
endif()
if(KPX_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
