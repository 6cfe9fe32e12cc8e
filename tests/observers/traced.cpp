// A program to be traced, which does what its argument says.

#include "zrlib/zrlib.h"

#include <csignal>
#include <cstdlib>
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
    ZRSetMessagesEnabled(1);
    Work("at first");
    switch (arguments[1][0]) {
    case 'f': { // forks, once for a child that sends nothing
        if (fork() == 0) {
            return 0;
        }
        wait(nullptr);
        const pid_t child = fork();
        Work(child == 0 ? "in the child" : "in the parent");
        if (child != 0) {
            waitpid(child, nullptr, 0);
        }
        return 0;
    }
    case 'k': // is killed when what it has sent has had time to be written
        sleep(1);
        return raise(SIGKILL);
    default:
        return 7;
    }
}
