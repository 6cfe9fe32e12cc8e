// survey [PATH]: counts files, lines and bytes of a folder tree for each type of file.
//
// Shows a whole application on the library: it reports by messages only, and where they go is the user's choice.
// Without preferences it turns them on itself, for the console. Ends with status 2 when PATH does not exist.

#include "survey.h"

#include <zrlib/zrlib.h>

namespace {

constexpr int kBadArguments = 2;

/// An application has its say only where the user's preferences are silent.
void ShowMessagesUnlessPreferencesDo()
{
    if (ZRGetMessagesEnabled() == 0) {
        ZRSetMessagesEnabled(1);
        ZRSetOutFlags(ZR_DEST_CONSOLE);
        ZRSetWarnFlags(ZR_DEST_CONSOLE);
        ZRSetErrorFlags(ZR_DEST_CONSOLE);
    }
}

} // namespace

int main(int argc, char** argv)
{
    ShowMessagesUnlessPreferencesDo();
    if (argc > 2) {
        ZRError("Usage: survey [PATH]", "main", 1);
        return kBadArguments;
    }
    Survey survey;
    if (!survey.Walk(argc == 2 ? argv[1] : ".")) {
        return kBadArguments;
    }
    survey.ReportTotals();
    return 0;
}
