// The version of every program and library of the product.
#pragma once

#define DEPOT_VERSION_NUMBERS 13, 0, 0, 208
#define DEPOT_VERSION_TEXT "13.0.0.208"
