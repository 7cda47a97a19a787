# Runs widl once for each output. WIDL, SOURCE, OUTPUT (without ending), PLATFORM_IDL and
# PLATFORM_TYPE_LIBRARIES are given.
#
# widl reports a miscounted base interface only by the warning "duplicate uuid", so that warning is
# an error here. It also comes, harmlessly, for the IUnknown that the page classes expose.
set(harmless "warning: duplicate uuid {00000000-0000-0000-c000-000000000046}")

foreach(kind "-t;tlb" "-h;h" "-u;_i.c")
    list(GET kind 0 option)
    list(GET kind 1 ending)
    if(ending MATCHES "^_")
        set(file "${OUTPUT}${ending}")
    else()
        set(file "${OUTPUT}.${ending}")
    endif()
    execute_process(
        COMMAND "${WIDL}" --win32 -I . -I "${PLATFORM_IDL}" -L "${PLATFORM_TYPE_LIBRARIES}"
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

# The library tells when it was generated, as a text and as a number behind it: here always the same,
# so that the same sources give the same bytes. Perl is in every Debian.
execute_process(
    COMMAND perl -0777 -i -p -e
        [[s/(Created by WIDL version \S+ at ).{24}(\nW*\x13\0).{4}(?=W)/$1Thu Jan  1 00:00:00 1970$2\0\0\0\0/s or die "no date"]]
        "${OUTPUT}.tlb"
    RESULT_VARIABLE result
    ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    file(REMOVE "${OUTPUT}.tlb")
    message(FATAL_ERROR "The date could not be taken out of ${OUTPUT}.tlb: ${output}")
endif()
