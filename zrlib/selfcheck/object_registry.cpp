#include "zrlib/registry/object_registry.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/selfcheck/self_checks.h"

namespace {

enum class Operation : char { kRegisterLibrary, kUnregisterLibrary, kRegisterObject, kUnregisterObject };

struct Step {
    Operation operation;
    unsigned int code;
    const char* name; // null where none is needed
    bool isRefused;
};

constexpr Step kScript[] = {
    {Operation::kRegisterLibrary, 0x1000, "LIB A", false},
    {Operation::kRegisterLibrary, 0x2000, "LIB B", false},
    {Operation::kRegisterLibrary, 0x3000, "LIB C", false},
    {Operation::kRegisterLibrary, 0x3000, "Rejected - duplicate ID", true},
    {Operation::kRegisterLibrary, 0x7000, "LIB X", false},
    {Operation::kRegisterLibrary, 0, "Rejected - invalid ID", true},
    {Operation::kRegisterLibrary, 0x4000, "LIB D", false},
    {Operation::kUnregisterLibrary, 0x7000, nullptr, false},
    {Operation::kUnregisterLibrary, 0x5000, nullptr, true},
    {Operation::kRegisterObject, 0xA04F1001, "FRED", false},
    {Operation::kRegisterObject, 0xA04F3002, "BILL", false},
    {Operation::kRegisterObject, 0xA04F2003, "ALF", false},
    {Operation::kRegisterObject, 0xA04F4004, "BOB", false},
    {Operation::kRegisterObject, 0xA04F4004, "Rejected - duplicate ID", true},
    {Operation::kRegisterObject, 0xA04F1005, "HARRY", false},
    {Operation::kRegisterObject, 0xA04F3006, "GROZNY", false},
    {Operation::kRegisterObject, 0xA04F1007, "POPEYE", false},
    {Operation::kRegisterObject, 0xA04F1FFF, "You ain't seen this one, right?", false},
    {Operation::kRegisterObject, 0xA04F2008, "OLIVE OYL", false},
    {Operation::kRegisterObject, 0x33330009, "Rejected -  invalid object code", true},
    {Operation::kRegisterObject, 0xA04F0010, "Rejected -  no matching library", true},
    {Operation::kUnregisterObject, 0xA04F1FFF, nullptr, false},
    {Operation::kUnregisterObject, 0xA04FFFFF, nullptr, true},
};

constexpr int kLibrariesLeft = 4;
constexpr int kObjectsLeft = 8;

/// Clears the enabled bit of errors for the length of a scope.
class ErrorBitCleared {
public:
    ErrorBitCleared() { ZRSetErrorEnabled(0); }
    ~ErrorBitCleared() { ZRSetErrorEnabled(m_before); }
    ErrorBitCleared(const ErrorBitCleared&) = delete;
    ErrorBitCleared& operator=(const ErrorBitCleared&) = delete;

private:
    char m_before = ZRIsErrorEnabled();
};

/// The results do not matter here: the counts at the end show what the registry made of the whole script.
void Do(const Step& step, ZRObjectRegistry& registry)
{
    const int code = static_cast<int>(step.code);
    switch (step.operation) {
    case Operation::kRegisterLibrary:
        registry.RegisterLibrary(code, step.name);
        break;
    case Operation::kUnregisterLibrary:
        registry.UnregisterLibrary(code);
        break;
    case Operation::kRegisterObject:
        registry.RegisterObject(code, step.name);
        break;
    case Operation::kUnregisterObject:
        registry.UnregisterObject(code);
        break;
    }
}

} // namespace

int ZRTestObjectRegistry(char messages)
{
    ZRSetMessagesEnabled(messages);
    ZROut("Test ObjectRegistry...", nullptr, 1);
    ZRObjectRegistry registry;
    for (const Step& step : kScript) {
        if (step.isRefused) {
            const ErrorBitCleared cleared;
            Do(step, registry);
        } else {
            Do(step, registry);
        }
    }
    registry.DumpOut();
    const int libraries = registry.GetLibraryCount();
    const int objects = registry.GetObjectCount();
    if (libraries != kLibrariesLeft || objects != kObjectsLeft) {
        HCString text;
        text.Format("Found %d libraries and %d objects, expected %d libraries and %d objects", libraries, objects,
            kLibrariesLeft, kObjectsLeft);
        ZRError(text, nullptr, 1);
        ZRError("ObjectRegistry test failed", nullptr, 1);
        return 0;
    }
    ZROut("ObjectRegistry test OK", nullptr, 1);
    return 1;
}
