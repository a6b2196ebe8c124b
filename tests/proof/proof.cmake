# What scripts/prove runs beside the tests.
add_executable(proof_client proof/ProofClient.cpp)
target_link_libraries(proof_client PRIVATE project_options vykeldevenum)
target_include_directories(proof_client PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
