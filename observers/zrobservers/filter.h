/// ZRFilter: which messages an observer wants.
#pragma once

#include "hcbase/array.h"
#include "hcbase/string.h"
#include "zrobservers/export.h"

#include <cstdint>

class ZRMsg;
class ZRObservedObjectEvent;

/// A condition on type, level and place of a message. It is read from a short text of words with blanks between them.
/// All words must hold:
///
/// - `error` or `warn,error`: the type is one of these. There are `out`, `warn`, `error` and `trace`.
/// - `level<=3`, `level>=5` or `level=1`: the level is in this range.
/// - `place=Map::*`: the place fits the pattern, in which `*` stands for any characters and `?` for one. With several
///   words of this kind it fits one of them.
/// - `place!=Map::Draw`: the place does not fit the pattern.
///
/// For timers only the words for the place count; they hold for the location of the state. The empty text is true for
/// everything. Threads: as for an int.
class ZR_OBSERVERS_API ZRFilter {
public:
    /// True for everything.
    ZRFilter() = default;

    /// A word that cannot be read is told with ZRError and left out (IsGood).
    ZRFilter(const HCString& text);
    ZRFilter(const char* text)
        : ZRFilter(HCString(text))
    {
    }

    /// Whether all words could be read.
    [[nodiscard]] bool IsGood() const noexcept { return m_isGood; }

    [[nodiscard]] bool Takes(const ZRMsg& message) const noexcept;

    /// As it is for its message, or for the location of the state of a timer. True for any other event.
    [[nodiscard]] bool Takes(const ZRObservedObjectEvent& event) const;

    /// The words for the place only.
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
