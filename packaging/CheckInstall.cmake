# Installs the built project into a staging folder and checks that the result
# is a working desktop installation: the command leads to the launcher, the
# bundle carries the sample installation and its embedded programs, and the
# desktop files and icons are where the desktop looks for them.
#
# In: BUILD_DIR, WORK_DIR, VERSION, APP_ID, METAINFO.

set(failures "")
macro(fail what)
    string(APPEND failures "  ${what}\n")
endmacro()

macro(require_executable path)
    execute_process(COMMAND test -f "${path}" -a -x "${path}" RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        fail("not an executable file: ${path}")
    endif()
endmacro()

# The width and height from a PNG file's header.
function(png_size path out)
    file(READ "${path}" header OFFSET 16 LIMIT 8 HEX)
    string(SUBSTRING "${header}" 0 8 width)
    string(SUBSTRING "${header}" 8 8 height)
    math(EXPR width "0x${width}")
    math(EXPR height "0x${height}")
    set(${out} "${width}x${height}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
# DESTDIR keeps an absolute bundle folder inside the staging folder too.
execute_process(COMMAND "${CMAKE_COMMAND}" -E env "DESTDIR=${WORK_DIR}"
                        "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix /usr
                RESULT_VARIABLE status OUTPUT_QUIET)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "cmake --install failed")
endif()

set(command "${WORK_DIR}/usr/bin/startcenter")
require_executable("${command}")
file(STRINGS "${command}" exec_line REGEX "^exec ")
if(NOT exec_line MATCHES "^exec \"(/[^\"]+)/Contents/MacOS/Start-Center\" \"\\$@\"$")
    message(FATAL_ERROR "startcenter does not pass its arguments to the launcher: ${exec_line}")
endif()
set(bundle "${WORK_DIR}${CMAKE_MATCH_1}")

require_executable("${bundle}/Contents/MacOS/Start-Center")
require_executable("${bundle}/Contents/Resources/ORV.app/Contents/MacOS/ORV")
require_executable("${bundle}/Contents/Resources/Online Update.app/Contents/MacOS/Online Update")
foreach(file Contents/Info.plist Contents/Resources/ORVKonf.ini Contents/Resources/qt_de.qm
             Contents/Resources/media/images_mac.cnt)
    if(NOT EXISTS "${bundle}/${file}")
        fail("missing in the bundle: ${file}")
    endif()
endforeach()

set(share "${WORK_DIR}/usr/share")
foreach(file applications/${APP_ID}.desktop metainfo/${APP_ID}.metainfo.xml icons/hicolor/scalable/apps/${APP_ID}.svg
             man/man1/startcenter.1.gz doc/orvane-startcenter/copyright doc/orvane-startcenter/changelog.Debian.gz)
    if(NOT EXISTS "${share}/${file}")
        fail("missing: ${file}")
    endif()
endforeach()
foreach(size 16x16 22x22 24x24 32x32 48x48 64x64 128x128 256x256)
    set(icon "${share}/icons/hicolor/${size}/apps/${APP_ID}.png")
    if(NOT EXISTS "${icon}")
        fail("icon missing: ${icon}")
        continue()
    endif()
    png_size("${icon}" actual)
    if(NOT actual STREQUAL size)
        fail("icon ${size} is ${actual}")
    endif()
endforeach()

# Software centres show the newest release of the metadata as the version.
file(READ "${METAINFO}" metainfo)
string(FIND "${metainfo}" "<release version=\"${VERSION}\"" release)
if(release EQUAL -1)
    fail("the AppStream metadata has no release entry for version ${VERSION}")
endif()

if(failures)
    message(FATAL_ERROR "The installation is incomplete:\n${failures}")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
message(STATUS "Installation complete")
