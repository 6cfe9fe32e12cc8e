#include "zrlib/messaging/msg.h"

ZRMsg::ZRMsg() { Initialise(); }

ZRMsg::ZRMsg(const HCString& text, short type) : m_csText(text)
{
    Initialise();
    m_nType = type;
}

ZRMsg::ZRMsg(const HCString& text, const HCString& textEx, short type) : m_csText(text), m_csTextEx(textEx)
{
    Initialise();
    m_nType = type;
}

ZRMsg::ZRMsg(const ZRMsg& other) = default;

ZRMsg& ZRMsg::operator=(const ZRMsg& other) = default;

ZRMsg::~ZRMsg() = default;

void ZRMsg::Initialise()
{
    m_nType = ZR_MSG_OUT;
    m_nLevel = 0;
    m_nThreadID = 0;
    m_nDestination = 0;
    m_bChainToPrevious = 0;
    m_nCode = 0;
}

char ZRMsg::operator==(const ZRMsg& other) const
{
    return m_csText == other.m_csText && m_csTextEx == other.m_csTextEx && m_nType == other.m_nType
            && m_nLevel == other.m_nLevel && m_nThreadID == other.m_nThreadID && m_nDestination == other.m_nDestination
            && m_csLocation == other.m_csLocation && m_bChainToPrevious == other.m_bChainToPrevious
            && m_nCode == other.m_nCode
        ? 1
        : 0;
}

char ZRMsg::operator!=(const ZRMsg& other) const { return *this == other ? 0 : 1; }

HCString ZRMsg::GetText() const { return m_csText; }
void ZRMsg::SetText(const HCString& text) { m_csText = text; }
HCString ZRMsg::GetTextEx() const { return m_csTextEx; }
void ZRMsg::SetTextEx(const HCString& textEx) { m_csTextEx = textEx; }
short ZRMsg::GetType() const { return m_nType; }
void ZRMsg::SetType(short type) { m_nType = type; }
short ZRMsg::GetLevel() const { return m_nLevel; }
void ZRMsg::SetLevel(short level) { m_nLevel = level; }
unsigned int ZRMsg::GetThreadID() const { return m_nThreadID; }
void ZRMsg::SetThreadID(unsigned int threadID) { m_nThreadID = threadID; }
short ZRMsg::GetDestination() const { return m_nDestination; }
void ZRMsg::SetDestination(short destination) { m_nDestination = destination; }
HCString ZRMsg::GetLocation() const { return m_csLocation; }
void ZRMsg::SetLocation(const HCString& location) { m_csLocation = location; }
char ZRMsg::GetChainToPrevious() const { return m_bChainToPrevious; }
void ZRMsg::SetChainToPrevious(char chainToPrevious) { m_bChainToPrevious = chainToPrevious; }
int ZRMsg::GetCode() const { return m_nCode; }
void ZRMsg::SetCode(int code) { m_nCode = code; }

char ZRMsg::IsOut() const { return m_nType == ZR_MSG_OUT ? 1 : 0; }
char ZRMsg::IsWarn() const { return m_nType == ZR_MSG_WARN ? 1 : 0; }
char ZRMsg::IsError() const { return m_nType == ZR_MSG_ERROR ? 1 : 0; }
char ZRMsg::IsTrace() const { return m_nType == ZR_MSG_TRACE ? 1 : 0; }
