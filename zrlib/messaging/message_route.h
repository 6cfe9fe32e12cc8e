/// The way of a message into its handler. Not exported.
#pragma once

#include "hcbase/string.h"

class ZRMessageHandler;

/// A thread or a static object may send while, or after, the library's own objects go. So every way in first asks the
/// master switch, which belongs to the process, then whether anybody can receive the message, and then holds a lease;
/// only then is the handler used.
class ZRMessageRoute {
public:
    /// What a message carries to observers beside its texts.
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
