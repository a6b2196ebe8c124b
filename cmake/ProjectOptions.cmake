# The options of all targets of this project: the target project_options.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})

set(VYKEL_SANITIZE "" CACHE STRING "Sanitizers of a host build, for example address,undefined")
if(VYKEL_SANITIZE)
  set(CMAKE_CXX_FLAGS_DEBUG "-Og -g1") # enough for the line numbers in reports, and builds twice as fast
  add_compile_options(-fsanitize=${VYKEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VYKEL_SANITIZE})
  string(APPEND CMAKE_EXE_LINKER_FLAGS " -no-pie") # otherwise relocation takes a third of the start-up time
endif()

# Errors contain __FILE__: it must be the path from the project's root, wherever the project is.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -ffile-prefix-map=${PROJECT_BINARY_DIR}/=build/)
if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)
  set(VYKEL_PDB ON) # the symbols go into PDB files, see DebugSymbols.cmake
elseif(WIN32)
  add_link_options(-Wl,--no-insert-timestamp) # a release has the same bytes whenever and wherever it is built
elseif(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # The system never unloads a library with GNU_UNIQUE symbols, but it must unload plug-ins.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wundef -Werror -fstack-protector-strong)
target_include_directories(project_options INTERFACE ${PROJECT_SOURCE_DIR}/includes)
if(WIN32)
  target_compile_definitions(project_options INTERFACE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
  add_library(stack_guard STATIC ${CMAKE_CURRENT_LIST_DIR}/stackGuard.cpp)
  target_compile_options(stack_guard PRIVATE -fno-stack-protector)
  target_link_libraries(project_options INTERFACE stack_guard)
else()
  target_link_libraries(project_options INTERFACE winhost)
endif()
