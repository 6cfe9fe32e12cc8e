// A program that loads the library late, by itself.

#include <dlfcn.h>

int main(int /*count*/, char** arguments)
{
    void* const library = dlopen(arguments[1], RTLD_NOW);
    const auto setEnabled = reinterpret_cast<void (*)(char)>(dlsym(library, "ZRSetMessagesEnabled"));
    const auto setError =
        reinterpret_cast<int (*)(int, const char*, const char*, char, short)>(dlsym(library, "ZRErrorSet"));
    setEnabled(1);
    return setError(3, "late", "main", 0, 1);
}
