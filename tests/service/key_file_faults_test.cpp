// The key file: what is stored and loaded, who else could read it, what may stand in its place, and what is left where
// the system fails at any call or the process is killed. The linker hands the store's system calls to the functions
// below.
#include "service/api_key_store.h"
#include "tests/support/scoped_environment.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;
using testsupport::ScopedEnvironment;
namespace fs = std::filesystem;

namespace {

// Runs before a system call of the store (true) and after it (false). If it returns an error number before, the call
// fails with that and is not made.
using Fault = std::function<int(bool isBefore)>;

const Fault* currentFault = nullptr;
int faultyCall = 0;  // the number of the call, from 1
int callCount = 0;

template <typename Call>
auto withFault(Call call) -> decltype(call())
{
    if (currentFault == nullptr || ++callCount != faultyCall) { return call(); }
    if (const int error = (*currentFault)(true); error != 0) {
        errno = error;
        return -1;
    }
    const auto result = call();
    (*currentFault)(false);
    return result;
}

}  // namespace

// The linker's option --wrap sends each call of `symbol` to __wrap_<symbol>, and gives the real one the name
// __real_<symbol>.
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
FAULTY("write", ssize_t, write, (int file, const void* bytes, std::size_t size), (file, bytes, size))
#undef FAULTY

namespace {

constexpr uid_t kNobody = 65534;
constexpr char kNotConfigured[] = "<Tessera API key is not configured.>";
constexpr char kOthersHaveAccess[] = "The API key file can be accessed by other users.";
const std::string kOld = "the-old-key-0123456789";
const std::string kNew = "a-new-and-somewhat-longer-key-9876543210";

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

unsigned rightsOf(const fs::path& path)
{
    return static_cast<unsigned>(fs::symlink_status(path).permissions());
}

// The key, or the failure's text in angle brackets.
std::string loaded()
{
    QString key = u"old content"_s;
    Message error = "old text";
    const bool isLoaded = service::loadApiKey(&key, &error);
    EXPECT_TRUE(isLoaded ? error.isEmpty() : key.isEmpty());
    return isLoaded ? key.toStdString() : "<" + error.english().toStdString() + ">";
}

// The failure's text; empty on success.
std::string saved(const std::string& key)
{
    Message error = "old text";
    const bool isSaved = service::saveApiKey(QString::fromStdString(key), &error);
    EXPECT_EQ(isSaved, error.isEmpty());
    EXPECT_FALSE(error.english().contains(QString::fromStdString(key)));
    return error.english().toStdString();
}

std::string problem()
{
    return service::apiKeyFileProblem().english().toStdString();
}

// A home directory of its own. Rights mean nothing to root, who therefore becomes another user meanwhile.
class KeyFile : public testing::Test {
protected:
    void SetUp() override
    {
        ::umask(0);
        if (m_isRoot) { ASSERT_EQ(::chown(m_home.parent_path().c_str(), kNobody, kNobody), 0); }
        if (m_isRoot) { ASSERT_EQ(::seteuid(kNobody), 0); }
    }

    void TearDown() override
    {
        reset(0);
        if (m_isRoot) { ASSERT_EQ(::seteuid(0), 0); }
    }

    // The old key with these rights; for 0 not even a home.
    void reset(mode_t mode) const
    {
        std::error_code ignored;
        fs::permissions(m_home, fs::perms::owner_all, ignored);
        fs::permissions(m_directory, fs::perms::owner_all, ignored);
        fs::remove_all(m_home);
        if (mode != 0) { write(kOld, mode); }
    }

    void write(const std::string& content, mode_t mode = 0600) const
    {
        fs::create_directories(m_directory);
        fs::permissions(m_directory, fs::perms::owner_all);
        std::ofstream(m_file, std::ios::binary) << content;
        ASSERT_EQ(::chmod(m_file.c_str(), mode), 0);
    }

    // Nothing that anybody else can read, and no more than `most` files.
    void expectPrivate(int most = 1) const
    {
        if (!fs::exists(m_directory)) { return; }
        EXPECT_EQ(rightsOf(m_directory), 0700U);
        for (const auto& entry : fs::directory_iterator(m_directory)) {
            EXPECT_EQ(rightsOf(entry.path()), 0600U) << entry.path();
            EXPECT_GE(--most, 0);
        }
    }

    // Runs `act` after reset(mode), with the fault at its first system call, then at its second and so on, and each time
    // `check`. Gives how many calls there are.
    template <typename Act, typename Check>
    int atEachCall(mode_t mode, const Fault& fault, Act act, Check check) const
    {
        for (faultyCall = 1;; ++faultyCall) {
            SCOPED_TRACE(testing::Message() << "rights " << mode << ", call " << faultyCall);
            reset(mode);
            callCount = 0;
            currentFault = &fault;
            act();
            currentFault = nullptr;
            if (callCount < faultyCall) { return callCount; }
            check();
        }
    }

    const bool m_isRoot = ::geteuid() == 0;
    QTemporaryDir m_temporary;
    const fs::path m_home = fs::path(m_temporary.path().toStdString()) / "home";
    const fs::path m_directory = m_home / ".127.0.0.1";
    const fs::path m_file = m_directory / "ApiKey.txt";
    const std::string m_readFailure = "<Failed to read API key file: " + m_file.string() + ">";
    const std::string m_writeFailure = "Failed to write API key file: " + m_file.string();
    const std::string m_directoryFailure =
        "Failed to create configuration directory: " + m_directory.string();
    const ScopedEnvironment m_homeVariable{"HOME", m_home};
    const ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", "http://127.0.0.1:8080"};
};

TEST_F(KeyFile, IsSavedAndLoadedTrimmed)
{
    EXPECT_EQ(service::apiKeyFilePath().toStdString(), m_file);
    EXPECT_EQ(loaded(), kNotConfigured);
    EXPECT_EQ(saved(" \t k\u00E9y 1\n"), "");
    EXPECT_EQ(contentOf(m_file), "k\u00E9y 1");
    EXPECT_EQ(loaded(), "k\u00E9y 1");
    EXPECT_EQ(saved("another"), "");
    EXPECT_EQ(loaded(), "another");
    expectPrivate();

    Message error;
    EXPECT_FALSE(service::loadApiKey(nullptr, &error));
    EXPECT_EQ(error.english().toStdString(), "No API key output was provided.");
}

TEST_F(KeyFile, MayHoldAnything)
{
    constexpr std::size_t kMostBytes = 65'536;
    const std::pair<std::string, std::string> rows[] = {
        {"\r\n  key \r\n", "key"},
        {"\xEF\xBB\xBFkey\n", "key"},
        {"REPLACE_WITH_YOUR_API_KEY\n", "REPLACE_WITH_YOUR_API_KEY"},
        {"", kNotConfigured},
        {" \t\r\n", kNotConfigured},
        {"key\r\nX-Header: 1", kNotConfigured},
        {std::string("\0key", 4), kNotConfigured},
        {"a\x7F", kNotConfigured},
        {"k\u2028y", kNotConfigured},  // a line separator
        {"k\xFF\xC3", "k\uFFFD\uFFFD"},
        {"\xED\xA0\x80k", "\uFFFD\uFFFD\uFFFDk"},  // half a character
        {std::string(kMostBytes, 'k'), std::string(kMostBytes, 'k')},
        {std::string(kMostBytes + 1, 'k'), m_readFailure},
    };
    for (const auto& [content, expected] : rows) {
        write(content);
        EXPECT_EQ(loaded(), expected) << content.substr(0, 20);
    }
}

TEST_F(KeyFile, RightsOfOthersAreSeenAndTakenAway)
{
    for (const mode_t mode : {0600U, 0400U, 0U, 0640U, 0604U, 0602U, 0610U, 0666U, 04755U}) {
        SCOPED_TRACE(mode);
        write("key", mode);
        EXPECT_EQ(problem(), (mode & 077U) == 0 ? "" : kOthersHaveAccess);
        EXPECT_EQ(rightsOf(m_file), mode) << "the check changes nothing";
        EXPECT_EQ(loaded(), "key");
        expectPrivate();
        ASSERT_EQ(::chmod(m_file.c_str(), mode), 0);
        EXPECT_EQ(saved("other"), "");
        expectPrivate();
    }
}

// What stands in the place of the file or its directory, whether the check finds it unsafe, and what a load and then a
// save make of it.
TEST_F(KeyFile, MayBeSomethingElse)
{
    const auto link = [](const fs::path& target, const fs::path& path) {
        return [=] { fs::create_directories(path.parent_path()), fs::create_symlink(target, path); };
    };
    const auto rights = [this](mode_t mode) {
        return [=, this] { write(kOld), ::chmod(m_directory.c_str(), mode); };
    };
    const auto file = [](const fs::path& path) { return [=] { std::ofstream(path) << "x"; }; };
    const auto pipe = [this] { fs::create_directories(m_directory), ::mkfifo(m_file.c_str(), 0600); };
    const auto directory = [this] { fs::create_directories(m_file / "inside"); };
    const auto noDirectory = [this, file] { fs::create_directory(m_home), file(m_directory)(); };
    const auto home = [this] { fs::create_directory(m_home), ::chmod(m_home.c_str(), 0500); };
    const fs::path target = m_home.parent_path() / "target";
    file(target)();
    const std::string noOwner = "<Could not read the API key file owner (error ";
    const struct {
        const char* name;
        std::function<void()> make;
        bool isUnsafe;
        std::string loaded, saved;
    } rows[] = {
        {"nothing", [] {}, false, kNotConfigured, ""},
        {"a link", link(target, m_file), true, m_readFailure, ""},
        {"a link to nothing", link("none", m_file), true, m_readFailure, ""},
        {"a link to itself", link(m_file, m_file), true, m_readFailure, ""},
        {"a pipe", pipe, true, m_readFailure, ""},
        {"a directory", directory, true, m_readFailure, m_writeFailure},
        {"no directory", noDirectory, false, kNotConfigured, m_directoryFailure},
        {"a directory that is a link to itself", link(m_directory, m_directory), true, noOwner + "40).>",
         m_directoryFailure},
        {"an unsearchable directory", rights(0), true, noOwner + "13).>", m_writeFailure},
        {"a read-only directory", rights(0500), false, kOld, m_writeFailure},
        {"a directory that others may read", rights(0755), false, kOld, ""},
        {"a directory that others may write", rights(0775), true, kOld, ""},
        {"no home", file(m_home), false, kNotConfigured, m_directoryFailure},
        {"a read-only home", home, false, kNotConfigured, m_directoryFailure},
    };
    for (const auto& [name, make, isUnsafe, load, save] : rows) {
        SCOPED_TRACE(name);
        reset(0);
        make();
        EXPECT_EQ(problem(), isUnsafe ? kOthersHaveAccess : "");
        EXPECT_EQ(loaded(), load);
        EXPECT_EQ(saved(kNew), save);
        if (!save.empty()) { continue; }
        EXPECT_EQ(problem(), "") << "saving takes away what the check complains of";
        EXPECT_EQ(contentOf(m_file), kNew);
    }
    EXPECT_EQ(rightsOf(target), 0666U);
    EXPECT_EQ(contentOf(target), "x");
}

TEST_F(KeyFile, OrItsDirectoryMayBelongToAnotherUser)
{
    if (!m_isRoot) { GTEST_SKIP() << "only root can make a file of another user"; }
    const auto give = [](const fs::path& path, uid_t user, mode_t mode) {
        ASSERT_EQ(::seteuid(0), 0);
        ASSERT_TRUE(::chown(path.c_str(), user, user) == 0 && ::chmod(path.c_str(), mode) == 0);
        ASSERT_EQ(::seteuid(kNobody), 0);
    };
    reset(0600);
    give(m_file, 1, 0644);
    EXPECT_EQ(loaded(), "<Could not restrict the API key file to its owner (error 1).>");
    EXPECT_EQ(rightsOf(m_file), 0644U);
    give(m_file, 1, 0600);
    EXPECT_EQ(problem(), kOthersHaveAccess);
    give(m_file, kNobody, 0600);
    give(m_directory, 1, 0755);
    EXPECT_EQ(problem(), kOthersHaveAccess);
    give(m_directory, 0, 0755);
    EXPECT_EQ(problem(), "");
    give(m_directory, kNobody, 0755);
}

TEST_F(KeyFile, IsNotTouchedForARefusedServiceAddress)
{
    write("key", 0644);
    const ScopedEnvironment refused("PLATTERSCOPE_SERVICE_URL", "ftp://tessera.example");
    EXPECT_EQ(loaded().substr(0, 28), "<The Tessera service address");
    EXPECT_EQ(saved(kNew).substr(0, 27), "The Tessera service address");
    EXPECT_EQ(problem() + contentOf(m_file), "key");
    EXPECT_EQ(rightsOf(m_file), 0644U);
}

TEST_F(KeyFile, AnyCallMayFail)
{
    for (const int errorNumber : {EIO, EINTR}) {
        const Fault fault = [errorNumber](bool /*isBefore*/) { return errorNumber; };
        std::string text;
        int successes = 0;
        const auto save = [&] { text = saved(kNew); };
        for (const mode_t mode : {0600U, 0U}) {
            const int calls = atEachCall(mode, fault, save, [&] {
                successes += text.empty() ? 1 : 0;
                EXPECT_EQ(contentOf(m_file), text.empty() ? kNew : mode != 0 ? kOld : "");
                expectPrivate();
                EXPECT_EQ(saved(kNew), "") << "works again when the fault has passed";
            });
            EXPECT_GT(calls, 5) << "what is written is also flushed";
        }
        const auto load = [&] { text = loaded(); };
        atEachCall(0644, fault, load, [&] {
            successes += text == kOld ? 1 : 0;
            EXPECT_TRUE(text == kOld || text.starts_with('<')) << text;
            EXPECT_EQ(contentOf(m_file), kOld);
        });
        EXPECT_EQ(successes, errorNumber == EINTR ? 4 : 0) << "interrupted reads and writes are repeated";
        const auto check = [&] { text = problem(); };
        EXPECT_EQ(atEachCall(0600, fault, check, [&] { EXPECT_EQ(text, kOthersHaveAccess); }), 2);
    }
}

TEST_F(KeyFile, ADiskMayFillUpAtAnyByte)
{
    rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit former = limit;
    std::signal(SIGXFSZ, SIG_IGN);
    for (limit.rlim_cur = 0; limit.rlim_cur < kNew.size(); ++limit.rlim_cur) {
        reset(0600);
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        const std::string text = saved(kNew);
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &former), 0);
        EXPECT_EQ(text, m_writeFailure);
        EXPECT_EQ(contentOf(m_file), kOld);
        expectPrivate();
    }
}

TEST_F(KeyFile, ASaveMayBeKilledAtAnyCall)
{
    const auto saveInAProcess = [] {
        const pid_t process = ::fork();
        if (process == 0) { ::_exit(saved(kNew).empty() ? 0 : 1); }
        int status = -1;
        ASSERT_EQ(::waitpid(process, &status, 0), process);
        ASSERT_TRUE(status == 0 || status == SIGKILL);
        callCount = status == SIGKILL ? faultyCall : 0;
    };
    for (const bool isKilledBefore : {true, false}) {
        const Fault kill = [=](bool isBefore) { return isBefore == isKilledBefore ? ::raise(SIGKILL) : 0; };
        for (const mode_t mode : {0600U, 0U}) {
            atEachCall(mode, kill, saveInAProcess, [&] {
                const std::string content = contentOf(m_file);
                EXPECT_TRUE(content == kNew || content == (mode != 0 ? kOld : "")) << content;
                expectPrivate(2);
                EXPECT_EQ(saved(kNew), "");
                EXPECT_EQ(loaded(), kNew);
            });
            EXPECT_GT(faultyCall, 5);
        }
    }
}

TEST_F(KeyFile, MayBeExchangedForOneThatOthersCanReadAtAnyCall)
{
    std::string text;
    const Fault exchange = [this](bool isBefore) {
        if (isBefore) { fs::remove(m_file), write("theirs", 0644); }
        return 0;
    };
    const auto load = [&] { text = loaded(); };
    atEachCall(0600, exchange, load, [&] { EXPECT_TRUE(text != "theirs" || rightsOf(m_file) == 0600U); });
}

}  // namespace
