# The contract for C, and what is written in other languages: the C samples, the Python module.
add_executable(client_c ${PROJECT_SOURCE_DIR}/samples/client-c/main.c)
target_link_libraries(client_c PRIVATE vykeldevenum)
vykel_add_plugin(lamp ${PROJECT_SOURCE_DIR}/samples/plugin-c/lamp.c)
foreach(sample client_c lamp)
  target_compile_options(${sample} PRIVATE -std=c99 -pedantic-errors -Wall -Wextra -Wconversion -Werror)
endforeach()

add_tool_test_program(bindings_tests bindings/CInterfaceTest.cpp)
target_compile_definitions(bindings_tests PRIVATE VYKEL_DOCS="${PROJECT_SOURCE_DIR}/docs")
if(VYKEL_SANITIZE)
  target_compile_definitions(bindings_tests PRIVATE VYKEL_SANITIZED)
endif()
add_dependencies(bindings_tests client_c lamp)

# Clients in other languages: JavaScript, by docs/binary-interface.md alone, on both systems; the Python module and the
# .NET binding on the host. A sanitized library wants the sanitizer's runtime in the process from the start, and that
# wants the C++ runtime when it looks at thrown exceptions; Node.js was not tried so. What Python itself leaves allocated
# is no leak of ours.
vykel_add_plugin(refuses foreign/refuses.c)
set(foreign_test ${CMAKE_CURRENT_SOURCE_DIR}/foreign/foreign-test.py ${PROJECT_BINARY_DIR})
if(NOT VYKEL_SANITIZE)
  add_test(NAME foreign COMMAND ${foreign_test} javascript)
  set_tests_properties(foreign PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
endif()
if(NOT WIN32 AND NOT VYKEL_SANITIZE MATCHES thread)
  add_test(NAME dotnet_binding COMMAND ${foreign_test} dotnet)
  add_test(NAME python_binding
    COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/bindings/test_vykeldevenum.py)
  set(environment PYTHONPATH=${PROJECT_SOURCE_DIR}/bindings/python VYKEL_BUILD=${PROJECT_BINARY_DIR}
    VYKEL_VERSION=${PROJECT_VERSION})
  if(VYKEL_SANITIZE)
    foreach(runtime libasan libstdc++)
      execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}.so
        OUTPUT_VARIABLE ${runtime} OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
    list(APPEND environment "LD_PRELOAD=${libasan}:${libstdc++}" ASAN_OPTIONS=detect_leaks=0)
  endif()
  set_tests_properties(dotnet_binding python_binding PROPERTIES ENVIRONMENT "${environment}" TIMEOUT 180
    SKIP_RETURN_CODE 77)
endif()
