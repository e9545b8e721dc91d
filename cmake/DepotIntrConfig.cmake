# find_package(DepotIntr) makes two targets:
#   DepotIntr::DepotIntr    the interface's headers, DepotIntr.h and, for C++17, depotintr.hpp
#   DepotIntr::identifiers  the same with the values of its identifiers; it is compiled with the client, so
#                           that it suits every compiler
# DepotIntr_RUNTIME_DIR is the folder of the libraries that a client finds through COM at run time.
get_filename_component(DepotIntr_PREFIX "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
set(DepotIntr_RUNTIME_DIR "${DepotIntr_PREFIX}/bin")

if(NOT TARGET DepotIntr::DepotIntr)
    add_library(DepotIntr::DepotIntr INTERFACE IMPORTED)
    set_target_properties(DepotIntr::DepotIntr PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${DepotIntr_PREFIX}/include"
        INTERFACE_LINK_LIBRARIES "ole32;oleaut32")

    # A client may have no C compiler; the file is valid in both languages.
    set_source_files_properties("${DepotIntr_PREFIX}/include/DepotIntr_i.c" PROPERTIES LANGUAGE CXX)
    add_library(DepotIntr_identifiers STATIC EXCLUDE_FROM_ALL
        "${DepotIntr_PREFIX}/include/DepotIntr_i.c")
    target_link_libraries(DepotIntr_identifiers PUBLIC DepotIntr::DepotIntr)
    add_library(DepotIntr::identifiers ALIAS DepotIntr_identifiers)
endif()
