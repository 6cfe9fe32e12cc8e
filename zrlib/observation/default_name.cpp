#include "zrlib/observation/default_name.h"

#include "hcbase/text_table.h"
#include "zrlib/frame/module.h"
#include "zrlib/frame/text_codes.h"

HCString zr::DefaultName()
{
    const char* name = nullptr;
    HFTextGet(ZRGetModule()->m_hText, ZR_TEXT_UNTITLED, &name);
    return name;
}
