# Targets for 32-bit Windows: DLLs with a fixed list of exports, programs with wide arguments.
enable_language(RC)

# kel_add_dll(name SOURCES ... DEFINITION file.def LIBRARIES ...)
# A DLL that exports what its definition file names, undecorated, and nothing else.
function(kel_add_dll name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "DEFINITION" "SOURCES;LIBRARIES")
    add_library(${name} SHARED ${arg_SOURCES} ${arg_DEFINITION})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    target_link_options(${name} PRIVATE -Wl,--enable-stdcall-fixup -Wl,--kill-at)
    set_target_properties(${name} PROPERTIES PREFIX "")
endfunction()

# kel_ship(name description)
# Makes a program or library ready for those who use it: with its version as a resource and
# as KEL_VERSION, a program with its manifest, and its symbols in a file of their own beside it,
# NAME.debug, which debuggers find by its name.
function(kel_ship name description)
    set(resource "${CMAKE_CURRENT_BINARY_DIR}/${name}_version.rc")
    get_target_property(type ${name} TYPE)
    set(file "${name}.exe")
    set(file_type VFT_APP)
    set(manifest "${PROJECT_SOURCE_DIR}/resources/program.manifest")
    set(manifest_resource "CREATEPROCESS_MANIFEST_RESOURCE_ID RT_MANIFEST \"${manifest}\"")
    if(type STREQUAL "SHARED_LIBRARY")
        set(file "${name}.dll")
        set(file_type VFT_DLL)
        set(manifest_resource "")
    endif()
    configure_file("${PROJECT_SOURCE_DIR}/resources/version.rc.in" "${resource}" @ONLY)
    set_property(SOURCE "${resource}" APPEND PROPERTY OBJECT_DEPENDS "${manifest}")
    target_sources(${name} PRIVATE "${resource}")
    target_compile_definitions(${name} PRIVATE "KEL_VERSION=\"${PROJECT_VERSION}\"")
    # It would write the present date into the files.
    set(objcopy "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=0 "${CMAKE_OBJCOPY}")
    add_custom_command(TARGET ${name} POST_BUILD
        COMMAND ${objcopy} --only-keep-debug ${file} ${file}.debug
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${file}.debug ${file}
        WORKING_DIRECTORY "$<TARGET_FILE_DIR:${name}>"
        VERBATIM)
endfunction()

# kel_import_library(name definition.def)
# An import library for a platform DLL that the tool chain has none for.
function(kel_import_library name definition)
    set(output "${CMAKE_CURRENT_BINARY_DIR}/lib${name}.a")
    # Its symbols bear the name of the file as it is given here, which is to be the same everywhere.
    add_custom_command(
        OUTPUT "${output}"
        COMMAND "${CMAKE_DLLTOOL}" --deterministic-libraries --temp-prefix ${name} -k -d "${CMAKE_CURRENT_SOURCE_DIR}/${definition}" -l "lib${name}.a"
        DEPENDS "${definition}"
        WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
        COMMENT "Making the import library ${name}"
        VERBATIM)
    add_custom_target(${name}_import DEPENDS "${output}")
    add_library(${name} INTERFACE)
    add_dependencies(${name} ${name}_import)
    target_link_libraries(${name} INTERFACE "${output}")
endfunction()
