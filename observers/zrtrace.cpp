// zrtrace [OPTION…] PROGRAM [ARGUMENT…]: runs a program that uses ZRLib, unchanged, with observers attached.

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <pthread.h>
#include <string>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kBadUse = 125; // as other programs that run programs
constexpr int kNotRunnable = 126;
constexpr int kNotFound = 127;

constexpr const char* kHelp =
    R"(Usage: zrtrace [--trace FILE] [--json FILE] [--filter TEXT] [--profile] [--progress] PROGRAM [ARGUMENT...]

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

[[noreturn]] void Refuse(const std::string& reason)
{
    std::fprintf(stderr, "zrtrace: %s\nTry 'zrtrace --help'.\n", reason.c_str());
    std::exit(kBadUse);
}

/// The library to load into the program: beside this program, in the build tree or where it is installed.
std::string FindLibrary()
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system returns it as a number
    const auto* const program = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    const fs::path folder = fs::canonical(program).parent_path().parent_path();
    for (const char* const subfolder : {"lib", ZRTRACE_LIBDIR}) {
        const fs::path library = folder / subfolder / ZRTRACE_LIBRARY;
        if (fs::exists(library)) {
            return library;
        }
    }
    Refuse(std::string(ZRTRACE_LIBRARY) + " is not below " + folder.string());
}

class Options {
public:
    /// Returns the index of the program among the arguments.
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
                m_words = std::string("filter=") + arguments[index] + ";" + m_words; // before what it applies to
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
        if (file.empty() || file.find(';') != std::string::npos) {
            Refuse("not a name of a file for --" + key + ": '" + file + "'");
        }
        const std::string path = fs::weakly_canonical(fs::absolute(file)); // the program may change its folder
        if (fs::exists(path) && !fs::is_regular_file(path)) {
            Refuse(path + " is not a regular file");
        }
        std::string& destination = key == "trace" ? m_tracePath : m_jsonPath;
        if (!destination.empty()) {
            Refuse("--" + key + " is given twice");
        }
        destination = path;
        m_words += key + "=" + path + ";";
    }

    std::string m_words;
    std::string m_tracePath;
    std::string m_jsonPath;
};

/// Moves an existing trace aside, so that the first process of the program that sends something can create the file. It
/// is removed once the program has started, and restored if it could not be.
class FormerTrace {
public:
    explicit FormerTrace(const std::string& path)
        : m_path(path)
    {
        if (!path.empty() && fs::exists(path)) {
            const std::string aside = path + "." + std::to_string(getpid()) + ".former";
            fs::rename(path, aside);
            m_aside = aside;
        }
    }
    ~FormerTrace()
    {
        if (!m_aside.empty()) {
            std::rename(m_aside.c_str(), m_path.c_str());
        }
    }
    FormerTrace(const FormerTrace&) = delete;
    FormerTrace& operator=(const FormerTrace&) = delete;

    void Remove()
    {
        if (!m_aside.empty()) {
            unlink(m_aside.c_str());
            m_aside.clear();
        }
    }

private:
    std::string m_path;
    std::string m_aside; // empty while nothing is moved aside
};

/// A file for what the program's processes report at their end.
class Summary {
public:
    Summary()
    {
        const int file = mkstemp(m_path.data());
        if (file < 0) {
            throw std::system_error(errno, std::generic_category(), m_path);
        }
        close(file);
    }
    ~Summary() { unlink(m_path.c_str()); }
    Summary(const Summary&) = delete;
    Summary& operator=(const Summary&) = delete;

    const std::string& GetPath() const { return m_path; }

    /// Prints it. False when it is empty.
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

/// The signals that Await takes instead of handlers: all but those that stop and continue a process.
sigset_t AwaitedSignals()
{
    sigset_t signals;
    sigfillset(&signals);
    for (const int signal : {SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT}) {
        sigdelset(&signals, signal);
    }
    return signals;
}

/// Runs the program with the signals as they were for this one. Does not return.
[[noreturn]] void Become(char** arguments, const sigset_t& mask, const struct sigaction& child, int errors)
{
    sigaction(SIGCHLD, &child, nullptr);
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    execvp(arguments[0], arguments);
    const int error = errno;
    const bool isTold = write(errors, &error, sizeof(error)) == sizeof(error);
    _exit(isTold ? 0 : kNotRunnable);
}

/// Starts the program. On failure returns 0 and sets errno.
pid_t Start(char** arguments)
{
    // Signals wait from now on, so that none is lost while the program starts.
    const sigset_t awaited = AwaitedSignals();
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, &awaited, &mask);
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL; // if they are ignored, there is no exit status
    struct sigaction child {};
    sigaction(SIGCHLD, &standard, &child);
    int errors[2];
    if (pipe2(errors, O_CLOEXEC) != 0) {
        return 0;
    }
    const pid_t program = fork();
    if (program == 0) {
        Become(arguments, mask, child, errors[1]);
    }
    int error = program < 0 ? errno : 0;
    close(errors[1]);
    const bool isStarted = program > 0 && read(errors[0], &error, sizeof(error)) == 0; // closed by exec
    close(errors[0]);
    if (program > 0 && !isStarted) {
        waitpid(program, nullptr, 0);
    }
    errno = error;
    return isStarted ? program : 0;
}

/// Waits for the end of the program, and forwards signals sent to this process. Those of the terminal reach the program
/// anyway. Returns its status.
int Await(pid_t program)
{
    const sigset_t awaited = AwaitedSignals();
    int status = 0;
    while (waitpid(program, &status, WNOHANG) == 0) {
        siginfo_t info{};
        const int signal = sigwaitinfo(&awaited, &info);
        const bool isOfTerminal =
            info.si_code == SI_KERNEL && (signal == SIGINT || signal == SIGQUIT || signal == SIGHUP);
        if (signal > 0 && signal != SIGCHLD && signal != SIGPIPE && signal != SIGWINCH && !isOfTerminal) {
            kill(program, signal);
        }
    }
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
            "zrtrace: nothing came from %s: it does not use ZRLib, sends no message and has no timer, or has given up "
            "the rights to say so\n",
            program);
    } else {
        std::fprintf(stderr, "zrtrace: nothing came from %s before signal %d ended it\n", program, WTERMSIG(status));
    }
}

/// Ends as the program ended.
int End(int status)
{
    if (!WIFSIGNALED(status)) {
        return WEXITSTATUS(status);
    }
    const int signal = WTERMSIG(status);
    const rlimit noCore{0, 0}; // the program has left its own already
    setrlimit(RLIMIT_CORE, &noCore);
    std::signal(signal, SIG_DFL);
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, signal);
    pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
    raise(signal);
    constexpr int kSignalled = 128; // as shells report it
    return kSignalled + signal;
}

int Run(int count, char** arguments)
{
    Options options;
    char** const program = arguments + options.Read(count, arguments);
    const std::string library = FindLibrary();
    if (library.find_first_of(" :") != std::string::npos) {
        Refuse("a library in a folder with a blank or colon cannot be loaded into programs: " + library);
    }
    const Summary summary;
    Prepend("ZROBSERVERS", options.GetWords() + "summary=" + summary.GetPath(), ";");
    Prepend("LD_PRELOAD", library, ":");
    FormerTrace former(options.GetTracePath());
    const pid_t process = Start(program);
    if (process == 0) {
        const int error = errno;
        std::fprintf(stderr, "zrtrace: %s: %s\n", *program, std::strerror(error));
        return W_EXITCODE(error == ENOENT ? kNotFound : kNotRunnable, 0);
    }
    former.Remove();
    const int status = Await(process);
    Report(summary, options, *program, status);
    return status;
}

} // namespace

int main(int count, char** arguments)
{
    try {
        return End(Run(count, arguments));
    } catch (const std::exception& error) {
        Refuse(error.what());
    }
}
