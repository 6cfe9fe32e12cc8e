// A program to be traced, which does what its argument says.

#include "zrlib/zrlib.h"

#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void Work(const char* what)
{
    ZR_TIME_FUNCTION();
    ZR_OUT("%s", what);
}

} // namespace

int main(int /*count*/, char** arguments)
{
    const std::string end = arguments[1];
    ZRSetMessagesEnabled(1);
    Work("at first");
    if (end == "kill") {
        sleep(1); // what was sent has time to be written
        return raise(SIGKILL);
    }
    if (end == "exit") {
        return 7;
    }
    if (fork() == 0) {
        return 0; // a child that sends nothing
    }
    wait(nullptr);
    Work(fork() == 0 ? "in the child" : "in the parent");
    wait(nullptr);
    return 0;
}
