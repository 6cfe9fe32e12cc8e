// zrtrace [OPTION…] PROGRAM [ARGUMENT…]: runs a program that uses ZRLib, unchanged, with observers attached.

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kBadUse = 125; // as of other programs that run programs
constexpr int kNotRunnable = 126;
constexpr int kNotFound = 127;

constexpr const char* kHelp =
    R"(Usage: zrtrace [--trace FILE] [--json FILE] [--profile] [--progress] PROGRAM [ARGUMENT...]

Runs PROGRAM, which uses ZRLib, with the profiler on and observers attached, and says on standard error what they have
written, how many events there were and where most of the time went.

  --trace FILE   writes a trace of timers, messages and progress, to be opened in Perfetto or speedscope
  --filter TEXT  for what is traced and written as JSON: 'warn,error level<=3 place=Map::*'
  --json FILE    appends each message as a JSON object on a line
  --profile      shows all timers in a table at the end
  --progress     shows progress on the terminal
  --help         shows this text

The output of PROGRAM is left alone; zrtrace ends with its exit status, or by the signal that has ended it.
Status 125: wrong use of zrtrace; 126: PROGRAM cannot be run; 127: there is no such program.
)";

constinit volatile std::sig_atomic_t g_program = 0; // ID of its process

[[noreturn]] void Refuse(const std::string& reason)
{
    std::fprintf(stderr, "zrtrace: %s\nTry 'zrtrace --help'.\n", reason.c_str());
    std::exit(kBadUse);
}

/// The library that is loaded into the program: beside this program, in the tree of the build or where it is installed.
std::string FindLibrary()
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): that is how the system gives it
    const auto* const program = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    const fs::path folder = fs::canonical(program).parent_path().parent_path();
    for (const char* const place : {"lib", ZRTRACE_LIBDIR}) {
        const fs::path library = folder / place / ZRTRACE_LIBRARY;
        if (fs::exists(library)) {
            return library;
        }
    }
    Refuse(std::string(ZRTRACE_LIBRARY) + " is not below " + folder.string());
}

class Options {
public:
    /// Gives the index of the program among the arguments.
    int Read(int count, char** arguments)
    {
        int index = 1;
        for (; index < count && arguments[index][0] == '-'; ++index) {
            const std::string option = arguments[index];
            if (option == "--help") {
                std::fputs(kHelp, stdout);
                std::exit(0);
            } else if (option == "--") {
                ++index;
                break;
            } else if (option == "--trace" || option == "--json") {
                if (++index == count) {
                    Refuse(option + " needs a file");
                }
                AddFile(option.substr(2), arguments[index]);
            } else if (option == "--filter") {
                if (++index == count || std::strchr(arguments[index], ';') != nullptr) {
                    Refuse("--filter needs a text without a semicolon");
                }
                m_words = std::string("filter=") + arguments[index] + ";" + m_words; // it comes before what it is for
            } else if (option == "--profile" || option == "--progress") {
                m_words += option.substr(2) + ";";
            } else {
                Refuse("unknown option " + option);
            }
        }
        if (index >= count) {
            Refuse("no program");
        }
        return index;
    }

    const std::string& GetWords() const { return m_words; }
    const std::string& GetTracePath() const { return m_tracePath; }

private:
    void AddFile(const std::string& key, const std::string& file)
    {
        const std::string path = fs::absolute(file); // the program may change its folder
        if (file.empty() || path.find(';') != std::string::npos) {
            Refuse("not a name of a file for --" + key + ": '" + file + "'");
        }
        if (key == "trace") {
            std::error_code ignored;
            fs::remove(path, ignored); // the first process that sends something makes it
            m_tracePath = path;
        }
        m_words += key + "=" + path + ";";
    }

    std::string m_words;
    std::string m_tracePath;
};

/// A file for what the program's processes have to say at their end.
class Summary {
public:
    Summary()
    {
        const int file = mkstemp(m_path.data());
        if (file < 0) {
            Refuse(m_path + ": " + std::strerror(errno));
        }
        close(file);
    }
    ~Summary() { unlink(m_path.c_str()); }
    Summary(const Summary&) = delete;
    Summary& operator=(const Summary&) = delete;

    const std::string& GetPath() const { return m_path; }

    /// Shows it. False when there is nothing.
    bool Show() const
    {
        std::ifstream file(m_path);
        std::string line;
        bool isThere = false;
        while (std::getline(file, line)) {
            std::fprintf(stderr, "zrtrace: %s\n", line.c_str());
            isThere = true;
        }
        return isThere;
    }

private:
    std::string m_path = (fs::temp_directory_path() / "zrtrace-XXXXXX").string();
};

void Prepend(const char* name, const std::string& value, const char* separator)
{
    const char* const former = std::getenv(name);
    const std::string all = former != nullptr && *former != '\0' ? value + separator + former : value;
    setenv(name, all.c_str(), 1);
}

/// Starts the program with the signals as they were here.
pid_t Start(char** arguments)
{
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    // Those of the terminal go to the program too, which may do with them what it likes; others are passed on.
    for (const int signal : {SIGINT, SIGQUIT}) {
        if (std::signal(signal, SIG_IGN) != SIG_IGN) {
            sigaddset(&defaults, signal);
        }
    }
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t program = 0;
    const int error = posix_spawnp(&program, arguments[0], nullptr, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        std::fprintf(stderr, "zrtrace: %s: %s\n", arguments[0], std::strerror(error));
        std::exit(error == ENOENT ? kNotFound : kNotRunnable);
    }
    return program;
}

int Await(pid_t program)
{
    g_program = program;
    for (const int signal : {SIGTERM, SIGHUP, SIGUSR1, SIGUSR2}) {
        if (std::signal(signal, [](int received) { kill(g_program, received); }) == SIG_IGN) {
            std::signal(signal, SIG_IGN);
        }
    }
    int status = 0;
    while (waitpid(program, &status, 0) < 0 && errno == EINTR) {}
    return status;
}

void Report(const Summary& summary, const Options& options, const char* program, int status)
{
    if (summary.Show()) {
        return;
    }
    std::error_code ignored;
    const bool hasTrace = !options.GetTracePath().empty() && fs::exists(options.GetTracePath(), ignored);
    if (hasTrace) {
        std::fprintf(stderr, "zrtrace: %s ended before it could sum up; traced until then in %s\n", program,
            options.GetTracePath().c_str());
    } else if (WIFEXITED(status)) {
        std::fprintf(stderr,
            "zrtrace: nothing came from %s: it does not use ZRLib, or sends no message and has no timer\n", program);
    } else {
        std::fprintf(stderr, "zrtrace: nothing came from %s before signal %d ended it\n", program, WTERMSIG(status));
    }
}

} // namespace

int main(int count, char** arguments)
{
    Options options;
    const int program = options.Read(count, arguments);
    const std::string library = FindLibrary();
    if (library.find_first_of(" :") != std::string::npos) {
        Refuse("a library in a folder with a blank or colon cannot be loaded into programs: " + library);
    }
    int status = 0;
    {
        const Summary summary;
        Prepend("ZROBSERVERS", options.GetWords() + "summary=" + summary.GetPath(), ";");
        Prepend("LD_PRELOAD", library, ":");
        status = Await(Start(arguments + program));
        Report(summary, options, arguments[program], status);
    }
    if (WIFSIGNALED(status)) {
        const rlimit noCore{0, 0}; // that of the program is there already
        setrlimit(RLIMIT_CORE, &noCore);
        std::signal(WTERMSIG(status), SIG_DFL);
        raise(WTERMSIG(status));
    }
    return WEXITSTATUS(status);
}
