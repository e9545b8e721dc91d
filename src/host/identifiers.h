/* The component's identifiers: the only place where they are written down. The interface
 * description, the registry scripts and the code all take them from here. They never change. */
#pragma once

// clang-format off
// NOLINTBEGIN(bugprone-macro-parentheses): these are texts, not expressions.
#define DEPOTINTR_IID 052916F3-9678-4B31-834D-7904C551B1D5
#define DEPOTINTR_IID2 E62D9385-0E3A-4F9F-8CAE-C176BDDC22E6
#define DEPOTINTR_DEPOTS_IID 32CD0A58-3D67-472F-8F82-BD615884CF55
#define DEPOTINTR_DEPOT_IID 41C12290-A647-40FC-BBBD-6AA7368D5E90
#define DEPOTINTR_CLSID 38A373C9-E31B-4505-A763-B14081A1332B
#define DEPOTINTR_LIBID F83FE105-A22E-4399-9B89-1A6C8CB957DD
#define DEPOTINTR_APPID 85456E20-A6EC-4DDC-BFFD-17A26FB3A463
// NOLINTEND(bugprone-macro-parentheses)
// clang-format on
