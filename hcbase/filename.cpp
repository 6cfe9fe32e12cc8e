#include "hcbase/filename.h"

#include "hcbase/system/environment.h"
#include "hcbase/system/files.h"

#include <string>
#include <string_view>

using namespace hcbase;

HCString HFTranslateName(const HCString& name)
{
    if (name != "home") {
        return {};
    }
    const std::string configured = system::Environment("HCBASE_HOME");
    return (configured.empty() ? system::HomeDirectory() : configured).c_str();
}

HCString HFBuildFilename(const HCString& directory, const HCString& name, const HCString& extension)
{
    std::string_view head(directory);
    std::string_view tail(name);
    std::string path;
    if (!head.empty()) {
        while (!head.empty() && system::IsSeparator(head.back())) {
            head.remove_suffix(1);
        }
        while (!tail.empty() && system::IsSeparator(tail.front())) {
            tail.remove_prefix(1);
        }
        path.append(head).push_back(system::kSeparator);
    }
    path.append(tail);
    if (extension.GetLength() > 0) {
        path.append(1, '.').append(extension);
    }
    return path.c_str();
}
