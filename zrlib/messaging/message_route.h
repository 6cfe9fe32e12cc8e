/// ZRMessageRoute: the way of a message into its handler. Not exported.
#pragma once

#include "hcbase/string.h"

class ZRMessageHandler;

/// A thread or a static object may send during or after the destruction of the library's own objects. So every way in
/// first tests the master switch, which is process-wide, then whether anybody can receive the message, and then takes a
/// lease; only then does it use the handler.
class ZRMessageRoute {
public:
    /// What a message carries to observers besides its texts.
    struct MessageFields {
        const char* location; // may be null
        short level;
        int code = 0;
        char chainToPrevious = 0;
    };

    /// Builds a message and sends it. textEx: may be null.
    static void Send(ZRMessageHandler* handler, short type, const HCString& text, const HCString* textEx,
        const MessageFields& fields);
};
