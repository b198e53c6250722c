// Large pieces of zeroed memory for the event arena. Where the system allows,
// they come straight from it as fresh pages, marked for large (2 MB) pages:
// a block of a million events then takes a few dozen page faults instead of
// tens of thousands. Elsewhere they come from calloc.
#pragma once

#include <cstddef>

namespace sorvel {

// `bytes` of memory, all zero; null when there is none to be had.
void* get_zeroed(size_t bytes);

// Gives back memory from get_zeroed, with the size it was asked for.
void put_zeroed(void* memory, size_t bytes);

}  // namespace sorvel
