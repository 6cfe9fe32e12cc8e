/// The way into the message handler for code that cannot know whether the handler is still there. Not exported.
#pragma once

#include "hcbase/string.h"

class ZRMessageHandler;

/// A thread or a static object may send while, or after, the library's own objects go. So every way in first asks the
/// master switch, which belongs to the process, and then makes sure that the module stands and will not take its
/// handler away meanwhile; only then is the handler touched.
class ZRMessageRoute {
public:
    /// What a message carries to observers beside its texts.
    struct Particulars {
        const char* location; // may be null
        short level;
        int code = 0;
        char chainToPrevious = 0;
    };

    /// Builds a message and sends it. textEx: may be null.
    static void Send(ZRMessageHandler* handler, short type, const HCString& text, const HCString* textEx,
        const Particulars& particulars);

    /// The master switch.
    static char GetEnabled();
};
