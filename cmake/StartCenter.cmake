# sc_add_library(<name> [DEPENDS <targets>...])
#
# One static library per subsystem folder, made of the .cpp files that lie
# directly in that folder. Programs inside a subsystem live in sub folders and
# declare their own targets.
function(sc_add_library name)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    file(GLOB headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE "${CMAKE_CURRENT_SOURCE_DIR}")
        target_link_libraries(${name} INTERFACE ${ARG_DEPENDS})
        return()
    endif()
    add_library(${name} STATIC ${sources} ${headers})
    target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
endfunction()
