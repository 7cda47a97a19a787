# One set of compiler options for everything that is built here.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

option(KEL_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
option(KEL_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(KEL_FUZZ "Build the fuzzers, with clang" OFF)

add_compile_options(-Wall -Wextra -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 takes the addition of texts for an overlapping copy.
    add_compile_options(-Wno-restrict)
    # With precompiled headers also for a copy beyond their ends, inside the platform's headers.
    if(WIN32)
        add_compile_options(-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
    endif()
endif()
if(KEL_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()

if(KEL_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
    # The library checks its own indexes, also where they stay inside the memory of something.
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
if(KEL_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32)
    # SSE arithmetic: the x87 unit would round differently from 64-bit code and obey the host's
    # control word. The stack is realigned because hosts call in with four-byte alignment.
    # Functions are not split into hot and cold parts: exceptions that pass through the cold part of
    # a function that GCC 12 splits here are not caught by anybody.
    add_compile_options(-msse2 -mfpmath=sse -mstackrealign -ffunction-sections -fdata-sections
        -fno-reorder-blocks-and-partition)
    # The same bytes wherever the folder is; enough about lines for a backtrace, which kel_ship takes
    # out of what is shipped.
    add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build" -g1)
    # Texts of instruments and files of others are read inside the host's process: what would write
    # beyond an array ends the process at once. docs/security.md tells the whole.
    add_compile_options(-fstack-protector-strong)
    add_compile_definitions(_GLIBCXX_ASSERTIONS _FORTIFY_SOURCE=2)
    add_compile_definitions(_WIN32_WINNT=0x0601 WINVER=0x0601 NOMINMAX WIN32_LEAN_AND_MEAN)
    add_link_options(-static -static-libgcc -static-libstdc++ -fstack-protector-strong -Wl,--gc-sections
        -Wl,--dynamicbase -Wl,--nxcompat -Wl,--no-insert-timestamp)
endif()

# Includes name the room: #include "script/engine/program.h".
include_directories("${PROJECT_SOURCE_DIR}")
