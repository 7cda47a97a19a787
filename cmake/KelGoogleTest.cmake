# GoogleTest: natively the distribution's library, for Windows its sources, compiled here. The targets
# are gtest and gtest_main.
include(GoogleTest)
set(KEL_FEW_SECTIONS -O1 -fno-function-sections -fno-data-sections)
if(WIN32)
    set(INSTALL_GTEST OFF CACHE INTERNAL "")
    set(BUILD_GMOCK OFF CACHE INTERNAL "")
    set(gtest_force_shared_crt OFF CACHE INTERNAL "")
    add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
    # The linker's work grows with the sections of an object, and every test program links this one.
    target_compile_options(gtest PRIVATE ${KEL_FEW_SECTIONS})
    target_sources(gtest INTERFACE "${PROJECT_SOURCE_DIR}/tests/support/newborn_threads.cpp")
else()
    find_package(GTest REQUIRED)
    add_library(gtest ALIAS GTest::gtest)
    add_library(gtest_main ALIAS GTest::gtest_main)
endif()
