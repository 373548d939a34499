# CPack runs this on the finished Debian package: its data archive loses the
# entry for /opt itself. dpkg would otherwise count /opt as the package's own
# folder and, removing the package, try to remove /opt and warn that it is not
# empty. /opt exists on every Debian system, so nothing is lost.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    if(NOT package MATCHES "\\.deb$")
        continue()
    endif()
    set(work "${CPACK_TOPLEVEL_DIRECTORY}/omit-opt")
    file(REMOVE_RECURSE "${work}")
    file(MAKE_DIRECTORY "${work}")
    execute_process(COMMAND ar x "${package}" WORKING_DIRECTORY "${work}" RESULT_VARIABLE status)
    file(GLOB control RELATIVE "${work}" "${work}/control.tar.*")
    file(GLOB data RELATIVE "${work}" "${work}/data.tar.*")
    if(NOT status EQUAL 0 OR NOT control OR NOT data STREQUAL "data.tar.xz")
        message(FATAL_ERROR "${package} is no Debian package")
    endif()
    # The archive is unpacked and packed again with every member but ./opt/,
    # in the order it had; the package is made with xz.
    execute_process(COMMAND xz -d data.tar.xz WORKING_DIRECTORY "${work}" RESULT_VARIABLE unpacked)
    file(MAKE_DIRECTORY "${work}/tree")
    execute_process(COMMAND tar -xpf data.tar -C tree WORKING_DIRECTORY "${work}" RESULT_VARIABLE extracted)
    execute_process(COMMAND tar -tf data.tar WORKING_DIRECTORY "${work}" OUTPUT_VARIABLE members)
    string(REGEX REPLACE "(^|\n)\\./opt/\n" "\\1" members "${members}")
    file(WRITE "${work}/members" "${members}")
    execute_process(COMMAND tar -cf data.tar --no-recursion --verbatim-files-from --owner=0 --group=0
                            --numeric-owner -C tree -T members
                    WORKING_DIRECTORY "${work}" RESULT_VARIABLE repacked)
    execute_process(COMMAND xz -6 data.tar WORKING_DIRECTORY "${work}" RESULT_VARIABLE compressed)
    if(NOT unpacked EQUAL 0 OR NOT extracted EQUAL 0 OR NOT repacked EQUAL 0 OR NOT compressed EQUAL 0)
        message(FATAL_ERROR "cannot rewrite the data of ${package}")
    endif()
    file(REMOVE "${package}")
    execute_process(COMMAND ar rc "${package}" debian-binary ${control} data.tar.xz
                    WORKING_DIRECTORY "${work}" RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "cannot write ${package}")
    endif()
    file(REMOVE_RECURSE "${work}")
endforeach()
