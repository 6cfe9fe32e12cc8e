/// ZRFilter: selects messages for an observer.
#pragma once

#include "hcbase/array.h"
#include "hcbase/string.h"
#include "zrobservers/export.h"

#include <cstdint>

class ZRMsg;
class ZRObservedObjectEvent;

/// A condition on type, level and place (location) of a message, read from a short text of words separated by blanks.
/// All words must hold, but of several `place=` words one is enough:
///
/// - `error` or `warn,error`: the type is one of these. There are `out`, `warn`, `error` and `trace`.
/// - `level<=3`, `level>=5` or `level=1`: the level is in this range.
/// - `place=Map::*`: the place matches the pattern, in which `*` matches any characters and `?` one.
/// - `place!=Map::Draw`: the place does not match the pattern.
///
/// For timers only the words for the place count; they apply to the location of the state. The empty text accepts
/// everything. Threads: one object may be read by several threads at once or used by one.
class ZR_OBSERVERS_API ZRFilter {
public:
    /// Accepts everything.
    ZRFilter() = default;

    /// A word that cannot be read is reported with ZRError and ignored (IsGood).
    ZRFilter(const HCString& text);
    ZRFilter(const char* text)
        : ZRFilter(HCString(text))
    {
    }

    /// Whether all words could be read.
    [[nodiscard]] bool IsGood() const noexcept { return m_isGood; }

    [[nodiscard]] bool Takes(const ZRMsg& message) const noexcept;

    /// Tests the message of an event, or the location of a timer's state. True for any other event.
    [[nodiscard]] bool Takes(const ZRObservedObjectEvent& event) const;

    /// Tests the words for the place only.
    [[nodiscard]] bool TakesPlace(const HCString& place) const noexcept
    {
        return (m_wanted.GetSize() == 0 && m_unwanted.GetSize() == 0) || FitsPlace(place);
    }

private:
    bool Read(const HCString& word);
    bool ReadTypes(const HCString& word);
    bool FitsPlace(const char* place) const noexcept;

    short m_types = -1; // the bits of the types
    short m_leastLevel = INT16_MIN;
    short m_mostLevel = INT16_MAX;
    bool m_isGood = true;
    HCArray<HCString> m_wanted; // patterns of places
    HCArray<HCString> m_unwanted;
};
