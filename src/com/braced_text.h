// The text form of an identifier that is written down as a macro.
#pragma once

// Two steps, so that the identifier's value is made a text and not its name.
#define DEPOT_TEXT_OF(identifier) #identifier
#define DEPOT_BRACED_TEXT(identifier) "{" DEPOT_TEXT_OF(identifier) "}"
