# vykel_add_plugin(NAME sources...)
#
# Adds an enumerator plug-in: the library NAME.dll, which exports only the three entry points, needs no DLL of
# the C++ runtime and finds the public headers. On Windows the linker reports an entry point that is missing.
# Compilers with Microsoft's ABI link their runtime statically: /MTd in the configuration Debug, /MT in the
# others.
set(_vykel_add_plugin_dir ${CMAKE_CURRENT_LIST_DIR})

function(vykel_add_plugin name)
  set(dir ${_vykel_add_plugin_dir})
  cmake_policy(GET CMP0091 runtime_policy)
  if((MSVC OR CMAKE_CXX_SIMULATE_ID STREQUAL MSVC) AND NOT runtime_policy STREQUAL NEW)
    message(FATAL_ERROR "vykel_add_plugin(${name}) could not link the runtime statically (/MT): begin the project "
      "with cmake_minimum_required(VERSION 3.15) or a later version, before project().")
  endif()
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE vykeldevenum::plugin)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
  if(WIN32)
    target_sources(${name} PRIVATE ${dir}/plugin.def)
    if(MINGW)
      target_link_options(${name} PRIVATE -static)
    endif()
  else()
    target_link_options(${name} PRIVATE -Wl,--version-script=${dir}/plugin.map)
    set_target_properties(${name} PROPERTIES LINK_DEPENDS ${dir}/plugin.map)
    # The system never unloads a library with GNU_UNIQUE symbols, but it must unload plug-ins.
    target_compile_options(${name} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  endif()
endfunction()
