# Runs widl once for each output. WIDL, SOURCE, OUTPUT (without ending), PLATFORM_IDL and
# PLATFORM_TYPE_LIBRARIES are given.
#
# widl reports a miscounted base interface only by the warning "duplicate uuid", so that warning is
# an error here. It also comes, harmlessly, for the IUnknown that the page classes expose.
set(harmless "warning: duplicate uuid {00000000-0000-0000-c000-000000000046}")

# The library tells when it was generated: always the same, for the same bytes.
foreach(kind "-t;tlb" "-h;h" "-u;_i.c")
    list(GET kind 0 option)
    list(GET kind 1 ending)
    if(ending MATCHES "^_")
        set(file "${OUTPUT}${ending}")
    else()
        set(file "${OUTPUT}.${ending}")
    endif()
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=0 "${WIDL}" --win32 -I . -I "${PLATFORM_IDL}" -L "${PLATFORM_TYPE_LIBRARIES}"
            ${option} -o "${file}" "${SOURCE}"
        RESULT_VARIABLE result
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    string(REPLACE "${harmless}" "" remarks "${output}")
    string(STRIP "${remarks}" remarks)
    if(NOT result EQUAL 0 OR remarks MATCHES "duplicate uuid")
        file(REMOVE "${file}")
        message(FATAL_ERROR "widl ${option} ${SOURCE} failed:\n${output}")
    endif()
    if(NOT remarks STREQUAL "")
        message("${remarks}")
    endif()
endforeach()
