// The version of the library, for the preprocessor.
//
//   #if KXCORE_VERSION >= 10200 // 1.2.0
//
// It is that of the headers. A program that is linked with an older library of the same major version may lack
// functions.
#pragma once

#define KXCORE_VERSION_MAJOR 1
#define KXCORE_VERSION_MINOR 0
#define KXCORE_VERSION_PATCH 0

/// The version as one number, two digits for each part after the first.
#define KXCORE_VERSION (KXCORE_VERSION_MAJOR * 10000 + KXCORE_VERSION_MINOR * 100 + KXCORE_VERSION_PATCH)

/// The version as a string literal.
#define KXCORE_VERSION_STRING "1.0.0"
