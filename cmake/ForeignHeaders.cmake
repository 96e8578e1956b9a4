# kpx_foreign_headers(TARGET FOLDER...)
#
# For a cross build: an interface library of header-only packages that are installed for the machine
# that builds. Only the named folders are shown to the cross compiler, never all of /usr/include.
function(kpx_foreign_headers target)
  set(shown ${PROJECT_BINARY_DIR}/foreign_headers)
  file(MAKE_DIRECTORY ${shown})
  foreach(folder ${ARGN})
    if(NOT IS_DIRECTORY /usr/include/${folder})
      message(FATAL_ERROR "The headers /usr/include/${folder} are missing")
    endif()
    file(CREATE_LINK /usr/include/${folder} ${shown}/${folder} SYMBOLIC)
  endforeach()
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} SYSTEM INTERFACE ${shown})
endfunction()
