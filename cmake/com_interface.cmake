# What every in-process server needs of its interface description: the C++ header, the identifiers
# and the type library, and the registry scripts, which take their identifiers from the same header.
find_program(WIDL NAMES x86_64-w64-mingw32-widl widl REQUIRED)
find_path(IDL_INCLUDE oaidl.idl
    PATHS /usr/include/wine/wine/windows "$ENV{MINGW_PREFIX}/include"
    NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(STDOLE2 stdole2.tlb
    PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows "$ENV{SYSTEMROOT}/System32"
    NO_CMAKE_FIND_ROOT_PATH REQUIRED)

# com_interface(LIBRARY SERVER PREFIX)
#
# Compiles SERVER.idl of the current folder and makes the static library LIBRARY: the header
# SERVER.h for everyone who speaks the interface, with the identifiers' values. SERVER.tlb stands in
# the current binary folder, and so do class.rgs and its like, in which the identifiers named
# PREFIX_... of identifiers.h are filled in.
function(com_interface library server prefix)
    set(sources ${CMAKE_CURRENT_SOURCE_DIR})
    set(generated ${CMAKE_CURRENT_BINARY_DIR})
    set(idl ${sources}/${server}.idl)
    set(widl ${WIDL} -m64 -I ${IDL_INCLUDE} -I ${sources})

    add_custom_command(
        OUTPUT ${generated}/include/${server}.h ${generated}/${server}_i.c
               ${generated}/${server}.tlb
        COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}/include
        COMMAND ${widl} -h -o ${generated}/include/${server}.h ${server}.idl
        COMMAND ${widl} -u -o ${generated}/${server}_i.c ${server}.idl
        COMMAND ${widl} -L ${STDOLE2} -D TYPELIB_PASS -D LONG_PTR=HOST_LONG_PTR
                -t -o ${generated}/${server}.tlb ${server}.idl
        # What is generated names its source, and it is handed out.
        WORKING_DIRECTORY ${sources}
        DEPENDS ${idl} ${sources}/identifiers.h
        COMMENT "Compiling the interface description of ${server}")

    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${sources}/identifiers.h)
    file(STRINGS ${sources}/identifiers.h definitions REGEX "^#define ${prefix}_")
    foreach(definition IN LISTS definitions)
        if(definition MATCHES "^#define ([A-Z_]+) ([0-9A-F-]+)$")
            set(${CMAKE_MATCH_1} ${CMAKE_MATCH_2})
        endif()
    endforeach()
    file(GLOB scripts CONFIGURE_DEPENDS ${sources}/*class.rgs.in)
    foreach(script IN LISTS scripts)
        get_filename_component(name ${script} NAME_WLE)
        configure_file(${script} ${generated}/${name} @ONLY)
    endforeach()

    add_library(${library} STATIC ${generated}/${server}_i.c ${generated}/include/${server}.h)
    target_include_directories(${library} SYSTEM PUBLIC ${generated}/include)
endfunction()

# com_server(SERVER LIBRARY...)
#
# Makes SERVER.dll from the current folder's SERVER.rc and SERVER.def and the libraries' code.
function(com_server server)
    add_library(${server} SHARED ${server}.rc ${server}.def)
    target_link_libraries(${server} ${ARGN})
    product_symbols(${server})
    target_include_directories(${server} PRIVATE
        ${CMAKE_CURRENT_BINARY_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    set_source_files_properties(${server}.rc PROPERTIES OBJECT_DEPENDS
        "${CMAKE_CURRENT_BINARY_DIR}/${server}.tlb;${CMAKE_CURRENT_BINARY_DIR}/class.rgs;${CMAKE_CURRENT_SOURCE_DIR}/appid.rgs;${CMAKE_CURRENT_SOURCE_DIR}/${server}.manifest")
endfunction()
