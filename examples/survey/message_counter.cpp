#include "message_counter.h"

void MessageCounter::OnEvent(ZRObservedObjectEvent* event)
{
    if (event->GetCode() == ZR_EVENT_MESSAGE) {
        const ZRMsg& message = event->GetMsg();
        m_out += message.IsOut();
        m_warn += message.IsWarn();
        m_error += message.IsError();
        m_trace += message.IsTrace();
    }
}

HCString MessageCounter::Describe() const
{
    HCString text;
    text.Format("Messages: %d out, %d warnings, %d errors, %d traces", m_out, m_warn, m_error, m_trace);
    return text;
}
