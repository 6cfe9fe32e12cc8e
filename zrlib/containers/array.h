/// ZRArray: the library's name for the foundation's array.
#pragma once

#include "hcbase/array.h"

/// An HCArray, whose header documents the operations.
template <typename T> class ZRArray : public HCArray<T> {
};
