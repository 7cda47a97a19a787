# Writes the table of what the library registers, as C++.
include("${PROJECT_SOURCE_DIR}/interfaces/Contents.cmake")
set(classes "")
foreach(class IN LISTS KEL_CLASSES)
    set(bitmap 0)
    if(KEL_${class}_BITMAP)
        set(bitmap "${KEL_${class}_BITMAP}")
    endif()
    string(APPEND classes "
    {\"${class}\", \"{${KEL_${class}_ID}}\", \"${KEL_${class}_PROGRAM}\", \"${KEL_${class}_TITLE}\",
     \"${KEL_${class}_CLASS_TITLE}\", ${bitmap}},")
endforeach()
set(interfaces "")
foreach(interface IN LISTS KEL_INTERFACES)
    string(APPEND interfaces "
    {\"${interface}\", \"{${KEL_${interface}_ID}}\", \"{${KEL_${interface}_MARSHALLER}}\"},")
endforeach()
configure_file(library_contents.cpp.in library_contents.cpp @ONLY)
