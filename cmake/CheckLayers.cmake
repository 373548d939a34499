# cmake -DSOURCE_DIR=<dir> -DLAYERS=<lowest>,...,<highest> -P CheckLayers.cmake
#
# Fails when a library's source includes a header of a library above it. The
# sources of a library are the .cpp and .h files lying directly in its folder,
# except the program's main.cpp: programs sit on top of every library.
if(NOT SOURCE_DIR OR NOT LAYERS)
    message(FATAL_ERROR "usage: cmake -DSOURCE_DIR=<dir> -DLAYERS=<a,b,...> -P CheckLayers.cmake")
endif()
string(REPLACE "," ";" LAYERS "${LAYERS}")

function(library_files layer out)
    file(GLOB files "${SOURCE_DIR}/${layer}/*.cpp" "${SOURCE_DIR}/${layer}/*.h")
    list(FILTER files EXCLUDE REGEX "/main\\.cpp$")
    set(${out} ${files} PARENT_SCOPE)
endfunction()

# Which layer each header belongs to, by its file name (includes name headers
# without folders, since every library's folder is on the include path).
set(rank 0)
foreach(layer IN LISTS LAYERS)
    library_files(${layer} files)
    foreach(file IN LISTS files)
        if(file MATCHES "\\.h$")
            get_filename_component(header "${file}" NAME)
            if(DEFINED owner_${header})
                message(FATAL_ERROR "${header} exists in ${owner_${header}} and ${layer}")
            endif()
            set(owner_${header} ${layer})
            set(rank_${header} ${rank})
        endif()
    endforeach()
    math(EXPR rank "${rank} + 1")
endforeach()

set(violations "")
set(rank 0)
foreach(layer IN LISTS LAYERS)
    library_files(${layer} files)
    foreach(file IN LISTS files)
        file(STRINGS "${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"]+\"")
        foreach(line IN LISTS includes)
            string(REGEX REPLACE "^[^\"]*\"([^\"]+)\".*$" "\\1" included "${line}")
            get_filename_component(header "${included}" NAME)
            if(DEFINED rank_${header} AND rank_${header} GREATER rank)
                file(RELATIVE_PATH shown "${SOURCE_DIR}" "${file}")
                string(APPEND violations
                       "\n  ${shown} (${layer}) includes ${header} (${owner_${header}})")
            endif()
        endforeach()
    endforeach()
    math(EXPR rank "${rank} + 1")
endforeach()

if(violations)
    message(FATAL_ERROR "Headers of a higher layer included (order: ${LAYERS}):${violations}")
endif()
list(JOIN LAYERS " < " order)
message(STATUS "Layers point down: ${order}")
