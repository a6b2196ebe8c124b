# split_debug_symbols(target [-g1]): what is shipped is stripped; its debug symbols lie beside it in <file>.debug,
# where debuggers look for them. -g1 leaves out all that a stack trace does not need. A static library keeps its
# symbols for whatever it is linked into. Without -p, objcopy would write the time into each header.
function(split_debug_symbols target)
  if(VYKEL_SANITIZE)
    return() # the sanitizers' reports want the symbols in place
  endif()
  target_compile_options(${target} PRIVATE -g ${ARGN} -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL STATIC_LIBRARY)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
      COMMAND ${CMAKE_OBJCOPY} -p --strip-all --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug
              $<TARGET_FILE:${target}>
      VERBATIM)
  endif()
endfunction()
