/// ZRText: names of properties.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

/// Texts for clients; the library itself does not use them. They are valid from load to unload.
class ZR_API ZRText {
public:
    static const HCString ICON_FILENAME; // "IconFileName"
    static const HCString BITMAP_FILENAME; // "BitmapFileName"
    static const HCString PALETTE_NAME; // "PaletteName"
    static const HCString ORIGINAL_PATH_NAME; // "OriginalPathName"
    static const HCString FORCE_DROP_LOCATION; // "ForceDropLocation"
    static const HCString HTML; // "HTML"
    static const HCString PRIVATE_SYSTEM_PROPERTIES; // "PrivateSystemProperties"
};
