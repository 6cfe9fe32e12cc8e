/// ZRObservedObjectEvent: what subjects send to their observers.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/observation/event_codes.h"
#include "zrlib/records/lock_trail.h"
#include "zrlib/records/msg.h"
#include "zrlib/records/profiler_state.h"

#include <cstdint>
#include <optional>

class ZRObservedObject;

namespace zr {
struct Seat;
}

/// A code that says what has happened (event_codes.h) and fields with the details, most of which keep their defaults in
/// any one event. It owns nothing that it points at.
///
/// There are two ways to send one: pass the subject to the constructor, and the destructor sends it; or call Broadcast.
/// A copy never sends itself.
///
/// Threads: one object is used by one thread at a time.
class ZR_API ZRObservedObjectEvent {
public:
    /// Empty texts, all numbers 0, null pointers, and records as their default constructors make them.
    ZRObservedObjectEvent(std::int32_t code);

    /// The same with a source, to whose observers the destructor sends the event. With a null source, given here or to
    /// SetSource, nothing is sent unless SetSource sets another.
    ZRObservedObjectEvent(std::int32_t code, ZRObservedObject* source);

    // The copy has no source and does not send itself.
    ZRObservedObjectEvent(const ZRObservedObjectEvent& other);
    ZRObservedObjectEvent& operator=(const ZRObservedObjectEvent& other);

    /// Sends the event if it was constructed with two arguments and has a source. An exception from an observer or from
    /// AdjustEvent, or for lack of memory, then terminates the process.
    virtual ~ZRObservedObjectEvent();

    /// Sends the event to the observers of `source`, one after the other in the order of their attachment, on this
    /// thread; each is locked while it handles the event. The event's own source is unchanged. The flag has no effect.
    ///
    /// Returns how many have handled it; -1 when the source is null or its AdjustEvent has returned 0, and no observer
    /// has seen it. Both are reported with ZRError, and so is an observer that cannot be locked, which is skipped.
    ///
    /// Observers may attach and detach others meanwhile, themselves included. One that is attached gets the next event.
    /// If an observer already called is detached during the broadcast, the one after it is skipped. The same holds for
    /// changes by other threads.
    int Broadcast(ZRObservedObject* source, char flag);

    /// What has happened.
    [[nodiscard]] std::int32_t GetCode() const noexcept { return m_nCode; }
    void SetCode(std::int32_t code) { m_nCode = code; }

    /// The subject that sends the event.
    [[nodiscard]] ZRObservedObject* GetSource() const noexcept { return m_pSource; }
    void SetSource(ZRObservedObject* source) { m_pSource = source; }

    // Texts and records are references to the event's own, valid until it is changed or destroyed.

    [[nodiscard]] const HCString& GetText() const { return m_bTextOfMsg != 0 ? m_Msg.GetText() : m_csText; }
    void SetText(const HCString& text)
    {
        TakeTextsOfMsg();
        m_csText = text;
    }
    [[nodiscard]] const HCString& GetTextEx() const { return m_bTextOfMsg != 0 ? m_Msg.GetTextEx() : m_csTextEx; }
    void SetTextEx(const HCString& textEx)
    {
        TakeTextsOfMsg();
        m_csTextEx = textEx;
    }

    /// Percent, for the events of progress.
    [[nodiscard]] std::int32_t GetCount() const noexcept { return m_nCount; }
    void SetCount(std::int32_t count) { m_nCount = count; }

    /// An on/off state.
    [[nodiscard]] char GetState() const noexcept { return m_bState; }
    void SetState(char state) { m_bState = state; }

    // The ends of a range.
    [[nodiscard]] std::int32_t GetMin() const noexcept { return m_nMin; }
    void SetMin(std::int32_t min) { m_nMin = min; }
    [[nodiscard]] std::int32_t GetMax() const noexcept { return m_nMax; }
    void SetMax(std::int32_t max) { m_nMax = max; }

    [[nodiscard]] const ZRMsg& GetMsg() const noexcept { return m_Msg; }
    void SetMsg(const ZRMsg& message)
    {
        TakeTextsOfMsg();
        m_Msg = message;
    }
    [[nodiscard]] const ZRLockTrail& GetLockTrail() const { return m_LockTrail ? *m_LockTrail : m_LockTrail.emplace(); }
    void SetLockTrail(const ZRLockTrail& trail) { m_LockTrail = trail; }
    [[nodiscard]] const ZRProfilerState& GetProfilerState() const
    {
        return m_ProfilerState ? *m_ProfilerState : m_ProfilerState.emplace();
    }
    void SetProfilerState(const ZRProfilerState& state) { m_ProfilerState = state; }

    // For clients; no event of the library fills them.

    [[nodiscard]] const HCString& GetName() const noexcept { return m_csName; }
    void SetName(const HCString& name) { m_csName = name; }
    [[nodiscard]] const HCString& GetCaption() const noexcept { return m_csCaption; }
    void SetCaption(const HCString& caption) { m_csCaption = caption; }
    [[nodiscard]] std::int32_t GetType() const noexcept { return m_nType; }
    void SetType(std::int32_t type) { m_nType = type; }
    [[nodiscard]] void* GetPtr() const noexcept { return m_pPtr; }
    void SetPtr(void* pointer) { m_pPtr = pointer; }

private:
    friend class ZRMessageHandler; // sends the events of messages, built in one step
    friend class ZRMessageRoute; // builds them

    /// The event of a message, whose texts are copied into the event's own only when one of the two is changed.
    ZRObservedObjectEvent(ZRObservedObject* source, const ZRMsg& message);
    ZRObservedObjectEvent(
        ZRObservedObject* source, const HCString& text, short type, const char* location, short level);

    void TakeTextsOfMsg()
    {
        if (m_bTextOfMsg != 0) {
            m_csText = m_Msg.GetText();
            m_csTextEx = m_Msg.GetTextEx();
            m_bTextOfMsg = 0;
        }
    }
    int BroadcastFrom(zr::Seat& seat, ZRObservedObject* source);

    std::int32_t m_nCode;
    ZRObservedObject* m_pSource;
    HCString m_csName;
    HCString m_csCaption;
    std::int32_t m_nCount = 0;
    HCString m_csText;
    HCString m_csTextEx;
    std::int32_t m_nType = 0;
    char m_bState = 0;
    ZRMsg m_Msg;
    std::int32_t m_nMin = 0;
    std::int32_t m_nMax = 0;
    void* m_pPtr = nullptr;
    mutable std::optional<ZRLockTrail> m_LockTrail; // constructed when asked for, as mostly nobody asks
    mutable std::optional<ZRProfilerState> m_ProfilerState; // likewise
    char m_bAutoBroadcast; // the destructor sends
    char m_bTextOfMsg = 0; // text and extended text are those of the message
};
