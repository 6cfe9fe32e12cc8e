#include "zrlib/selfcheck/self_checks.h"

#include "hcbase/file_status.h"
#include "hcbase/file_system.h"
#include "hcbase/filename.h"
#include "zrlib/messaging/message_functions.h"

int ZRTestAll(char messages)
{
    struct Check {
        int (*run)(char messages);
        const char* failure;
        bool countsMessages;
    };
    static constexpr Check kChecks[] = {
        {ZRTestCollections, "ZR collections test failed", false},
        {ZRTestObjectRegistry, "ZR object registry test failed", false},
        {ZRTestMessageThreading, "ZR message threading test failed", true},
    };
    ZRSetMessagesEnabled(messages);
    for (const Check& check : kChecks) {
        if (check.countsMessages && messages == 0) {
            continue;
        }
        if (check.run(messages) == 0) {
            ZRError(check.failure, nullptr, 1);
            return 0;
        }
    }
    return 1;
}

void ZRPrepareTestFile(HCString& path, const HCString& name, const HCString& extension, char deleteExisting)
{
    path = HFBuildFilename("", name, extension);
    if (deleteExisting == 0) {
        return;
    }
    HCFileStatus status;
    const bool exists =
        HCFileSystem::GetFileStatus(path, status) != 0; // which a dangling link does not, but is deleted
    if (HCFileSystem().DelFile(path) == 0 && exists) {
        HCString text;
        text.Format("%s - error deleting %s", "ZRPrepareTestFile", static_cast<const char*>(path));
        ZRError(text, nullptr, 1);
    }
}
