# Targets for 32-bit Windows: DLLs with a fixed list of exports, programs with wide arguments.
enable_language(RC)

# kel_add_dll(name SOURCES ... DEFINITION file.def LIBRARIES ...)
# A DLL that exports what its definition file names, undecorated, and nothing else.
function(kel_add_dll name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "DEFINITION" "SOURCES;LIBRARIES")
    add_library(${name} SHARED ${arg_SOURCES} ${arg_DEFINITION})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    target_link_options(${name} PRIVATE -Wl,--enable-stdcall-fixup -Wl,--kill-at
        $<$<CONFIG:Release>:-s>)
    set_target_properties(${name} PROPERTIES PREFIX "")
endfunction()

# kel_import_library(name definition.def)
# An import library for a platform DLL that the tool chain has none for.
function(kel_import_library name definition)
    set(output "${CMAKE_CURRENT_BINARY_DIR}/lib${name}.a")
    add_custom_command(
        OUTPUT "${output}"
        COMMAND "${CMAKE_DLLTOOL}" -k -d "${definition}" -l "${output}"
        DEPENDS "${definition}"
        WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
        COMMENT "Making the import library ${name}"
        VERBATIM)
    add_custom_target(${name}_import DEPENDS "${output}")
    add_library(${name} INTERFACE)
    add_dependencies(${name} ${name}_import)
    target_link_libraries(${name} INTERFACE "${output}")
endfunction()
