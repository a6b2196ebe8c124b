# Cross build for 64-bit Windows by clang and lld, with the headers and libraries of mingw-w64 (Debian:
# clang-14, lld-14 and g++-mingw-w64-x86-64-posix). The symbols are in PDB files, which Windows' own debuggers
# read.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(_triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER   clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_ASM_COMPILER clang-14)
set(CMAKE_C_COMPILER_TARGET   ${_triplet})
set(CMAKE_CXX_COMPILER_TARGET ${_triplet})
set(CMAKE_ASM_COMPILER_TARGET ${_triplet})
set(CMAKE_RC_COMPILER  ${_triplet}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH) # header-only packages of the host, see cmake/HeaderOnly.cmake

# Use GCC's C++ library, the one with posix threads, and no folder of the host: clang itself would find another
# library. GCC's emulates thread-local variables, so our code must do so, too. The PDB files record the
# compiler's options, which must be the same whether somebody wants colours or not.
execute_process(COMMAND ${_triplet}-g++-posix -print-libgcc-file-name
  OUTPUT_VARIABLE _gcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET _gcc PARENT_PATH _gcc)
execute_process(COMMAND clang-14 -print-resource-dir
  OUTPUT_VARIABLE _clang OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(_headers "--start-no-unused-arguments -nostdinc -isystem ${_clang}/include -isystem /usr/${_triplet}/include -fno-color-diagnostics --end-no-unused-arguments")
set(CMAKE_C_FLAGS_INIT "${_headers}")
set(CMAKE_CXX_FLAGS_INIT
  "--start-no-unused-arguments -femulated-tls -nostdinc++ -isystem ${_gcc}/include/c++ -isystem ${_gcc}/include/c++/${_triplet} --end-no-unused-arguments ${_headers}")

# Link only the system's DLLs. A static library comes before those that it needs.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -static -L${_gcc} -L/usr/${_triplet}/lib")
endforeach()
set(CMAKE_CXX_STANDARD_LIBRARIES
  "-lkernel32 -lstdc++ -lgcc_eh -lgcc -lwinpthread -lmingwex -lmsvcrt -lkernel32 -ladvapi32 -lshell32")

# The emulator: see run-under-wine.sh.
set(CMAKE_CROSSCOMPILING_EMULATOR
  ${CMAKE_CURRENT_LIST_DIR}/../scripts/run-under-wine.sh;--prefix;${CMAKE_BINARY_DIR}/wineprefix)
