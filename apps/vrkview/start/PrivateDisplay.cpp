#include "start/PrivateDisplay.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vrkview {
namespace {

constexpr const char* program = "Xvfb";
constexpr int startLimit = 20000; // milliseconds

/// Closed in the end.
struct FileDescriptor {
    explicit FileDescriptor(int number) : number(number) {}
    ~FileDescriptor() { close(number); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int number;
};

/// In the child: becomes Xvfb, which writes the number of its display to `numberFd`.
[[noreturn]] void becomeServer(int numberFd, const std::string& screen, pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) // it died before the line above
        _exit(1);
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nowhere, fd);
    const std::string number = std::to_string(numberFd);
    execlp(program, program, "-displayfd", number.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp",
           "-noreset", static_cast<char*>(nullptr));
    _exit(127);
}

/// What Xvfb writes once it answers: a number and a line end. Empty if it ends or takes too long.
std::string readNumber(int fd)
{
    std::string text;
    pollfd wait{fd, POLLIN, 0};
    while (!text.ends_with('\n')) {
        const int ready = poll(&wait, 1, startLimit);
        if (ready < 0 && errno == EINTR)
            continue;
        std::array<char, 16> piece{};
        const ssize_t got = ready > 0 ? read(fd, piece.data(), piece.size()) : 0;
        if (got <= 0)
            return {};
        text.append(piece.data(), static_cast<std::size_t>(got));
    }
    text.pop_back();
    return text;
}

} // namespace

bool PrivateDisplay::IsAvailable()
{
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0)
            return true;
    return false;
}

PrivateDisplay::Server::~Server()
{
    if (process <= 0)
        return;
    kill(process, SIGTERM);
    waitpid(process, nullptr, 0);
}

PrivateDisplay::PrivateDisplay(int width, int height, const std::function<void()>& meanwhile)
{
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe to Xvfb can be made");
    const pid_t self = getpid();
    server.process = fork();
    if (server.process == 0) {
        close(ends[0]);
        becomeServer(ends[1], screen, self);
    }
    close(ends[1]);
    const FileDescriptor numbers(ends[0]);
    if (meanwhile)
        meanwhile();
    const std::string number = server.process > 0 ? readNumber(numbers.number) : std::string();
    if (number.empty())
        throw std::runtime_error("Xvfb does not start");
    setenv("DISPLAY", (":" + number).c_str(), 1);
}

PrivateDisplay::~PrivateDisplay() = default;

void loadSoftwareDriver()
{
    if (std::getenv("LIBGL_DRIVERS_PATH")) // then it is another one
        return;
    void* const library = dlopen("libGL.so.1", RTLD_LAZY);
    const void* const inLibrary = library ? dlsym(library, "glFlush") : nullptr;
    Dl_info info{};
    if (!inLibrary || dladdr(inLibrary, &info) == 0)
        return;
    // It stays: the driver that is loaded from there later is this one.
    dlopen((std::filesystem::path(info.dli_fname).parent_path() / "dri/swrast_dri.so").c_str(), RTLD_NOW);
}

} // namespace vrkview
