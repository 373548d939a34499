# sc_add_library(<name> [DEPENDS <targets>...])
#
# One static library per subsystem folder, made of the .cpp files that lie
# directly in that folder. Programs inside a subsystem live in sub folders and
# declare their own targets. A library may depend only on the libraries before
# it in SC_LAYERS.
function(sc_add_library name)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    list(FIND SC_LAYERS ${name} rank)
    foreach(dependency IN LISTS ARG_DEPENDS)
        list(FIND SC_LAYERS ${dependency} dependency_rank)
        if(dependency_rank GREATER_EQUAL rank)
            message(FATAL_ERROR "${name} may not depend on ${dependency}: it is not below it in SC_LAYERS")
        endif()
    endforeach()
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
