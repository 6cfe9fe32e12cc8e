/// The codes of events.
#pragma once

#include <cstdint>

// The code of each event that the library sends (ZRObservedObjectEvent::GetCode), followed by the fields that are set;
// all others keep their defaults. The *_ENABLED events are sent only when the value has really changed.

// From the subject of the process (ZRAttachObserver): progress (progress.h) and the threading switch.
inline constexpr std::int32_t ZR_EVENT_PROGRESS_START = 0x8004; // text: title of the run
inline constexpr std::int32_t ZR_EVENT_PROGRESS_RANGE = 0x8005; // min, max
inline constexpr std::int32_t ZR_EVENT_PROGRESS_TEXT_VISIBLE = 0x8006; // state: whether the text is to be shown
inline constexpr std::int32_t ZR_EVENT_PROGRESS_UPDATE = 0x8007; // count: percent; text, when one was given
inline constexpr std::int32_t ZR_EVENT_PROGRESS_END = 0x8008; // count: 100
inline constexpr std::int32_t ZR_EVENT_THREADING_ENABLED = 0x8009; // state: the switch

// From the message handler (ZRGetMessageHandler), which is also their source.
inline constexpr std::int32_t ZR_EVENT_MESSAGES_ENABLED = 0x8064; // state: the master switch
inline constexpr std::int32_t ZR_EVENT_MESSAGE = 0x8065; // msg; text, textEx: its texts

// From the lock trail handler. A lock is being taken or was released.
inline constexpr std::int32_t ZR_EVENT_LOCK_TRAIL = 0x82BD; // lockTrail; text: its text

// From the profiler state handler.
inline constexpr std::int32_t ZR_EVENT_PROFILER_ENABLED = 0x8320; // state: the handler's switch
inline constexpr std::int32_t ZR_EVENT_PROFILER_STATE = 0x8321; // profilerState: of a scope that has ended
