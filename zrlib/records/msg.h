/// ZRMsg: one message.
/// Folder records: the values that events carry: messages, lock records and the times of places in a program.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/records/message_types.h"

/// A value that carries one message from its sender to its destinations. Its texts are returned by reference, which is
/// valid until the message is changed or destroyed. Threads: one object may be read by several threads at once or
/// used by one.
class ZR_API ZRMsg {
public:
    /// An Out message with empty texts and all numbers 0.
    ZRMsg() = default;

    ZRMsg(const HCString& text, short type)
        : m_csText(text)
        , m_nType(type)
    {
    }

    ZRMsg(const HCString& text, const HCString& textEx, short type)
        : m_csText(text)
        , m_csTextEx(textEx)
        , m_nType(type)
    {
    }

    ZRMsg(const ZRMsg& other) = default;
    ZRMsg& operator=(const ZRMsg& other) = default;
    virtual ~ZRMsg() = default;

    /// 1 when all nine fields are equal, with texts compared case-sensitively; otherwise 0.
    char operator==(const ZRMsg& other) const;
    char operator!=(const ZRMsg& other) const;

    /// The text for console, debugger and log file.
    [[nodiscard]] const HCString& GetText() const noexcept { return m_csText; }
    void SetText(const HCString& text) { m_csText = text; }

    /// A second, extended text that no line shows.
    [[nodiscard]] const HCString& GetTextEx() const noexcept { return m_csTextEx; }
    void SetTextEx(const HCString& textEx) { m_csTextEx = textEx; }

    /// One of the ZR_MSG_ values. A message of any other type is printed nowhere.
    [[nodiscard]] short GetType() const noexcept { return m_nType; }
    void SetType(short type) { m_nType = type; }

    /// 1 to 7 in what the exported functions send; 0 when not set. Carried, never compared.
    [[nodiscard]] short GetLevel() const noexcept { return m_nLevel; }
    void SetLevel(short level) { m_nLevel = level; }

    /// ID of the sending thread; 0 before the message is sent.
    unsigned int GetThreadID() const { return m_nThreadID; }
    void SetThreadID(unsigned int threadID) { m_nThreadID = threadID; }

    /// A word for clients; the library neither fills nor reads it.
    [[nodiscard]] short GetDestination() const noexcept { return m_nDestination; }
    void SetDestination(short destination) { m_nDestination = destination; }

    /// Where the message was raised, usually class and function; may be empty.
    [[nodiscard]] const HCString& GetLocation() const noexcept { return m_csLocation; }
    void SetLocation(const HCString& location) { m_csLocation = location; }

    /// Not 0 when an error belongs to the one before it.
    [[nodiscard]] char GetChainToPrevious() const noexcept { return m_bChainToPrevious; }
    void SetChainToPrevious(char chainToPrevious) { m_bChainToPrevious = chainToPrevious; }

    /// Error code; 0 when there is none.
    [[nodiscard]] int GetCode() const noexcept { return m_nCode; }
    void SetCode(int code) { m_nCode = code; }

    /// 1 when the type is exactly the one asked for.
    [[nodiscard]] char IsOut() const { return m_nType == ZR_MSG_OUT ? 1 : 0; }
    [[nodiscard]] char IsWarn() const { return m_nType == ZR_MSG_WARN ? 1 : 0; }
    [[nodiscard]] char IsError() const { return m_nType == ZR_MSG_ERROR ? 1 : 0; }
    [[nodiscard]] char IsTrace() const { return m_nType == ZR_MSG_TRACE ? 1 : 0; }

private:
    friend class ZRMessageHandler; // writes the ID of the sending thread
    friend class ZRMessageRoute; // fills messages in one step
    friend class ZRObservedObjectEvent; // likewise

    ZRMsg(const HCString& text, short type, const char* location, short level)
        : m_csText(text)
        , m_nType(type)
        , m_nLevel(level)
        , m_csLocation(location)
    {
    }

    HCString m_csText;
    HCString m_csTextEx;
    short m_nType = ZR_MSG_OUT;
    short m_nLevel = 0;
    unsigned int m_nThreadID = 0;
    short m_nDestination = 0;
    HCString m_csLocation;
    char m_bChainToPrevious = 0;
    int m_nCode = 0;
};
