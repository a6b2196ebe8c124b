# split_debug_symbols(target [-g1]): strips the target and writes its debug symbols to <file>.debug beside it,
# where debuggers look for them. -g1 keeps only what a stack trace needs. A static library keeps its symbols
# for the programs that link it. Without -p, objcopy would write the time into each header.
function(split_debug_symbols target)
  if(VYKEL_SANITIZE)
    return() # the reports of the sanitizers need the symbols in the file
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
