# Packs every PNG of the folder PICTURES into the image container CONTAINER
# with the container tool CNTTOOL. Run with cmake -P.
foreach(var CNTTOOL PICTURES CONTAINER)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "PackPictures.cmake needs -D${var}=...")
    endif()
endforeach()

file(GLOB pictures "${PICTURES}/*.png")
if(NOT pictures)
    message(FATAL_ERROR "No pictures in ${PICTURES}")
endif()
list(SORT pictures)

get_filename_component(folder "${CONTAINER}" DIRECTORY)
file(MAKE_DIRECTORY "${folder}")
file(REMOVE "${CONTAINER}")
execute_process(COMMAND "${CNTTOOL}" create "${CONTAINER}" ${pictures} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    file(REMOVE "${CONTAINER}")
    message(FATAL_ERROR "cnttool could not write ${CONTAINER} (${result})")
endif()
