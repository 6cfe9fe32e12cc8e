#include "zrlib/sync/lock_trail.h"

#include "hcbase/guid.h"

ZRLockTrail::ZRLockTrail()
    : m_csGUID(HFGenerateGuid())
{
}

ZRLockTrail::ZRLockTrail(const ZRLockTrail& other)
    : m_csGUID(other.Identity())
    , m_csText(other.m_csText)
    , m_nType(other.m_nType)
    , m_nLevel(other.m_nLevel)
    , m_nThreadID(other.m_nThreadID)
    , m_nDestination(other.m_nDestination)
    , m_csLocation(other.m_csLocation)
    , m_nCode(other.m_nCode)
{
}

ZRLockTrail& ZRLockTrail::operator=(const ZRLockTrail& other)
{
    if (this != &other) {
        m_csGUID = other.Identity();
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

const HCString& ZRLockTrail::Identity() const
{
    if (m_csGUID.GetLength() == 0) {
        m_csGUID = HFGenerateGuid();
    }
    return m_csGUID;
}

char ZRLockTrail::operator==(const ZRLockTrail& other) const
{
    return Identity() == other.Identity() && m_csText == other.m_csText && m_nType == other.m_nType
            && m_nLevel == other.m_nLevel && m_nThreadID == other.m_nThreadID && m_nDestination == other.m_nDestination
            && m_csLocation == other.m_csLocation && m_nCode == other.m_nCode
        ? 1
        : 0;
}
