#include "start/PrivateDisplay.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>

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

void endServer(pid_t server)
{
    if (server <= 0)
        return;
    kill(server, SIGTERM);
    waitpid(server, nullptr, 0);
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

PrivateDisplay::PrivateDisplay(int width, int height)
{
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe to Xvfb can be made");
    const pid_t self = getpid();
    server = fork();
    if (server == 0) {
        close(ends[0]);
        becomeServer(ends[1], screen, self);
    }
    close(ends[1]);
    const std::string number = server > 0 ? readNumber(ends[0]) : std::string();
    close(ends[0]);
    if (number.empty()) {
        endServer(server);
        throw std::runtime_error("Xvfb does not start");
    }
    setenv("DISPLAY", (":" + number).c_str(), 1);
}

PrivateDisplay::~PrivateDisplay()
{
    endServer(server);
}

} // namespace vrkview
