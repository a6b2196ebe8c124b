# add_version_resource(target file_type file_name description [manifest]): adds the properties that Windows shows
# of a file, with the project's one version number, and to a program the manifest file, which says how Windows
# runs it.
set(version_resource ${CMAKE_CURRENT_LIST_DIR}/version.rc.in)

function(add_version_resource target file_type file_name description)
  enable_language(RC)
  set(manifest "")
  if(ARGC GREATER 4)
    set(manifest "1 24 \"${ARGV4}\"") # resource 1 of the type RT_MANIFEST
  endif()
  configure_file(${version_resource} version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
  set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/version.rc PROPERTIES OBJECT_DEPENDS "${ARGV4}")
endfunction()
