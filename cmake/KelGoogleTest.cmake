# GoogleTest from the distribution's sources, compiled with the options of the configuration.
set(INSTALL_GTEST OFF CACHE INTERNAL "")
set(gtest_force_shared_crt OFF CACHE INTERNAL "")
add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
include(GoogleTest)
if(WIN32)
    target_sources(gtest INTERFACE "${PROJECT_SOURCE_DIR}/tests/support/newborn_threads.cpp")
endif()
