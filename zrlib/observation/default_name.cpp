#include "zrlib/observation/default_name.h"

#include "zrlib/frame/module.h"
#include "zrlib/frame/text_codes.h"

HCString zr::DefaultName() { return ZRGetModule()->FindText(ZR_TEXT_UNTITLED); }
