# The contract for C, and what is written in other languages: the C samples, the Python module.
add_executable(client_c ${CMAKE_SOURCE_DIR}/samples/client-c/main.c)
target_link_libraries(client_c PRIVATE vykeldevenum)
vykel_add_plugin(lamp ${CMAKE_SOURCE_DIR}/samples/plugin-c/lamp.c)
foreach(sample client_c lamp)
  target_compile_options(${sample} PRIVATE -std=c99 -pedantic-errors -Wall -Wextra -Wconversion -Werror)
endforeach()

add_tool_test_program(bindings_tests bindings/CInterfaceTest.cpp)
target_compile_definitions(bindings_tests PRIVATE VYKEL_DOCS="${CMAKE_SOURCE_DIR}/docs"
  $<$<BOOL:${VYKEL_SANITIZE}>:VYKEL_SANITIZED>)
add_dependencies(bindings_tests client_c lamp)

# The Python module runs on the host. A sanitized library wants its runtime in the process from the start. What
# Python itself leaves allocated is no leak of ours.
if(NOT WIN32 AND NOT VYKEL_SANITIZE MATCHES thread)
  add_test(NAME python_binding
    COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/bindings/test_vykeldevenum.py)
  set(python_environment PYTHONPATH=${CMAKE_SOURCE_DIR}/bindings/python VYKEL_BUILD=${CMAKE_BINARY_DIR}
    VYKEL_VERSION=${PROJECT_VERSION})
  if(VYKEL_SANITIZE)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libasan.so
      OUTPUT_VARIABLE libasan OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND python_environment LD_PRELOAD=${libasan} ASAN_OPTIONS=detect_leaks=0)
  endif()
  set_tests_properties(python_binding PROPERTIES ENVIRONMENT "${python_environment}" TIMEOUT 180)
endif()
