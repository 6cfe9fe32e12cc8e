#include "hcbase/filename.h"

#include "hcbase/complaints.h"
#include "hcbase/system/environment.h"
#include "hcbase/system/files.h"

#include <algorithm>
#include <climits>
#include <string_view>

using namespace hcbase;

HCString HFTranslateName(const HCString& name)
{
    if (name != "home") {
        return {};
    }
    HCString home = system::Environment("HCBASE_HOME");
    if (home.GetLength() == 0) {
        home = system::HomeDirectory();
    }
    if (home.GetLength() == 0) {
        WarnOnce("home", "unknown: neither the environment nor the account has one");
    }
    return home;
}

HCString HFBuildFilename(const HCString& directory, const HCString& name, const HCString& extension)
{
    std::string_view head(directory);
    std::string_view tail(name);
    const std::string_view end(extension);
    const bool hasDirectory = !head.empty();
    if (hasDirectory) {
        while (!head.empty() && system::IsSeparator(head.back())) {
            head.remove_suffix(1);
        }
        while (!tail.empty() && system::IsSeparator(tail.front())) {
            tail.remove_prefix(1);
        }
    }

    HCString path;
    const std::size_t room = head.size() + 1 + tail.size() + 1 + end.size();
    char* out = path.GetBuffer(static_cast<int>(std::min<std::size_t>(room, INT_MAX))); // INT_MAX: refused
    const char* const start = out;
    out = std::copy(head.begin(), head.end(), out);
    if (hasDirectory) {
        *out++ = system::kSeparator;
    }
    out = std::copy(tail.begin(), tail.end(), out);
    if (!end.empty()) {
        *out++ = '.';
        out = std::copy(end.begin(), end.end(), out);
    }
    path.ReleaseBuffer(static_cast<int>(out - start));
    return path;
}
