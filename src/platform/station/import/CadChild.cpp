#include "platform/station/import/CadChild.h"

#include "platform/station/import/CadAnswer.h"
#include "platform/station/import/CadProtocol.h"
#include "platform/station/import/ChildProcess.h"
#include "platform/station/import/OcctProgress.h"

#include <Standard_Failure.hxx>

#include <fmt/format.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <new>
#include <optional>
#include <system_error>

namespace vrk::station {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int heartbeat = 40;                             // milliseconds; a cancel takes effect within 50
constexpr std::size_t longestLine = std::size_t(1) << 16; // of a message
constexpr const char* program = "the program that reads CAD files";

// TBB's allocator makes an import a tenth faster; sanitizers want to see each block.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr const char* allocator = "MMGT_OPT=0";
#else
constexpr const char* allocator = "MMGT_OPT=2";
#endif

const char* wordOf(CadRequest request)
{
    switch (request) {
    case CadRequest::Bare:
        return "bare";
    case CadRequest::Meshed:
        return "meshed";
    case CadRequest::Whole:
        return "whole";
    case CadRequest::Triangles:
        return "triangles";
    case CadRequest::RobotTriangles:
        return "robot-triangles";
    }
    return "";
}

std::uint64_t memoryOf(const CadReaderSettings& settings)
{
    if (settings.mostMemory > 0)
        return settings.mostMemory;
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) /
           10 * 9;
}

std::string secondsOf(std::chrono::milliseconds time)
{
    return fmt::format("{:g}", std::chrono::duration<double>(time).count());
}

/// A file in memory, laid into this process for reading.
class MappedFile {
public:
    MappedFile(int descriptor, std::size_t size)
        : size(size), begin(mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0))
    {
        if (begin == MAP_FAILED)
            throw std::bad_alloc();
    }
    ~MappedFile() { munmap(begin, size); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::span<const char> bytes() const { return {static_cast<const char*>(begin), size}; }

private:
    std::size_t size;
    void* begin;
};

/// One file in the hands of the program.
class CadChild {
public:
    CadChild(const std::filesystem::path& file, CadRequest request, const Progress& progress);

    CadContent read();
    PlyTriangles readTriangles();

private:
    std::unique_ptr<ChildProcess> start(CadRequest request);
    void listen();
    /// Takes what has come. @return whether it was anything.
    bool receive();
    void take(std::string_view line);
    void takeProgress(std::string_view words);
    void checkLimits() const;
    [[noreturn]] void failOfItsEnd() const;
    void waitForAnswer();
    /// How many bytes the answer has, which nobody can change any more.
    std::size_t sealAnswer();
    CadContent contentOfAnswer();
    [[noreturn]] void fail(const std::string& cause) const { throw ImportError(file, cause); }

    const std::string unusable = fmt::format("{} gave an answer that cannot be used", program);
    const std::filesystem::path& file;
    const Progress& progress;
    const CadReaderSettings settings = GetCadReaderSettings();
    const std::uint64_t memory = memoryOf(settings);
    Descriptor messages;
    Descriptor answer;
    std::unique_ptr<ChildProcess> process;

    const Clock::time_point begin = Clock::now();
    Clock::time_point lastStep = begin;
    std::string step = "reading";
    double fraction = 0;
    std::string pending; // the beginning of a line
    std::optional<std::uint64_t> answerSize;
};

CadChild::CadChild(const std::filesystem::path& file, CadRequest request, const Progress& progress)
    : file(file), progress(progress)
{
    try {
        process = start(request);
    } catch (const std::system_error& failure) {
        fail(fmt::format("{} cannot be started: {}", program, failure.what()));
    }
}

std::unique_ptr<ChildProcess> CadChild::start(CadRequest request)
{
    const std::filesystem::path path = GetCadReaderPath();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        fail(fmt::format("{} is missing: {}", program, path.string()));
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    Descriptor writing(ends[1]);
    messages = Descriptor(ends[0]);
    answer = Descriptor(memfd_create("vrk-cad-answer", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    fcntl(messages.get(), F_SETFL, O_NONBLOCK);
    return std::make_unique<ChildProcess>(
        path,
        std::vector<std::string>{child::protocol, std::to_string(getpid()), std::to_string(memory), wordOf(request),
                                 file.string()},
        std::vector<std::string>{allocator}, std::vector<int>{writing.get(), answer.get()});
}

CadContent CadChild::read()
{
    waitForAnswer();
    return contentOfAnswer();
}

PlyTriangles CadChild::readTriangles()
{
    waitForAnswer();
    const MappedFile bytes(answer.get(), sealAnswer());
    try {
        return parsePlyMesh({bytes.bytes().data(), bytes.bytes().size()});
    } catch (const CloudFault& fault) {
        fail(fmt::format("{}: {}", unusable, fault.what()));
    }
}

void CadChild::waitForAnswer()
{
    listen();
    if (!answerSize)
        failOfItsEnd();
    // While its memory goes, which takes a while where it had much, the answer is read.
}

/// Until it has answered or ended.
void CadChild::listen()
{
    pollfd source{messages.get(), POLLIN, 0};
    while (true) {
        poll(&source, 1, heartbeat);
        const bool hasEnded = process->hasEnded(); // asked first: what it wrote before is there then
        if (!receive())
            report(progress, step, fraction);
        if (hasEnded || answerSize)
            return;
        checkLimits();
        // Its end of the pipe is closed just before it ends.
        if ((source.revents & (POLLHUP | POLLIN)) == POLLHUP)
            usleep(1000);
    }
}

bool CadChild::receive()
{
    bool any = false;
    char bytes[4096];
    for (ssize_t count = 0; (count = ::read(messages.get(), bytes, sizeof bytes)) > 0;) {
        pending.append(bytes, static_cast<std::size_t>(count));
        std::size_t from = 0;
        for (std::size_t end = 0; (end = pending.find('\n', from)) != std::string::npos; from = end + 1, any = true)
            take(std::string_view(pending).substr(from, end - from));
        pending.erase(0, from);
        if (pending.size() > longestLine)
            fail(fmt::format("{} says what cannot be understood", program));
    }
    return any;
}

void CadChild::take(std::string_view line)
{
    const std::size_t space = line.find(' ');
    const std::string_view word = line.substr(0, space);
    const std::string_view rest = space == std::string_view::npos ? std::string_view() : line.substr(space + 1);
    if (word == "progress") {
        takeProgress(rest);
    } else if (word == "error") {
        fail(std::string(rest));
    } else if (word == "memory") {
        fail(fmt::format("reading needs more than {} MB of memory", memory / 1'000'000));
    } else if (word == "done") {
        std::uint64_t size = 0;
        std::from_chars(rest.data(), rest.data() + rest.size(), size);
        answerSize = size;
    } else {
        fail(fmt::format("{} says what cannot be understood", program));
    }
}

void CadChild::takeProgress(std::string_view words)
{
    const std::size_t space = std::min(words.find(' '), words.size());
    double next = 0;
    const auto [end, error] = std::from_chars(words.data(), words.data() + space, next);
    if (error != std::errc() || end != words.data() + space || !(next >= 0 && next <= 1))
        fail(fmt::format("{} says what cannot be understood", program));
    std::string nextStep(words.substr(std::min(space + 1, words.size())));
    if (next != fraction || nextStep != step)
        lastStep = Clock::now();
    fraction = next;
    step = std::move(nextStep);
    report(progress, step, fraction);
}

void CadChild::checkLimits() const
{
    const Clock::time_point now = Clock::now();
    if (settings.longestTime.count() > 0 && now - begin > settings.longestTime)
        fail(fmt::format("reading takes longer than {} s", secondsOf(settings.longestTime)));
    if (settings.longestSilence.count() > 0 && now - lastStep > settings.longestSilence)
        fail(fmt::format("reading has come no further for {} s", secondsOf(settings.longestSilence)));
}

void CadChild::failOfItsEnd() const
{
    const std::optional<int> status = process->status();
    if (status && WIFSIGNALED(*status))
        fail(fmt::format("{} ended (signal {}): the file is damaged", program, WTERMSIG(*status)));
    if (status && WEXITSTATUS(*status) != 0)
        fail(fmt::format("{} ended (exit code {}): the file is damaged", program, WEXITSTATUS(*status)));
    fail(fmt::format("{} ended without an answer: the file is damaged", program));
}

std::size_t CadChild::sealAnswer()
{
    // Nobody may shorten it while it is read here.
    const bool isSealed = fcntl(answer.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE) == 0;
    struct stat state {};
    const bool isKnown = fstat(answer.get(), &state) == 0;
    if (!isSealed || !isKnown || *answerSize == 0 || static_cast<std::uint64_t>(state.st_size) != *answerSize)
        fail(unusable);
    return static_cast<std::size_t>(*answerSize);
}

CadContent CadChild::contentOfAnswer()
{
    const MappedFile bytes(answer.get(), sealAnswer());
    const Handle(OcctProgress) taking = new OcctProgress(progress, step, fraction, fraction);
    std::string cause;
    try {
        CadContent content = readAnswer(bytes.bytes(), taking->Start());
        taking->rethrow();
        return content;
    } catch (const Standard_Failure&) { // such as a direction without length
        cause = "the file is damaged: Open CASCADE cannot read again what it made of it";
    } catch (const std::runtime_error& failure) {
        cause = fmt::format("{}: {}", unusable, failure.what());
    }
    taking->rethrow(); // what the callback threw may be any of these
    fail(cause);
}

} // namespace

CadContent readInChild(const std::filesystem::path& file, CadRequest request, const Progress& progress)
{
    return CadChild(file, request, progress).read();
}

PlyTriangles readTriangles(const std::filesystem::path& file, const Progress& progress, SceneAxes axes)
{
    PlyTriangles read;
    if (GetCadReaderSettings().inOwnProcess) {
        read.mesh = readScene(file, progress, axes);
        return read;
    }
    const CadRequest request = axes == SceneAxes::ZUp ? CadRequest::Triangles : CadRequest::RobotTriangles;
    return CadChild(file, request, progress).readTriangles();
}

} // namespace vrk::station
