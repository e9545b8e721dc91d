/* The component's identifiers: the only place where they are written down. The interface
 * description, the registry scripts and the code all take them from here. They never change. */
#pragma once

// clang-format off
// NOLINTBEGIN(bugprone-macro-parentheses): these are texts, not expressions.
#define DEPOTINTR_IID 052916f3-9678-4b31-834d-7904c551b1d5
#define DEPOTINTR_CLSID 38a373c9-e31b-4505-a763-b14081a1332b
#define DEPOTINTR_LIBID f83fe105-a22e-4399-9b89-1a6c8cb957dd
#define DEPOTINTR_APPID 85456e20-a6ec-4ddc-bffd-17a26fb3a463
// NOLINTEND(bugprone-macro-parentheses)
// clang-format on
