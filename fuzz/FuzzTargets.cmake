# Every fuzz/<Name>Fuzz.cpp is one target; its seeds lie in fuzz/corpus/<name>.
file(GLOB fuzz_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*Fuzz.cpp)
set(fuzz_folder ${CMAKE_CURRENT_LIST_DIR})

# fuzz_name(SOURCE VARIABLE): fuzz/MarkupFuzz.cpp is "markup".
function(fuzz_name source variable)
  get_filename_component(name ${source} NAME_WE)
  string(REGEX REPLACE "Fuzz$" "" name ${name})
  string(TOLOWER ${name} name)
  set(${variable} ${name} PARENT_SCOPE)
endfunction()
