# What the library makes known to the system: its classes, in the order of the class table, and its
# interfaces. Identifiers and names are read from the IDL; included by whoever writes them down.
#
# KEL_IDL: the files.
# KEL_CLASSES: names; for each, KEL_<name>_ID, _PROGRAM (the ProgID without its version), _TITLE,
#   _CLASS_TITLE (the default value of the class key), _BITMAP (of controls; empty for others).
# KEL_INTERFACES: names; for each, KEL_<name>_ID and _MARSHALLER (the class that carries its calls).
# KEL_LIBRARY_ID, KEL_LIBRARY_VERSION, KEL_LIBRARY_TITLE: the type library.
set(KEL_IDL KelUtils link preprocessor terminal html dialogs controls classes)
list(TRANSFORM KEL_IDL PREPEND "${PROJECT_SOURCE_DIR}/interfaces/")
list(TRANSFORM KEL_IDL APPEND ".idl")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${KEL_IDL})

# Lists are separated by semicolons, and square brackets bind them: neither may stay.
set(idl "")
foreach(source IN LISTS KEL_IDL)
    file(READ "${source}" text)
    string(REPLACE ";" "" text "${text}")
    string(REPLACE "[" "" text "${text}")
    string(REPLACE "]" "@" text "${text}")
    string(APPEND idl "${text}")
endforeach()

if(NOT idl MATCHES "uuid\\(([0-9A-F-]+)\\),[ \n]*version\\(([0-9.]+)\\)[^@]*helpstring\\(\"([^\"]+)\"\\)[ \n]*@\nlibrary ")
    message(FATAL_ERROR "The IDL has no library")
endif()
set(KEL_LIBRARY_ID "${CMAKE_MATCH_1}")
set(KEL_LIBRARY_VERSION "${CMAKE_MATCH_2}")
set(KEL_LIBRARY_TITLE "${CMAKE_MATCH_3}")

set(KEL_INTERFACES "")
string(REGEX MATCHALL "uuid\\([0-9A-F-]+\\)[^@]*@\n(disp)?interface [A-Za-z0-9_]+" found "${idl}")
foreach(one IN LISTS found)
    string(REGEX MATCH "uuid\\(([0-9A-F-]+)\\).*\n([a-z]+) ([A-Za-z0-9_]+)" matched "${one}")
    set(name "${CMAKE_MATCH_3}")
    list(APPEND KEL_INTERFACES "${name}")
    set(KEL_${name}_ID "${CMAKE_MATCH_1}")
    # The platform's own, for events and for all others.
    set(KEL_${name}_MARSHALLER "00020424-0000-0000-C000-000000000046")
    if(CMAKE_MATCH_2 STREQUAL "dispinterface")
        set(KEL_${name}_MARSHALLER "00020420-0000-0000-C000-000000000046")
    endif()
endforeach()

# kel_class(class [PROGRAM name] [CLASS_TITLE title] [BITMAP id])
# PROGRAM: the name registered in place of the class's own. CLASS_TITLE: the default value of the
# class key where it is not the usual title. BITMAP: a control, with that toolbox bitmap.
macro(kel_class class)
    cmake_parse_arguments(arg "" "PROGRAM;CLASS_TITLE;BITMAP" "" ${ARGN})
    if(NOT idl MATCHES "uuid\\(([0-9A-F-]+)\\)[^@]*@\ncoclass ${class}\n")
        message(FATAL_ERROR "The IDL has no class ${class}")
    endif()
    set(KEL_${class}_ID "${CMAKE_MATCH_1}")
    set(name "${class}")
    if(arg_PROGRAM)
        set(name "${arg_PROGRAM}")
    endif()
    set(KEL_${class}_PROGRAM "KelUtils.${name}")
    set(KEL_${class}_TITLE "${name} Class")
    set(KEL_${class}_CLASS_TITLE "${name} Class")
    if(arg_CLASS_TITLE)
        set(KEL_${class}_CLASS_TITLE "${arg_CLASS_TITLE}")
    endif()
    set(KEL_${class}_BITMAP "${arg_BITMAP}")
    list(APPEND KEL_CLASSES "${class}")
endmacro()

set(KEL_CLASSES "")
kel_class(KelTerminal BITMAP 101)
kel_class(ConnectSerialDialog)
kel_class(UploadFirmwareDialog)
kel_class(Preprocessor)
kel_class(RecorderDialog)
kel_class(CompassCalibDialog)
kel_class(HTMLWindow PROGRAM HTMLDialog)
kel_class(HTMLPageData)
kel_class(KelScript)
kel_class(KelObjects)
kel_class(ConnectKelGateDialog)
kel_class(NewSessionDialog)
kel_class(PressureOffsetDialog)
kel_class(MultiSelectDialog)
kel_class(PreprocessorExtender)
kel_class(StatusDialog)
kel_class(DataGrid BITMAP 157)
kel_class(HTMLChildWindow CLASS_TITLE "KelUtils.HTMLChildWindow" BITMAP 162)
