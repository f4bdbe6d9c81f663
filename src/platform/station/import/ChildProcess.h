#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/// Not installed.
namespace vrk::station {

/// A file descriptor that is closed with the object. It is none of the first ten, and no program that is started inherits it.
class Descriptor {
public:
    Descriptor() = default;
    /// Takes `number` over, moving it above the first ten. @throws std::system_error where the process has no room for it.
    explicit Descriptor(int number);
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : number(other.number) { other.number = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept;

    int get() const { return number; }
    void close();

private:
    int number = -1;
};

/// A program that runs beside this one. It ends with the object, and nothing is left of it.
///
/// It has nothing of this process but the environment, the working directory and what is handed over: its input and output
/// are /dev/null, the `inherited` descriptors are its numbers 3, 4 and so on, and all others are closed.
class ChildProcess {
public:
    /// @param environment  "NAME=value", where this process has none of that name.
    /// @throws std::system_error where it cannot be started.
    ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment, const std::vector<int>& inherited);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Whether it has ended; does not wait.
    bool hasEnded();
    /// How it ended, as `waitpid` tells it; none while it runs, and where the application itself waited for its children.
    std::optional<int> status() const { return ended; }

private:
    pid_t id = -1;
    bool isGone = false;
    std::optional<int> ended;
};

} // namespace vrk::station
