# Writes the `startcenter` command at install time, when the install prefix
# is final (`cmake --install --prefix` and CPack choose it late).
#
# In: SC_BUNDLE_PATH (absolute, or relative to the install prefix),
#     SC_COMMAND_TEMPLATE, SC_COMMAND_OUTPUT.
if(IS_ABSOLUTE "${SC_BUNDLE_PATH}")
    set(bundle "${SC_BUNDLE_PATH}")
else()
    set(bundle "${CMAKE_INSTALL_PREFIX}/${SC_BUNDLE_PATH}")
endif()
set(SC_INSTALLED_LAUNCHER "${bundle}/Contents/MacOS/Start-Center")
configure_file("${SC_COMMAND_TEMPLATE}" "${SC_COMMAND_OUTPUT}" @ONLY)
