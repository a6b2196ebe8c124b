# The Python module as a wheel, the same bytes whenever it is built. pip writes beside the sources, so it gets a copy.
set(python /usr/bin/python3)
execute_process(COMMAND ${python} -c "import setuptools, wheel, pip" RESULT_VARIABLE missing ERROR_QUIET)
if(missing)
  message(WARNING "The kit gets no Python wheel: pip, setuptools or wheel is missing.")
  return()
endif()
set(module ${PROJECT_SOURCE_DIR}/bindings/python)
file(GLOB module_files CONFIGURE_DEPENDS ${module}/*.* ${module}/vykeldevenum/*.*)
set(wheel ${CMAKE_CURRENT_BINARY_DIR}/vykeldevenum-${PROJECT_VERSION}-py3-none-any.whl)
add_custom_command(OUTPUT ${wheel}
  COMMAND ${CMAKE_COMMAND} -E rm -rf python
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${module} python
  COMMAND chmod -R u=rwX,go=rX python # the wheel holds the rights, which depend on who checked out the sources
  COMMAND ${at_its_time} ${python} -m pip wheel -q --no-index --no-build-isolation --no-deps -w . ./python
  DEPENDS ${module_files}
  WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
  VERBATIM)
add_custom_target(wheel DEPENDS ${wheel})
install(FILES ${wheel} DESTINATION ${share_dir}/python)
