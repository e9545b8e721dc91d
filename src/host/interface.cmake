# The interface description compiled into the C++ header, the identifiers and the type library, and
# the registry script of the class, which takes its identifiers from the same header.
find_program(WIDL NAMES x86_64-w64-mingw32-widl widl REQUIRED)
find_path(IDL_INCLUDE oaidl.idl
    PATHS /usr/include/wine/wine/windows "$ENV{MINGW_PREFIX}/include"
    NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(STDOLE2 stdole2.tlb
    PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows "$ENV{SYSTEMROOT}/System32"
    NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(host ${CMAKE_CURRENT_SOURCE_DIR})
set(generated ${CMAKE_CURRENT_BINARY_DIR})
set(idl ${host}/DepotIntr.idl)
set(widl ${WIDL} -m64 -I ${IDL_INCLUDE} -I ${host})

add_custom_command(
    OUTPUT ${generated}/include/DepotIntr.h ${generated}/DepotIntr_i.c ${generated}/DepotIntr.tlb
    COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}/include
    COMMAND ${widl} -h -o ${generated}/include/DepotIntr.h ${idl}
    COMMAND ${widl} -u -o ${generated}/DepotIntr_i.c ${idl}
    COMMAND ${widl} -L ${STDOLE2} -D TYPELIB_PASS -D LONG_PTR=HOST_LONG_PTR
            -t -o ${generated}/DepotIntr.tlb ${idl}
    DEPENDS ${idl} ${host}/identifiers.h
    COMMENT "Compiling the interface description")

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${host}/identifiers.h)
file(STRINGS ${host}/identifiers.h definitions REGEX "^#define DEPOTINTR_")
foreach(definition IN LISTS definitions)
    if(definition MATCHES "^#define ([A-Z_]+) ([0-9a-f-]+)$")
        set(${CMAKE_MATCH_1} ${CMAKE_MATCH_2})
    endif()
endforeach()
configure_file(${host}/class.rgs.in ${generated}/class.rgs @ONLY)

# The header for every layer that speaks the interface, with the identifiers' values.
add_library(depot_interface STATIC ${generated}/DepotIntr_i.c ${generated}/include/DepotIntr.h)
target_include_directories(depot_interface SYSTEM PUBLIC ${generated}/include)
