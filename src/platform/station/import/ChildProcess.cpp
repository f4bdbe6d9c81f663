#include "platform/station/import/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

extern char** environ;

namespace vrk::station {
namespace {

constexpr int firstInherited = 3; // behind input, output and errors

void check(int error, const char* what)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

/// What is done in the new process before its program runs.
class FileActions {
public:
    explicit FileActions(const std::vector<int>& inherited)
    {
        check(posix_spawn_file_actions_init(&actions), "descriptors");
        for (int standard = 0; standard < firstInherited; ++standard)
            check(posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0), "/dev/null");
        int target = firstInherited;
        for (const int descriptor : inherited)
            check(posix_spawn_file_actions_adddup2(&actions, descriptor, target++), "descriptors");
        check(posix_spawn_file_actions_addclosefrom_np(&actions, target), "descriptors");
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    posix_spawn_file_actions_t actions;
};

/// No signal is blocked or passed over, whatever the application does with its own.
class PlainSignals {
public:
    PlainSignals()
    {
        check(posix_spawnattr_init(&attributes), "signals");
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        check(posix_spawnattr_setsigmask(&attributes, &none), "signals");
        check(posix_spawnattr_setsigdefault(&attributes, &all), "signals");
        check(posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF), "signals");
    }
    ~PlainSignals() { posix_spawnattr_destroy(&attributes); }
    PlainSignals(const PlainSignals&) = delete;
    PlainSignals& operator=(const PlainSignals&) = delete;

    posix_spawnattr_t attributes;
};

/// As the system takes them; it only reads the texts.
std::vector<char*> pointersTo(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// Of two with one name a program finds the first.
std::vector<std::string> environmentWith(const std::vector<std::string>& more)
{
    std::vector<std::string> all;
    for (char** each = environ; each != nullptr && *each != nullptr; ++each)
        all.emplace_back(*each);
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

} // namespace

Descriptor::Descriptor(int number)
{
    if (number < 0)
        check(errno, "descriptors");
    // Where the application closed its standard ones, a new one may be among them, where the child wants others.
    this->number = fcntl(number, F_DUPFD_CLOEXEC, 10);
    const int error = errno;
    ::close(number);
    if (this->number < 0)
        check(error, "descriptors");
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(number, other.number);
    return *this;
}

void Descriptor::close()
{
    if (number >= 0)
        ::close(number);
    number = -1;
}

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment, const std::vector<int>& inherited)
{
    const FileActions files(inherited);
    const PlainSignals signals;
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const std::vector<std::string> names = environmentWith(environment);
    // Starts without a copy of this process, however large that is and however many threads it has.
    check(posix_spawn(&id, program.c_str(), &files.actions, &signals.attributes, pointersTo(words).data(),
                      pointersTo(names).data()),
          program.c_str());
}

ChildProcess::~ChildProcess()
{
    if (hasEnded())
        return;
    ::kill(id, SIGKILL);
    while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool ChildProcess::hasEnded()
{
    if (isGone)
        return true;
    int status = 0;
    pid_t answer = 0;
    do
        answer = waitpid(id, &status, WNOHANG);
    while (answer < 0 && errno == EINTR);
    if (answer == id)
        ended = status;
    // Else the application waits for all children, or lets none wait: this one is gone, and its number may be another's.
    isGone = answer != 0;
    return isGone;
}

} // namespace vrk::station
