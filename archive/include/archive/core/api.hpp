#pragma once

// Marks what libtqarchivecore exports; everything else in it stays private.
#if defined(TQARCHIVE_BUILDING)
#define TQARCHIVE_API __attribute__((visibility("default")))
#else
#define TQARCHIVE_API
#endif
