// The key file where the system fails: at each of its calls in turn, on a full disk, and where the process is killed in
// the middle of a save. The linker hands the store's system calls to the functions below.
#include "tests/service/key_home.h"
#include "tests/support/fault_table.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using testsupport::recordFault;
using testsupport::ScopedEnvironment;
namespace fs = std::filesystem;

namespace {

// What happens instead of a system call of the store's, or around it.
struct Fault {
    int call = 0;                       // the number of the call, from 1
    int errorNumber = 0;                // what it fails with, if it does
    std::function<void()> before = {};  // runs before it
    std::function<void()> after = {};   // runs behind it
};

const Fault* currentFault = nullptr;
int callCount = 0;
std::optional<std::size_t> diskBytes;  // so many can be written, then the disk is full

template <typename Call>
auto withFault(Call call) -> decltype(call())
{
    if (currentFault == nullptr || ++callCount != currentFault->call) { return call(); }
    if (currentFault->before) { currentFault->before(); }
    if (currentFault->errorNumber != 0) {
        errno = currentFault->errorNumber;
        return -1;
    }
    const auto result = call();
    if (currentFault->after) { currentFault->after(); }
    return result;
}

}  // namespace

// The linker's option --wrap sends each call of `symbol` to __wrap_<symbol>, and gives the real one the name __real_<symbol>.
#define FAULTY(symbol, result, name, parameters, arguments)                                                  \
    extern "C" result real_##name parameters asm("__real_" symbol);                                          \
    extern "C" result wrap_##name parameters asm("__wrap_" symbol);                                          \
    extern "C" result wrap_##name parameters                                                                 \
    {                                                                                                        \
        return withFault([&] { return real_##name arguments; });                                             \
    }

FAULTY("chmod", int, chmod, (const char* path, mode_t mode), (path, mode))
FAULTY("fchmod", int, fchmod, (int file, mode_t mode), (file, mode))
FAULTY("fchmodat", int, fchmodat, (int at, const char* path, mode_t mode, int flags), (at, path, mode, flags))
FAULTY("fstat64", int, fstat, (int file, struct stat* status), (file, status))
FAULTY("fsync", int, fsync, (int file), (file))
FAULTY("lstat64", int, lstat, (const char* path, struct stat* status), (path, status))
FAULTY("mkdir", int, mkdir, (const char* path, mode_t mode), (path, mode))
FAULTY("mkostemp64", int, mkostemp, (char* path, int flags), (path, flags))
FAULTY("open64", int, open, (const char* path, int flags, mode_t mode), (path, flags, mode))
FAULTY("read", ssize_t, read, (int file, void* bytes, std::size_t size), (file, bytes, size))
FAULTY("rename", int, rename, (const char* from, const char* to), (from, to))
FAULTY("stat64", int, stat, (const char* path, struct stat* status), (path, status))
FAULTY("unlink", int, unlink, (const char* path), (path))
#undef FAULTY

extern "C" ssize_t realWrite(int file, const void* bytes, std::size_t size) asm("__real_write");
extern "C" ssize_t faultyWrite(int file, const void* bytes, std::size_t size) asm("__wrap_write");
extern "C" ssize_t faultyWrite(int file, const void* bytes, std::size_t size)
{
    return withFault([&]() -> ssize_t {
        const std::size_t count = std::min(size, diskBytes.value_or(size));
        if (diskBytes) { *diskBytes -= count; }
        if (count > 0 || size == 0) { return realWrite(file, bytes, count); }
        errno = ENOSPC;
        return -1;
    });
}

namespace {

const QString kOld = u"the-old-key-0123456789"_s;
const QString kNew = u"a-new-and-somewhat-longer-key-9876543210"_s;

void killThisProcess()
{
    ::kill(::getpid(), SIGKILL);
}

class KeyFileFaults : public KeyHome {
protected:
    // A fresh directory, with the old key in it or without any.
    void reset(bool hasOldKey)
    {
        fs::remove_all(m_directory);
        fs::remove_all(m_aside);
        if (hasOldKey) { ASSERT_EQ(saved(kOld), ""); }
    }

    // Runs `act` with the fault; whether it came to the faulty call.
    template <typename Act>
    static bool runWith(const Fault& fault, Act act)
    {
        callCount = 0;
        currentFault = &fault;
        act();
        currentFault = nullptr;
        return callCount >= fault.call;
    }

    // The file holds one of the keys whole, or is not there, as it was before a save that ended so.
    void expectKeyIs(bool isNew, bool hadOldKey) const
    {
        if (isNew || hadOldKey) {
            EXPECT_EQ(fileContent(), (isNew ? kNew : kOld).toStdString());
        } else {
            EXPECT_FALSE(fs::exists(m_file));
        }
    }

    // Nothing that anybody else can read, and no more than `most` files.
    static void expectPrivate(const fs::path& directory, std::ptrdiff_t most)
    {
        std::ptrdiff_t count = 0;
        for (const auto& entry : fs::directory_iterator(directory)) {
            EXPECT_EQ(rightsOf(entry.path()), 0600U) << entry.path();
            ++count;
        }
        EXPECT_LE(count, most);
        EXPECT_EQ(rightsOf(directory), 0700U);
    }

    // Runs `act` in a process of its own; how that ended, as waitpid() tells it.
    template <typename Act>
    static int inProcess(Act act)
    {
        const pid_t process = ::fork();
        if (process == 0) { ::_exit(act()); }
        int status = -1;
        EXPECT_EQ(::waitpid(process, &status, 0), process);
        return status;
    }

    const fs::path m_aside = m_home / "aside";
};

TEST_F(KeyFileFaults, ASaveMayFailAtAnyCall)
{
    std::size_t failures = 0;
    std::size_t successes = 0;
    for (const bool hasOldKey : {true, false}) {
        for (const int errorNumber : {EIO, ENOSPC, EACCES, EROFS, EINTR, EDQUOT, ENOENT}) {
            for (int call = 1;; ++call) {
                SCOPED_TRACE(testing::Message() << hasOldKey << " errno " << errorNumber << " call " << call);
                reset(hasOldKey);
                std::string text;
                if (!runWith({.call = call, .errorNumber = errorNumber}, [&] { text = saved(kNew); })) {
                    EXPECT_GT(call, 5);
                    break;
                }
                ++(text.empty() ? successes : failures);
                expectKeyIs(text.empty(), hasOldKey);
                if (fs::exists(m_directory)) { expectPrivate(m_directory, 1); }
                EXPECT_EQ(saved(kNew), "") << "and works again when the fault has passed";
            }
        }
    }
    EXPECT_GT(failures, 10 * successes);
    recordFault("Key file: a system call of a save fails", "a message, the old key stands whole", failures);
    recordFault("Key file: a system call of a save is interrupted", "saved all the same", successes);
}

TEST_F(KeyFileFaults, ADiskMayFillUpAtAnyByte)
{
    for (std::size_t bytes = 0; bytes < static_cast<std::size_t>(kNew.size()); ++bytes) {
        reset(true);
        diskBytes = bytes;
        const std::string text = saved(kNew);
        diskBytes.reset();
        EXPECT_EQ(text, writeFailure()) << bytes;
        expectKeyIs(false, true);
        expectPrivate(m_directory, 1);
    }
    recordFault("Key file: a disk that fills up", "not saved, the old key stands",
                static_cast<std::size_t>(kNew.size()));
}

TEST_F(KeyFileFaults, ASaveMayBeKilledAtAnyCall)
{
    std::size_t kills = 0;
    for (const bool hasOldKey : {true, false}) {
        for (const bool isBefore : {true, false}) {
            for (int call = 1;; ++call) {
                SCOPED_TRACE(testing::Message() << hasOldKey << " before " << isBefore << " call " << call);
                reset(hasOldKey);
                const Fault fault = {.call = call,
                                     .before = isBefore ? killThisProcess : std::function<void()>(),
                                     .after = isBefore ? std::function<void()>() : killThisProcess};
                const int status = inProcess([&] {
                    runWith(fault, [] { EXPECT_EQ(saved(kNew), ""); });
                    return 0;
                });
                if (WIFEXITED(status)) {
                    EXPECT_GT(call, 5);
                    break;
                }
                ++kills;
                ASSERT_EQ(WTERMSIG(status), SIGKILL);
                expectKeyIs(fileContent() == kNew.toStdString(), hasOldKey);
                if (fs::exists(m_directory)) { expectPrivate(m_directory, 2); }
                EXPECT_EQ(saved(kNew), "");
                EXPECT_EQ(loaded(), kNew.toStdString());
            }
        }
    }
    recordFault("Key file: the process is killed in the middle of a save",
                "the old key or the new one stands whole, nothing is readable by others", kills);
}

TEST_F(KeyFileFaults, TheDirectoryMayVanishAtAnyCall)
{
    std::size_t times = 0;
    const auto vanish = [&] {
        fs::rename(m_directory, m_aside);
        ++times;
    };
    for (const bool isSave : {true, false}) {
        for (int call = 1;; ++call) {
            SCOPED_TRACE(testing::Message() << "save " << isSave << " call " << call);
            reset(true);
            std::string text;
            const bool wasHit =
                runWith({.call = call, .before = vanish}, [&] { text = isSave ? saved(kNew) : loaded(); });
            if (!wasHit) { break; }
            std::ifstream file(m_aside / "ApiKey.txt");
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
                      (isSave && text.empty() && !fs::exists(m_file) ? kNew : kOld).toStdString());
            EXPECT_EQ(text.find(kNew.toStdString()), std::string::npos);
            if (isSave && fs::exists(m_directory)) { expectPrivate(m_directory, 1); }
        }
    }
    recordFault("Key file: its directory vanishes in the middle", "a message, or it is made anew", times);
}

TEST_F(KeyFileFaults, ALoadMayFailAtAnyCall)
{
    std::size_t failures = 0;
    for (const int errorNumber : {EIO, EACCES, ELOOP, ENOMEM, EINTR}) {
        for (int call = 1;; ++call) {
            SCOPED_TRACE(testing::Message() << "errno " << errorNumber << " call " << call);
            reset(true);
            ASSERT_EQ(::chmod(m_file.c_str(), 0644), 0);
            std::string text;
            if (!runWith({.call = call, .errorNumber = errorNumber}, [&] { text = loaded(); })) { break; }
            ++failures;
            EXPECT_TRUE(text == kOld.toStdString() || text.starts_with('<')) << text;
            EXPECT_TRUE(errorNumber == EINTR || text != kOld.toStdString());
            EXPECT_EQ(fileContent(), kOld.toStdString());
        }
    }
    recordFault("Key file: a system call of a load fails", "a message, the file is as it was", failures);
}

TEST_F(KeyFileFaults, ARealDiskMayBeFull)
{
    reset(false);
    if (!m_isRoot) { GTEST_SKIP() << "only root can mount a disk"; }
    constexpr int kCannotMount = 77;
    const int status = inProcess([&] {
        become(0);
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", m_home.c_str(), "tmpfs", 0, "size=4k,mode=0700,uid=65534") != 0) {
            return kCannotMount;  // a container may not
        }
        become(kNobody);
        EXPECT_EQ(saved(kOld), "");  // takes the one block there is
        EXPECT_EQ(saved(kNew), writeFailure());
        EXPECT_EQ(loaded(), kOld.toStdString());
        expectPrivate(m_directory, 1);
        return HasFailure() ? 1 : 0;
    });
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == kCannotMount) { GTEST_SKIP() << "nothing may be mounted here"; }
    EXPECT_EQ(WEXITSTATUS(status), 0);
    recordFault("Key file: a disk that fills up", "not saved, the old key stands");
}

TEST_F(KeyFileFaults, TheHomeMayBeAnything)
{
    fs::current_path(m_home);
    fs::create_symlink("loop", m_home / "loop");
    std::ofstream(m_home / "file") << "no directory";
    fs::create_directory(m_home / "locked");
    fs::permissions(m_home / "locked", fs::perms::owner_read);
    const std::string home = m_home.string();
    const std::string root = m_isRoot ? "" : "?";
    std::size_t count = 0;
    for (const std::string& wrong : {root, home + "/loop", home + "/file", home + "/file/below",
                                     home + "/locked", home + '/' + std::string(5000, 'n')}) {
        if (wrong == "?") { continue; }  // who owns "/" can save there
        const ScopedEnvironment variable("HOME", wrong);
        EXPECT_TRUE(saved(kNew).starts_with("Failed to create configuration directory: /")) << wrong;
        EXPECT_TRUE(loaded().starts_with('<')) << wrong;
        ++count;
    }
    recordFault("Key file: a home that is empty, no directory, locked, a loop or too long",
                "not saved, with a message", count);
    for (const std::string relative : {"below", "./", "a/../b"}) {
        const ScopedEnvironment variable("HOME", relative);
        EXPECT_EQ(saved(kNew), "") << relative;
        EXPECT_EQ(loaded(), kNew.toStdString()) << relative;
        EXPECT_EQ(rightsOf(service::apiKeyFilePath().toStdString()), 0600U) << relative;
    }
    recordFault("Key file: a home that is a relative path", "taken from the current directory", 3);
    fs::current_path("/");
}

TEST_F(KeyFileFaults, ItsDirectoryMayBeALinkToItself)
{
    fs::create_symlink(m_directory.filename(), m_directory);
    EXPECT_EQ(saved(kNew), "Failed to create configuration directory: " + m_directory.string());
    EXPECT_EQ(loaded(), "<Could not read the API key file owner (error 40).>");
    EXPECT_FALSE(service::apiKeyFileProblem().isEmpty());
    fs::remove(m_directory);
    fs::create_directory(m_directory);
    fs::create_symlink("ApiKey.txt", m_file);
    EXPECT_EQ(loaded(), readFailure());
    EXPECT_EQ(saved(kNew), "") << "a save replaces the link";
    EXPECT_EQ(fileContent(), kNew.toStdString());
    recordFault("Key file: a link to itself in its place or its directory's", "a message at once", 4);
}

TEST_F(KeyFileFaults, TheFileMayHoldAnything)
{
    constexpr std::size_t kMostBytes = 65'536;
    const std::string notConfigured = "<Tessera API key is not configured.>";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {std::string(kMostBytes, 'k'), std::string(kMostBytes, 'k')},
        {std::string(kMostBytes + 1, 'k'), readFailure()},
        {std::string(kMostBytes, '\0'), notConfigured},
        {std::string(kMostBytes, '\n'), notConfigured},
        {std::string("\0key", 4), notConfigured},
        {"key\r\nX-Header: 1", notConfigured},
        {"k\xE2\x80\xA8y", notConfigured},  // a line separator
        {"k\xFF\xC3", "k\uFFFD\uFFFD"},
        {"\xED\xA0\x80k", "\uFFFD\uFFFD\uFFFDk"},  // half a character
    };
    for (const auto& [content, expected] : cases) {
        writeFile(content);
        EXPECT_EQ(loaded(), expected) << content.substr(0, 20);
    }
    recordFault("Key file: NUL bytes, line breaks, invalid UTF-8, more than 64 KiB",
                "no key, or one that a header line can hold", cases.size());
}

}  // namespace
