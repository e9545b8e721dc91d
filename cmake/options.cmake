# Compiler settings that every target of the project shares, as the interface library depot_options.
add_library(depot_options INTERFACE)
target_compile_features(depot_options INTERFACE cxx_std_20)
if(MSVC)
    # Sources and what they print are UTF-8; the language is the standard's, as with the other compilers.
    target_compile_options(depot_options INTERFACE
        /W4 /permissive- /utf-8 /EHsc /Zc:__cplusplus /Zc:preprocessor /bigobj /Gy)
    target_compile_definitions(depot_options INTERFACE _CRT_SECURE_NO_WARNINGS _CRT_NONSTDC_NO_WARNINGS)
    target_link_options(depot_options INTERFACE /OPT:REF /Brepro)
    set(depot_small_code /O1)
else()
    target_compile_options(depot_options INTERFACE
        -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wformat=2 -Wundef -Wcast-qual
        -Woverloaded-virtual $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wlogical-op>
        # From 13 on it takes a std::move within an array of known length for one beyond its end.
        $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,13>>:-Wno-array-bounds> -Wvla
        -fstack-protector-strong -ffunction-sections -fdata-sections
        $<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
    set(depot_small_code -Os)
endif()

if(WIN32)
    # Windows 7 is the oldest system whose calls are used without asking for them at run time.
    target_compile_definitions(depot_options INTERFACE
        _WIN32_WINNT=0x0601 WINVER=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX)
endif()
# The runtime is linked in: the product may depend on system libraries only. With Visual Studio's compiler, which
# builds no packages, it is not: tests replace what is imported from it.
if(WIN32 AND NOT MSVC)
    target_link_options(depot_options INTERFACE
        -static -fstack-protector-strong -Wl,--gc-sections -Wl,--no-insert-timestamp)
    # dlltool puts its own process id into the names of temporary members; see ar -D as well.
    set(CMAKE_CXX_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
endif()

# What the product is made of carries line tables, from which the symbol files beside the libraries are
# made. Paths in them, and in messages, are the same wherever the tree stands.
add_library(product_options INTERFACE)
if(NOT MSVC)
    target_compile_options(product_options INTERFACE
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build/any)
endif()
if(MSVC)
    target_compile_options(product_options INTERFACE $<$<CONFIG:Release>:/Zi>)
elseif(WIN32)
    target_compile_options(product_options INTERFACE $<$<CONFIG:Release>:-gdwarf-4;-g1>)
    include(CheckLinkerFlag)
    check_linker_flag(CXX "LINKER:--build-id,--pdb=probe.pdb" LINKER_WRITES_PDB)
endif()

# product_symbols(LIBRARY)
#
# Leaves LIBRARY.pdb beside the library that is shipped. The linker names functions and data in it;
# without CodeView from the compiler it holds no lines. For a build without optimization it would take
# minutes.
function(product_symbols library)
    target_link_libraries(${library} product_options)
    if(MSVC)
        target_link_options(${library} PRIVATE $<$<CONFIG:Release>:/DEBUG;/OPT:REF;/OPT:ICF>)
    elseif(LINKER_WRITES_PDB)
        target_link_options(${library} PRIVATE
            "$<$<CONFIG:Release>:LINKER:--build-id,--pdb=$<TARGET_FILE_DIR:${library}>/${library}.pdb>")
    endif()
endfunction()

if(DEPOTINTR_COMPILE_ONLY)
    foreach(language C CXX)
        set(CMAKE_${language}_LINK_EXECUTABLE "<CMAKE_COMMAND> -E touch <TARGET>")
        set(CMAKE_${language}_CREATE_SHARED_LIBRARY "<CMAKE_COMMAND> -E touch <TARGET> <TARGET_IMPLIB>")
        set(CMAKE_${language}_CREATE_SHARED_MODULE "<CMAKE_COMMAND> -E touch <TARGET>")
    endforeach()
endif()

if(DEPOTINTR_COVERAGE)
    target_compile_options(depot_options INTERFACE --coverage -O0 -fprofile-update=atomic)
    target_link_options(depot_options INTERFACE --coverage)
endif()

if(DEPOTINTR_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all)
    target_compile_options(depot_options INTERFACE ${sanitizers} -fno-omit-frame-pointer)
    target_link_options(depot_options INTERFACE ${sanitizers})
endif()

# libFuzzer counts what every file of the code does; only the targets bring its main program.
if(DEPOTINTR_FUZZ)
    target_compile_options(depot_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
