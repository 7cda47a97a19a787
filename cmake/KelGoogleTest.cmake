# GoogleTest from the distribution's sources, compiled with the options of the configuration.
set(INSTALL_GTEST OFF CACHE INTERNAL "")
set(gtest_force_shared_crt OFF CACHE INTERNAL "")
add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
include(GoogleTest)
if(KEL_SANITIZE)
    # What is under test is watched, not the watcher: that would cost half a minute of compiling.
    target_compile_options(gtest PRIVATE -fno-sanitize=all)
    target_compile_options(gtest_main PRIVATE -fno-sanitize=all)
endif()
if(WIN32)
    target_sources(gtest INTERFACE "${PROJECT_SOURCE_DIR}/tests/support/newborn_threads.cpp")
endif()
