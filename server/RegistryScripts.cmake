# Writes the registry scripts of the class table. They differ in name, identifier and bitmap only;
# the identifiers are read from the IDL.
file(READ "${PROJECT_SOURCE_DIR}/interfaces/classes.idl" classes_idl)
file(READ "${PROJECT_SOURCE_DIR}/interfaces/KelUtils.idl" library_idl)
file(READ "${CMAKE_CURRENT_SOURCE_DIR}/registry/control_keys.rgs.in" control_keys_template)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/interfaces/classes.idl" "${PROJECT_SOURCE_DIR}/interfaces/KelUtils.idl"
    registry/control_keys.rgs.in)

string(REGEX MATCH "uuid\\(([0-9A-F-]+)\\)" matched "${library_idl}")
set(type_library_id "${CMAKE_MATCH_1}")

# registry_script(class [PROGRAM name] [CLASS_TITLE title] [BITMAP id])
# PROGRAM: the name registered in place of the class's own. CLASS_TITLE: the default value of the
# class key where it is not the usual title. BITMAP: a control, with that toolbox bitmap.
function(registry_script class)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "PROGRAM;CLASS_TITLE;BITMAP" "")
    if(NOT classes_idl MATCHES "uuid\\(([0-9A-F-]+)\\)[^]]*\\]\ncoclass ${class}\n")
        message(FATAL_ERROR "The IDL has no class ${class}")
    endif()
    set(class_id "${CMAKE_MATCH_1}")

    set(name "${class}")
    if(arg_PROGRAM)
        set(name "${arg_PROGRAM}")
    endif()
    set(program_id "KelUtils.${name}")
    set(title "${name} Class")
    set(class_title "${title}")
    if(arg_CLASS_TITLE)
        set(class_title "${arg_CLASS_TITLE}")
    endif()

    set(control_keys "")
    if(arg_BITMAP)
        set(bitmap "${arg_BITMAP}")
        string(CONFIGURE "${control_keys_template}" control_keys @ONLY)
    endif()
    configure_file(registry/class.rgs.in "registry/${class}.rgs" @ONLY NEWLINE_STYLE CRLF)
endfunction()

registry_script(KelTerminal BITMAP 101)
registry_script(ConnectSerialDialog)
registry_script(UploadFirmwareDialog)
registry_script(Preprocessor)
registry_script(RecorderDialog)
registry_script(CompassCalibDialog)
registry_script(HTMLWindow PROGRAM HTMLDialog)
registry_script(HTMLPageData)
registry_script(KelScript)
registry_script(KelObjects)
registry_script(ConnectKelGateDialog)
registry_script(NewSessionDialog)
registry_script(PressureOffsetDialog)
registry_script(MultiSelectDialog)
registry_script(PreprocessorExtender)
registry_script(StatusDialog)
registry_script(DataGrid BITMAP 157)
registry_script(HTMLChildWindow CLASS_TITLE "KelUtils.HTMLChildWindow" BITMAP 162)
