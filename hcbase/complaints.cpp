#include "hcbase/complaints.h"

#include "hcbase/records.h"
#include "hcbase/system/environment.h"

#include <algorithm>
#include <set>
#include <utility>

namespace hcbase {

namespace {

using Complaints = std::set<std::string>;

constinit Complaints* g_complaints HC_PT_GUARDED_BY(g_recordsLock) = nullptr; // created with the first complaint

bool IsFirstOccurrence(const std::string& complaint)
{
    const LockGuard guard(g_recordsLock);
    if (g_recordsClosed) {
        return true;
    }
    constexpr std::size_t kMost = 1000;
    if (g_complaints == nullptr) {
        g_complaints = new Complaints;
    } else if (g_complaints->size() >= kMost) {
        g_complaints->clear(); // rather than grow for ever: repeated ones are reported again
    }
    return g_complaints->insert(complaint).second;
}

} // namespace

void WarnOnce(const std::string& place, std::string_view reason)
{
    std::string complaint = "hcbase: " + place + ": ";
    complaint.append(reason);
    std::replace_if(
        complaint.begin(), complaint.end(), [](char character) { return character == '\n' || character == '\r'; }, ' ');
    if (IsFirstOccurrence(complaint)) {
        system::WriteErrorLine(complaint.c_str());
    }
}

void ReleaseComplaints() noexcept { delete std::exchange(g_complaints, nullptr); }

} // namespace hcbase
