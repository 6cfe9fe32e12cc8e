#include "zrlib/registry/refusals.h"

#include "zrlib/frame/report.h"

#include <new>

namespace zr {

namespace {

void Report(const Refusal& refusal, const char* location, const Details& details)
{
    const auto number = static_cast<unsigned int>(details.number);
    HCString text;
    switch (refusal.shows) {
    case Shows::kNumberAndHolder:
        text.Format(refusal.format, number, details.holder);
        break;
    case Shows::kClassIDAndHolder:
        text.Format(refusal.format, details.classID, details.holder);
        break;
    case Shows::kClassIDAndNumber:
        text.Format(refusal.format, details.classID, number);
        break;
    }
    ReportErrorSet(refusal.error, text, location);
}

} // namespace

bool Refuse(const Refusal& refusal, const char* location, const Details& details)
{
    try {
        Report(refusal, location, details);
    } catch (const std::bad_alloc&) { // what is refused stays refused
    }
    return false;
}

} // namespace zr
