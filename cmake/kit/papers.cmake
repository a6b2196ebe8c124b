# What the papers say of a release, and the time of all that is made for it; scripts/package sets both.
set(VYKEL_COMMIT "(not a release)" CACHE STRING "The commit that is built")
set(VYKEL_TIME 315532800 CACHE STRING "Its time, in seconds since 1970; the first that an archive can hold")
set(at_its_time ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${VYKEL_TIME})

# The kit's own papers: README, CHANGELOG, NOTICE and bill of materials, and SHA256SUMS of all that is installed
# before the symbols.
find_program(DPKG_QUERY dpkg-query)
find_program(GNU_COMPILER x86_64-w64-mingw32-g++-posix)
if(NOT DPKG_QUERY OR NOT GNU_COMPILER)
  message(WARNING "The kit gets no NOTICE and no vykeldevenum.spdx.json: dpkg-query or mingw-w64's g++ is missing.")
else()
  set(papers ${CMAKE_CURRENT_BINARY_DIR}/NOTICE ${CMAKE_CURRENT_BINARY_DIR}/vykeldevenum.spdx.json)
  add_custom_command(OUTPUT ${papers}
    COMMAND ${at_its_time} ${CMAKE_CURRENT_SOURCE_DIR}/linkedSoftware.py
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
  set(files ${CMAKE_INSTALL_MANIFEST_FILES})
  list(SORT files) # a folder has no order
  foreach(file IN LISTS files)
    file(SHA256 $ENV{DESTDIR}${file} sum)
    cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
    string(APPEND sums "${sum}  ${file}\n")
  endforeach()
  set(file ${CMAKE_INSTALL_PREFIX}/SHA256SUMS)
  file(WRITE $ENV{DESTDIR}${file} "${sums}")
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES ${file})
]])
