#include "zrlib/observation/names.h"

#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/frame/text_codes.h"
#include "zrlib/frame/texts.h"

HCString zr::DefaultName() { return FindText(ZR_TEXT_UNTITLED); }

HCString zr::ReadText(const HCString& name)
{
    const ShortLockGuard guard(g_dataLock);
    return name;
}

void zr::WriteText(HCString& name, const HCString& value)
{
    const ShortLockGuard guard(g_dataLock);
    name = value;
}
