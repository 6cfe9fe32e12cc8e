#include "zrlib/messaging/msg.h"

ZRMsg::~ZRMsg() = default;

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
