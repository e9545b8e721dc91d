#include <cstdio>
#include <functional>
#include <string>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "platform/handles.h"
#include "platform/win32.h"

namespace depot::bench {
namespace {

constexpr char kLibrary[] = "DepotIntr.dll";
const IMAGE_NT_HEADERS64& HeadersOf(const BYTE* image) {
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    return *reinterpret_cast<const IMAGE_NT_HEADERS64*>(image + dos.e_lfanew);
}

// The bytes of the file without its debugging information, which packages keep in a file of its
// own.
std::size_t ProductBytes(const IMAGE_NT_HEADERS64& headers) {
    std::size_t bytes = headers.OptionalHeader.SizeOfHeaders;
    const IMAGE_SECTION_HEADER* const sections = IMAGE_FIRST_SECTION(&headers);
    for (WORD index = 0; index < headers.FileHeader.NumberOfSections; ++index) {
        // Debugging sections have long names, which are kept elsewhere and begin with a slash here.
        if (sections[index].Name[0] != '/') bytes += sections[index].SizeOfRawData;
    }
    return bytes;
}

// Calls `found` with the name of each library that the image imports and the count of functions.
void EachImport(const BYTE* image, const std::function<void(const char*, std::size_t)>& found) {
    const IMAGE_DATA_DIRECTORY& place =
        HeadersOf(image).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* entry =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + place.VirtualAddress);
         entry->Name != 0; ++entry) {
        const auto* thunk = reinterpret_cast<const ULONGLONG*>(image + entry->FirstThunk);
        std::size_t functions = 0;
        while (thunk[functions] != 0) ++functions;
        found(reinterpret_cast<const char*>(image + entry->Name), functions);
    }
}

}  // namespace

void MeasureLibrary() {
    UniqueModule library(LoadLibraryA(kLibrary));
    const auto* const image = reinterpret_cast<const BYTE*>(library.get());
    std::string libraries;
    std::size_t imported = 0;
    EachImport(image, [&](const char* name, std::size_t functions) {
        libraries += std::string(libraries.empty() ? "" : ", ") + name;
        imported += functions;
        // It stays loaded: only the library itself is measured.
        LoadLibraryA(name);
    });
    std::printf("\nLibrary\n%-44s %zu bytes\n", "DepotIntr.dll without debugging information",
                ProductBytes(HeadersOf(image)));
    std::printf("%-44s %zu functions of %s\n", "imports", imported, libraries.c_str());
    library.reset();
    PrintTime("load and free", [] { FreeLibrary(LoadLibraryA(kLibrary)); });
}

}  // namespace depot::bench
