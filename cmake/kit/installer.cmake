# The installer for machines without developers: an MSI by wixl.
find_program(WIXL wixl)
if(NOT WIXL OR NOT papers)
  message(WARNING "There will be no installer: wixl (Debian's package wixl) is missing, or a program that NOTICE needs, see above.")
  return()
endif()
# A release has the same product code wherever it is built, and replaces every other release.
set(family bea6b1d5-c361-4efa-88c1-7b39468aeb00)
string(UUID product_code NAMESPACE ${family} NAME ${PROJECT_VERSION} TYPE SHA1 UPPER)
cmake_path(RELATIVE_PATH CMAKE_CURRENT_BINARY_DIR BASE_DIRECTORY ${PROJECT_BINARY_DIR} OUTPUT_VARIABLE papers_dir)
configure_file(installer.wxs.in installer.wxs @ONLY)
set(installer ${PROJECT_BINARY_DIR}/${CPACK_PACKAGE_FILE_NAME}.msi)
add_custom_command(OUTPUT ${installer}
  COMMAND ${WIXL} -a x64 -o ${installer} ${CMAKE_CURRENT_BINARY_DIR}/installer.wxs
  DEPENDS vykeldevenum vykeldev ${papers} ${CMAKE_CURRENT_BINARY_DIR}/installer.wxs
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR} # wixl takes relative paths only
  VERBATIM)
add_custom_target(installer ALL DEPENDS ${installer})
