# CPack runs this before it packs the staged files: dpkg-shlibdeps turns the
# libraries the programs link into the package's Depends, and those of the
# start-sound program into Recommends only, since the launcher runs silently
# without it: a user who wants no sound need not install the sound server's
# client library.

# The ELF files among the staged files, the sound program apart.
file(GLOB_RECURSE staged LIST_DIRECTORIES false "${CPACK_TEMPORARY_DIRECTORY}/*")
set(programs "")
set(sound "")
foreach(path IN LISTS staged)
    if(IS_SYMLINK "${path}")
        continue()
    endif()
    file(READ "${path}" magic LIMIT 4 HEX)
    if(NOT magic STREQUAL "7f454c46")
        continue()
    endif()
    if(path MATCHES "/MacOS/startsound$")
        list(APPEND sound "${path}")
    else()
        list(APPEND programs "${path}")
    endif()
endforeach()

# dpkg-shlibdeps reads the source package's control file from debian/.
set(work "${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps")
file(REMOVE_RECURSE "${work}")
file(WRITE "${work}/debian/control" "")
execute_process(COMMAND dpkg-shlibdeps -O -dDepends ${programs} -dRecommends ${sound}
                WORKING_DIRECTORY "${work}"
                OUTPUT_VARIABLE substitutions ERROR_VARIABLE errors RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "dpkg-shlibdeps failed:\n${errors}")
endif()

foreach(field Depends Recommends)
    string(TOUPPER "${field}" upper)
    if(substitutions MATCHES "shlibs:${field}=([^\n]*)")
        set(found "${CMAKE_MATCH_1}")
        if(CPACK_DEBIAN_PACKAGE_${upper})
            set(CPACK_DEBIAN_PACKAGE_${upper} "${found}, ${CPACK_DEBIAN_PACKAGE_${upper}}")
        else()
            set(CPACK_DEBIAN_PACKAGE_${upper} "${found}")
        endif()
    endif()
endforeach()
