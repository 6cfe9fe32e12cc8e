#include <hcbase/hcbase.h>
#include <zrlib/zrlib.h>

int main()
{
    ZRSetMessagesEnabled(1);
    ZRSetOutFlags(ZR_DEST_CONSOLE);
    ZROut("used from outside", "main", 1);
    HCVersion version;
    return HFVersionGet("ZRLIB", version) ? 0 : 1;
}
