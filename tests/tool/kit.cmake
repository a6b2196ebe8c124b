# What the kit brings beside the library: its tool's watch command, its files, its samples, its documents.
if(NOT VYKEL_SANITIZE) # a client would have to be built with the sanitizer, too
  set(kit_environment CC=${CMAKE_C_COMPILER} CXX=${CMAKE_CXX_COMPILER} OBJDUMP=${CMAKE_OBJDUMP})
  if(WIN32) # a user's compiler, whichever built the kit
    set(gnu x86_64-w64-mingw32)
    set(kit_environment CC=${gnu}-gcc-posix CXX=${gnu}-g++-posix OBJDUMP=${gnu}-objdump)
  endif()
  add_test(NAME kit COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tool/kit-test.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(kit PROPERTIES FIXTURES_SETUP kit
    ENVIRONMENT "${kit_environment}")
  set(kit_tests kit)
  if(WIN32) # what the documents say is typed on Windows
    add_test(NAME docs COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tool/docs-test.py ${PROJECT_BINARY_DIR})
    set_tests_properties(docs PROPERTIES FIXTURES_REQUIRED kit RESOURCE_LOCK kit-machine ENVIRONMENT "${kit_environment}")
    list(APPEND kit_tests docs)

    add_test(NAME msvc-abi COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tool/msvc-abi-test.sh ${PROJECT_BINARY_DIR})
    set_tests_properties(msvc-abi PROPERTIES FIXTURES_REQUIRED kit RESOURCE_LOCK kit-machine
      ENVIRONMENT "${kit_environment}")
    list(APPEND kit_tests msvc-abi)
  endif()
  if(VYKEL_PDB) # the kit's binaries are this build's
    add_test(NAME reproducible
      COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tool/reproducible-test.sh ${PROJECT_BINARY_DIR} windows-clang)
    add_test(NAME package COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/tool/package-test.sh ${PROJECT_BINARY_DIR})
    set_tests_properties(package PROPERTIES FIXTURES_REQUIRED kit RESOURCE_LOCK kit-machine)
    list(APPEND kit_tests reproducible package)
  endif()
  set_tests_properties(${kit_tests} PROPERTIES LABELS kit TIMEOUT 300 COST 300)
endif()
