# Fake plug-ins: real libraries that do what the test tells them (FakePlugins.h).
function(add_fake_plugin name)
  add_library(${name} MODULE support/FakePlugin.cpp)
  target_link_libraries(${name} PRIVATE project_options vykeldevenum_core) # for the library's own exception
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_compile_definitions(${name} PRIVATE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden)
endfunction()

add_fake_plugin(fake_plugin)
add_fake_plugin(fake_plugin_without_finalize FAKE_WITHOUT_FINALIZE)
add_dependencies(fake_plugin fake_plugin_without_finalize)

if(NOT WIN32)
  # As a plug-in that brings its own C++ runtime; on Windows every one does.
  add_fake_plugin(fake_plugin_own_runtime FAKE_OWN_RUNTIME)
  target_link_options(fake_plugin_own_runtime PRIVATE -static-libstdc++ -static-libgcc -Wl,--exclude-libs,ALL)
  add_dependencies(fake_plugin fake_plugin_own_runtime)
endif()

# One plug-in that is wrong in the way its environment names; and the same with its entry points under other names:
# without one of them, and as the library itself.
foreach(name zoo_plugin zoo_plugin_without_finalize zoo_library)
  add_library(${name} MODULE support/ZooPlugin.cpp)
  target_link_libraries(${name} PRIVATE project_options)
  set_target_properties(${name} PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden)
endforeach()
target_compile_definitions(zoo_plugin_without_finalize PRIVATE vykel_finalizePlugin=finalizePlugin)
target_compile_definitions(zoo_library PRIVATE vykel_initializePlugin=vykeldevenum_initialize
  vykel_getPluginInterface=vykeldevenum_getAllKelDevices vykel_finalizePlugin=vykeldevenum_finalize)
