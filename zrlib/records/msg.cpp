#include "zrlib/records/msg.h"

char ZRMsg::operator==(const ZRMsg& other) const
{
    return m_csText.Compare(other.m_csText) == 0 && m_csTextEx.Compare(other.m_csTextEx) == 0
            && m_nType == other.m_nType && m_nLevel == other.m_nLevel && m_nThreadID == other.m_nThreadID
            && m_nDestination == other.m_nDestination && m_csLocation.Compare(other.m_csLocation) == 0
            && m_bChainToPrevious == other.m_bChainToPrevious && m_nCode == other.m_nCode
        ? 1
        : 0;
}

char ZRMsg::operator!=(const ZRMsg& other) const { return *this == other ? 0 : 1; }
