#include "zrlib/records/lock_trail.h"

#include "hcbase/guid.h"

ZRLockTrail::ZRLockTrail()
    : m_csGUID(HFGenerateGuid())
{
}

ZRLockTrail::ZRLockTrail(const ZRLockTrail& other) { *this = other; }

ZRLockTrail& ZRLockTrail::operator=(const ZRLockTrail& other)
{
    if (this != &other) {
        m_csGUID = other.m_csGUID;
        m_csText = other.m_csText;
        m_nType = other.m_nType;
        m_nLevel = other.m_nLevel;
        m_nThreadID = other.m_nThreadID;
        m_nDestination = other.m_nDestination;
        m_csLocation = other.m_csLocation;
        m_nCode = other.m_nCode;
    }
    return *this;
}

ZRLockTrail::~ZRLockTrail() = default;

char ZRLockTrail::operator==(const ZRLockTrail& other) const
{
    return m_csGUID.Compare(other.m_csGUID) == 0 && m_csText.Compare(other.m_csText) == 0 && m_nType == other.m_nType
            && m_nLevel == other.m_nLevel && m_nThreadID == other.m_nThreadID && m_nDestination == other.m_nDestination
            && m_csLocation.Compare(other.m_csLocation) == 0 && m_nCode == other.m_nCode
        ? 1
        : 0;
}
