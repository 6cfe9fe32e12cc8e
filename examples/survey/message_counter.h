/// Counting messages.
#pragma once

#include <zrlib/zrlib.h>

/// Counts the messages of the process by their type, for as long as it lives.
class MessageCounter : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override;

    /// All counts in one line.
    HCString Describe() const;

private:
    int m_out = 0;
    int m_warn = 0;
    int m_error = 0;
    int m_trace = 0;
    ZRAttachment m_attachment{*ZRGetMessageHandler(), *this}; // last, so that it goes before what it counts
};
