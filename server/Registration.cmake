# Writes what makes the classes known: a registry script for each, and the manifest for those who do
# without a registry.
include("${PROJECT_SOURCE_DIR}/interfaces/Contents.cmake")
file(READ "${CMAKE_CURRENT_SOURCE_DIR}/registry/control_keys.rgs.in" control_keys_template)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS registry/control_keys.rgs.in)

# What the registry script of a control says as a number.
set(control_attributes [[

                miscStatusContent="recomposeonresize,cantlinkinside,insideout,activatewhenvisible,setclientsitefirst"]])

set(type_library_id "${KEL_LIBRARY_ID}")
set(manifest_classes "")
foreach(class IN LISTS KEL_CLASSES)
    set(class_id "${KEL_${class}_ID}")
    set(program_id "${KEL_${class}_PROGRAM}")
    set(title "${KEL_${class}_TITLE}")
    set(class_title "${KEL_${class}_CLASS_TITLE}")
    set(bitmap "${KEL_${class}_BITMAP}")
    set(control_keys "")
    set(attributes "")
    if(bitmap)
        string(CONFIGURE "${control_keys_template}" control_keys @ONLY)
        set(attributes "${control_attributes}")
    endif()
    configure_file(registry/class.rgs.in "registry/${class}.rgs" @ONLY NEWLINE_STYLE CRLF)
    string(APPEND manifest_classes "
        <comClass clsid=\"{${class_id}}\" progid=\"${program_id}.1\" description=\"${title}\"
                tlbid=\"{${type_library_id}}\" threadingModel=\"Apartment\"${attributes}>
            <progid>${program_id}</progid>
        </comClass>")
endforeach()

set(manifest_interfaces "")
foreach(interface IN LISTS KEL_INTERFACES)
    string(APPEND manifest_interfaces "
    <comInterfaceExternalProxyStub name=\"${interface}\" iid=\"{${KEL_${interface}_ID}}\"
            tlbid=\"{${type_library_id}}\" proxyStubClsid32=\"{${KEL_${interface}_MARSHALLER}}\"/>")
endforeach()
configure_file(KelUtils.manifest.in KelUtils.manifest @ONLY NEWLINE_STYLE CRLF)
