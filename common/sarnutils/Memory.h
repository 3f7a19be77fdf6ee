// The allocator that this library and its callers share across their borders.
#pragma once

#include <cstddef>

#include "sarnutils/Export.h"

// A block of at least size bytes, aligned for every fundamental type. Throws std::bad_alloc. The
// block is released by sarn_operator_delete or by free.
SARNUTILS_API void* sarn_operator_new(std::size_t size);

// Null does nothing.
SARNUTILS_API void sarn_operator_delete(void* block) noexcept;
