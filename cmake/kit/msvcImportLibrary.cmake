# lib/vykeldevenum.lib: the import library for link.exe and lld-link.
find_program(LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool)
if(NOT LLVM_DLLTOOL)
  message(WARNING "The kit gets no lib/vykeldevenum.lib: llvm-dlltool (Debian's package llvm-14) is missing.")
  return()
endif()
set(msvc_import_library ${PROJECT_BINARY_DIR}/vykeldevenum.lib)
set(definition ${PROJECT_SOURCE_DIR}/source/vykeldevenum/vykeldevenum.def)
add_custom_command(OUTPUT ${msvc_import_library}
  COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -d ${definition} -D vykeldevenum.dll -l ${msvc_import_library}
  DEPENDS ${definition}
  VERBATIM)
add_custom_target(msvc_import_library ALL DEPENDS ${msvc_import_library})
install(FILES ${msvc_import_library} DESTINATION lib)
