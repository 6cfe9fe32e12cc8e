// Loads a library in a process that has loaded the C++ runtime only. Prints the time of the first load and the mean
// time of a later load and unload, in nanoseconds.
// Usage: load LIBRARY Now|Lazy CYCLES

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>

namespace {

double NanosecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 4) {
        return EXIT_FAILURE;
    }
    const std::string library(arguments[1]); // needs the runtime, which is so loaded before the library
    const int binding = std::string(arguments[2]) == "Now" ? RTLD_NOW : RTLD_LAZY;
    const int cycles = std::atoi(arguments[3]);

    const auto start = std::chrono::steady_clock::now();
    void* const handle = dlopen(library.c_str(), binding);
    const double first = NanosecondsSince(start);
    if (handle == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return EXIT_FAILURE;
    }
    dlclose(handle);

    const auto startOfCycles = std::chrono::steady_clock::now();
    for (int cycle = 0; cycle < cycles; ++cycle) {
        dlclose(dlopen(library.c_str(), binding));
    }
    std::printf("%.0f %.0f\n", first, cycles > 0 ? NanosecondsSince(startOfCycles) / cycles : 0);
    return EXIT_SUCCESS;
}
