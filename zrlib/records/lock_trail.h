/// ZRLockTrail: the record of one lock.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

#include <atomic>

/// Identifies a lock, its location and what it is doing. Every new record has an identity of its own, which its copies
/// share.
///
/// Threads: one object may be read by several threads at once or used by one.
class ZR_API ZRLockTrail {
public:
    /// Creates a new identity, with empty texts and all numbers 0.
    ZRLockTrail();

    ZRLockTrail(const ZRLockTrail& other);
    ZRLockTrail& operator=(const ZRLockTrail& other);
    virtual ~ZRLockTrail();

    /// 1 when everything is equal, the identity included, with texts compared case-sensitively; otherwise 0.
    char operator==(const ZRLockTrail& other) const;

    /// Whether the record was stamped as a lock or as an unlock. 1 or 0; a new record is neither.
    [[nodiscard]] char IsLock() const { return m_nType == kLock ? 1 : 0; }
    [[nodiscard]] char IsUnlock() const { return m_nType == kUnlock ? 1 : 0; }

    /// The identity, a text of 36 characters (HFGenerateGuid).
    [[nodiscard]] const HCString& GetGUID() const noexcept { return m_csGUID; }

    /// A text for observers.
    [[nodiscard]] const HCString& GetText() const noexcept { return m_csText; }
    void SetText(const HCString& text) { m_csText = text; }

    /// 0: not stamped, 1: lock, 2: unlock.
    [[nodiscard]] short GetType() const noexcept { return m_nType; }
    void SetType(short type) { m_nType = type; }

    /// ID of the thread that locked or unlocked; 0 while the record is not stamped.
    unsigned int GetThreadID() const { return m_nThreadID; }
    void SetThreadID(unsigned int threadID) { m_nThreadID = threadID; }

    // For clients; the library neither fills nor reads them.

    [[nodiscard]] short GetLevel() const noexcept { return m_nLevel; }
    void SetLevel(short level) { m_nLevel = level; }
    [[nodiscard]] short GetDestination() const noexcept { return m_nDestination; }
    void SetDestination(short destination) { m_nDestination = destination; }
    [[nodiscard]] const HCString& GetLocation() const noexcept { return m_csLocation; }
    void SetLocation(const HCString& location) { m_csLocation = location; }
    [[nodiscard]] int GetCode() const noexcept { return m_nCode; }
    void SetCode(int code) { m_nCode = code; }

private:
    friend class ZRLockTrailHandler; // stamps and counts listings

    static constexpr short kLock = 1;
    static constexpr short kUnlock = 2;

    HCString m_csGUID;
    HCString m_csText;
    short m_nType = 0;
    short m_nLevel = 0;
    unsigned int m_nThreadID = 0;
    short m_nDestination = 0;
    HCString m_csLocation;
    int m_nCode = 0;
    std::atomic<int> m_nListings{0}; // how many handlers list this record; not copied
};
