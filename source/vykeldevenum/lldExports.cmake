# The exports when lld links: we make the export directory, so we must make the import library, too.
enable_language(ASM)
target_sources(vykeldevenum PRIVATE exports.S)
set_source_files_properties(exports.S PROPERTIES COMPILE_OPTIONS -g0)
target_link_options(vykeldevenum PRIVATE -Wl,--exclude-all-symbols)
find_program(LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool REQUIRED)
add_custom_command(TARGET vykeldevenum POST_BUILD
  COMMAND ${LLVM_DLLTOOL} -m i386:x86-64 -d ${CMAKE_CURRENT_SOURCE_DIR}/vykeldevenum.def -D vykeldevenum.dll
          -l $<TARGET_LINKER_FILE:vykeldevenum>
  VERBATIM)
