// A library that has the other one check itself while both are loaded.

#include "zrlib/zrlib.h"

extern "C" __attribute__((visibility("default"))) const int g_result = ZRTestAll(1);
