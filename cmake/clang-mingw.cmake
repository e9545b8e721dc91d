# Compiles for 64-bit Windows with clang, the second compiler, by the headers of mingw-w64's g++, which clang of
# Debian does not find by itself. It finds no libraries either: see DEPOTINTR_COMPILE_ONLY.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include OUTPUT_VARIABLE headers
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_TARGET x86_64-w64-mingw32)
    set(CMAKE_${language}_FLAGS_INIT "-nostdlibinc -Wno-unused-command-line-argument")
    set(CMAKE_${language}_STANDARD_INCLUDE_DIRECTORIES /usr/x86_64-w64-mingw32/include)
endforeach()
string(APPEND CMAKE_CXX_FLAGS_INIT " -nostdinc++")
list(PREPEND CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
    ${headers}/c++ ${headers}/c++/x86_64-w64-mingw32 ${headers}/c++/backward)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
