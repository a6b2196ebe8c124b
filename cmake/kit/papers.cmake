# The kit's own papers: README, CHANGELOG, NOTICE and bill of materials, and SHA256SUMS of all that is installed
# before the symbols.
find_program(DPKG_QUERY dpkg-query)
find_program(GNU_COMPILER x86_64-w64-mingw32-g++-posix)
if(NOT DPKG_QUERY OR NOT GNU_COMPILER)
  message(WARNING "The kit gets no NOTICE and no vykeldevenum.spdx.json: dpkg-query or mingw-w64's g++ is missing.")
else()
  set(papers ${CMAKE_CURRENT_BINARY_DIR}/NOTICE ${CMAKE_CURRENT_BINARY_DIR}/vykeldevenum.spdx.json)
  add_custom_command(OUTPUT ${papers}
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/linkedSoftware.py
            ${CMAKE_CURRENT_BINARY_DIR} ${PROJECT_VERSION} ${GNU_COMPILER}
            $<TARGET_FILE:vykeldevenum> $<TARGET_FILE:vykeldev> $<TARGET_FILE:simulated>
    DEPENDS vykeldevenum vykeldev simulated linkedSoftware.py
    VERBATIM)
  add_custom_target(papers ALL DEPENDS ${papers})
endif()
configure_file(README.md.in README.md @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${papers} DESTINATION .)
install(CODE [[
  set(sums "")
  foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
    file(SHA256 $ENV{DESTDIR}${file} sum)
    cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
    string(APPEND sums "${sum}  ${file}\n")
  endforeach()
  set(file ${CMAKE_INSTALL_PREFIX}/SHA256SUMS)
  file(WRITE $ENV{DESTDIR}${file} "${sums}")
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES ${file})
]])
