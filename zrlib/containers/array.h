/// ZRArray: the library's name for the foundation's array.
#pragma once

#include "hcbase/array.h"

/// An HCArray, which tells what each operation does.
template <typename T> class ZRArray : public HCArray<T> {
};
