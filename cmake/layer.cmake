# depot_layer(NAME [WAITING] [PURE file...] [WINDOWS file...] [LINKS library...])
#
# Makes the static library depot_NAME of one folder under src/. PURE files use the standard library
# only and are built on every system; WINDOWS files are left out of the native Linux build. LINKS
# names the libraries of lower layers and the system libraries that the folder calls: these lines
# are the layer diagram. Code that is WAITING for files and servers most of its time is compiled for
# size.
function(depot_layer name)
    cmake_parse_arguments(layer "WAITING" "" "PURE;WINDOWS;LINKS" ${ARGN})
    set(sources ${layer_PURE})
    if(WIN32)
        list(APPEND sources ${layer_WINDOWS})
    else()
        list(FILTER layer_LINKS INCLUDE REGEX "^depot_")
    endif()
    if(sources)
        add_library(depot_${name} STATIC ${sources})
        target_link_libraries(depot_${name} PRIVATE product_options)
        if(layer_WAITING AND WIN32)
            target_compile_options(depot_${name} PRIVATE $<$<CONFIG:Release>:${depot_small_code}>)
        endif()
        set(scope PUBLIC)
    else()
        add_library(depot_${name} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_include_directories(depot_${name} ${scope} ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(depot_${name} ${scope} depot_options ${layer_LINKS})
endfunction()
