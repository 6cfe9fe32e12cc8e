/// ZRFilter: which messages an observer wants.
#pragma once

#include "hcbase/array.h"
#include "hcbase/string.h"
#include "zrobservers/export.h"

#include <cstdint>

class ZRMsg;

/// A condition on type, level and place of a message, read from a short text of words between blanks, all of which must
/// hold:
///
/// | word | holds for |
/// |---|---|
/// | `error`, `warn,error` | messages of one of these types: `out`, `warn`, `error`, `trace` |
/// | `level<=3`, `level>=5`, `level=1` | messages of these levels |
/// | `place=Map::*` | messages from a place that fits the pattern, in which `*` stands for any characters and `?` for
/// one; with several words of this kind, from a place that fits one of them | | `place!=Map::Draw` | messages from a
/// place that does not fit |
///
/// Where an observer receives timers, the words for the place hold for their locations, and the others do not count.
/// The empty text is true for everything. Threads: as for an int.
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
