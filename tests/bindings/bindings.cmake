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
