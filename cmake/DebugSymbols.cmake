# split_debug_symbols(target [-g1]): strips the target and writes its debug symbols to <file>.debug beside it,
# where debuggers look for them. -g1 keeps only what a stack trace needs. A static library keeps its symbols
# for the programs that link it. Without -p, objcopy would write the time into each header.
# With VYKEL_PDB (clang and lld, for Windows) the symbols are in NAME.pdb beside the target instead, and the list
# of what was linked is in NAME.map.
set(relative_paths "\"${CMAKE_CURRENT_LIST_DIR}/relative-paths.sh\" \"${PROJECT_SOURCE_DIR}\" \"${PROJECT_BINARY_DIR}\"")

function(split_debug_symbols target)
  if(VYKEL_SANITIZE)
    return() # the sanitizers' reports need the symbols in the file
  endif()
  target_compile_options(${target} PRIVATE -g ${ARGN} -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
  get_target_property(type ${target} TYPE)
  if(VYKEL_PDB)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-gcodeview -ffile-compilation-dir=.>)
    if(NOT type STREQUAL STATIC_LIBRARY)
      set_target_properties(${target} PROPERTIES RULE_LAUNCH_LINK ${relative_paths})
      target_link_options(${target} PRIVATE -Wl,--pdb= "-Wl,-Xlink=-pdbsourcepath:C:\\${PROJECT_NAME}"
        -Wl,-Xlink=-pdbaltpath:%_PDB% -Wl,-Xlink=-Brepro -Wl,-Map,${target}.map)
      find_program(LLVM_STRIP NAMES llvm-strip-14 llvm-strip REQUIRED)
      add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${LLVM_STRIP} --strip-debug $<TARGET_FILE:${target}> # mingw-w64's libraries bring DWARF symbols
        VERBATIM)
    endif()
    set_target_properties(${target} PROPERTIES RULE_LAUNCH_COMPILE ${relative_paths})
    return()
  endif()
  if(NOT type STREQUAL STATIC_LIBRARY)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
      COMMAND ${CMAKE_OBJCOPY} -p --strip-all --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug
              $<TARGET_FILE:${target}>
      VERBATIM)
  endif()
endfunction()
