# kpx_version(TARGET FILE TYPE DESCRIPTION)
#
# Gives a program (VFT_APP) or DLL (VFT_DLL) for Windows the version that the system shows in the
# properties of its file; nothing elsewhere.
if(WIN32)
  enable_language(RC)
endif()
function(kpx_version target version_file version_type version_description)
  if(WIN32)
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/Version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
  endif()
endfunction()
