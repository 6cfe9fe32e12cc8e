/// ZRMsg: one message.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/messaging/message_types.h"

/// A value that carries one message from its sender through the destinations to the observers.
/// Threads: one object is used by one thread at a time.
class ZR_API ZRMsg {
public:
    /// An Out message with empty texts and all numbers 0.
    ZRMsg();
    ZRMsg(const HCString& text, short type);
    ZRMsg(const HCString& text, const HCString& textEx, short type);
    ZRMsg(const ZRMsg& other);
    ZRMsg& operator=(const ZRMsg& other);
    virtual ~ZRMsg();

    /// 1 when all nine fields are equal, the texts by case; otherwise 0.
    char operator==(const ZRMsg& other) const;
    char operator!=(const ZRMsg& other) const;

    /// The text for console, debugger and log file.
    HCString GetText() const;
    void SetText(const HCString& text);

    /// A second, extended text that only observers get.
    HCString GetTextEx() const;
    void SetTextEx(const HCString& textEx);

    /// One of the ZR_MSG_ values. A message of any other type goes to observers only.
    short GetType() const;
    void SetType(short type);

    /// 1 to 7 in what the exported functions send; 0 when it was not set. Carried, never compared.
    short GetLevel() const;
    void SetLevel(short level);

    /// ID of the sending thread; 0 before the message was sent.
    unsigned int GetThreadID() const;
    void SetThreadID(unsigned int threadID);

    /// A word for observers; the library neither fills nor reads it.
    short GetDestination() const;
    void SetDestination(short destination);

    /// Where the message was raised, usually class and function; may be empty.
    HCString GetLocation() const;
    void SetLocation(const HCString& location);

    /// Not 0 when an error belongs to the one before it.
    char GetChainToPrevious() const;
    void SetChainToPrevious(char chainToPrevious);

    /// Error code; 0 when there is none.
    int GetCode() const;
    void SetCode(int code);

    /// 1 when the type is exactly the one asked for.
    char IsOut() const;
    char IsWarn() const;
    char IsError() const;
    char IsTrace() const;

private:
    friend class ZRMessageHandler; // reads the texts without copying them

    void Initialise();

    HCString m_csText;
    HCString m_csTextEx;
    short m_nType;
    short m_nLevel;
    unsigned int m_nThreadID;
    short m_nDestination;
    HCString m_csLocation;
    char m_bChainToPrevious;
    int m_nCode;
};
