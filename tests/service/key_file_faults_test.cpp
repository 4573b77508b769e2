// The key file: what is stored and loaded, who else could read it, what may be in its place, and what is left if the
// system fails at any call or the process is killed. The linker hands the store's system calls to the functions below.
#include "service/api_key_store.h"
#include "tests/support/golden.h"
#include "tests/support/scopes.h"
#include "tests/support/temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <functional>

using testsupport::ScopedEnvironment;
namespace fs = std::filesystem;

namespace {

// Runs before a system call of the store (true) and after it (false). If it returns an error number before, the call
// fails with that and is not made.
using Fault = std::function<int(bool isBefore)>;

const Fault* currentFault = nullptr;
int faultyCall = 0;                   // the number of the call, from 1
int& callCount = *static_cast<int*>(  // shared with the processes of a test
    ::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

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

namespace {

constexpr uid_t kNobody = 65534;
constexpr char kOthersHaveAccess[] = "The API key file can be accessed by other users.";
const std::string kOld = "the-old-key-0123456789";
const std::string kNew = "a-new-and-somewhat-longer-k\u00E9y-9876543210";

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// In octal; "-" if nothing is there.
std::string rightsOf(const fs::path& path)
{
    struct stat status = {};
    char text[10] = "-";
    if (::lstat(path.c_str(), &status) == 0) {
        std::snprintf(text, sizeof text, "%o", status.st_mode & 07777U);
    }
    return text;
}

// The key, or the failure's text in angle brackets.
std::string loaded()
{
    QString key = QStringLiteral("old content");
    Message error = "old text";
    const bool isLoaded = service::loadApiKey(&key, &error);
    EXPECT_TRUE(isLoaded ? error.isEmpty() : key.isEmpty());
    return isLoaded ? key.toStdString() : "<" + error.english().toStdString() + ">";
}

// Saves kNew among white space. Returns the failure's text; empty on success.
std::string saved()
{
    Message error = "old text";
    const bool isSaved = service::saveApiKey(QString::fromStdString(" \t" + kNew + '\n'), &error);
    EXPECT_EQ(isSaved, error.isEmpty());
    EXPECT_FALSE(error.english().contains(QString::fromStdString(kNew)));
    return error.english().toStdString();
}

std::string problem()
{
    return service::apiKeyFileProblem().english().toStdString();
}

// A home directory of its own. Rights mean nothing to root, who therefore becomes another user meanwhile.
class KeyFile : public testing::Test {
protected:
    KeyFile()
    {
        ::umask(0);
        fs::permissions(m_temporary.path(), fs::perms::all);
    }
    ~KeyFile() override { become(0); }
    void become(uid_t user) const { ASSERT_TRUE(!m_isRoot || ::setresuid(user, user, 0) == 0); }

    // A file with these rights in its directory; for 0 not even a home.
    void reset(mode_t mode, const std::string& content = kOld) const
    {
        become(0);
        std::error_code ignored;
        fs::permissions(m_home, fs::perms::owner_all, ignored);
        fs::permissions(m_directory, fs::perms::owner_all, ignored);
        fs::remove_all(m_home);
        become(kNobody);
        if (mode == 0) { return; }
        fs::create_directories(m_directory);
        fs::permissions(m_directory, fs::perms::owner_all);
        std::ofstream(m_file, std::ios::binary) << content;
        ASSERT_EQ(::chmod(m_file.c_str(), mode), 0);
    }

    // Nothing that anybody else can read, and no more than `most` files.
    void expectPrivate(int most = 1) const
    {
        if (!fs::exists(m_directory)) { return; }
        EXPECT_EQ(rightsOf(m_directory), "700");
        for (const auto& entry : fs::directory_iterator(m_directory)) {
            EXPECT_EQ(rightsOf(entry.path()), "600") << entry.path();
            EXPECT_GE(--most, 0);
        }
    }

    // Runs `act` after reset(mode), with the fault at its first system call, then at its second and so on, and each time
    // `check`. Returns how many calls there are.
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
    const testsupport::TemporaryFolder m_temporary;
    const fs::path m_home = m_temporary.path() / "home";
    const fs::path m_directory = m_home / ".127.0.0.1";
    const fs::path m_file = m_directory / "ApiKey.txt";
    const ScopedEnvironment m_homeVariable{"HOME", m_home};
    const ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", "http://127.0.0.1:8080"};
};

// Each "$" line of the table is a command for the shell, which runs in the directory of the key file; "#" lines need
// root. The next line is what a check, a load and a save make of it, each with the rights of the directory and of the
// file after that.
TEST_F(KeyFile, MayHoldOrBeAnything)
{
    const auto check = [] { return problem() == kOthersHaveAccess ? "unsafe" : "safe" + problem(); };
    const auto save = [] {
        std::string text = saved();
        if (!text.empty()) { return text; }
        EXPECT_EQ(problem(), "") << "a save takes away what the check complains of";
        return loaded() == kNew ? "saved" : loaded();
    };
    const fs::path target = m_temporary.path() / "target";
    std::ofstream(target) << "x";
    std::ifstream table(PLATTERSCOPE_SERVICE_TABLES "/golden/key_files.txt");
    std::string text;
    for (std::string line, outcome; std::getline(table, line) && std::getline(table, outcome);) {
        text += line + '\n';
        if (m_isRoot || line.starts_with('$')) {
            outcome = "   ";
            for (const auto& act : {std::function<std::string()>(check), {loaded}, {save}}) {
                reset(0600);
                fs::remove(m_file);
                become(line.starts_with('$') ? kNobody : 0);
                const std::string command = "umask 077; cd '" + m_directory.string() + "'; " + line.substr(2);
                ASSERT_EQ(std::system(command.c_str()), 0) << line;
                become(kNobody);
                std::string end = act();
                const std::size_t home = end.find(m_home.string());
                if (home != end.npos) { end.replace(home, m_home.string().size(), "~"); }
                if (end.size() > 100) { end = std::to_string(end.size()) + " bytes"; }
                outcome += (outcome == "   " ? " " : " | ") + end + ' ' + rightsOf(m_directory) + ' ' +
                           rightsOf(m_file);
            }
        }
        text += outcome + '\n';
    }
    EXPECT_EQ(contentOf(target) + rightsOf(target), "x666") << "links are not followed";
    reset(0);
    become(0);
    EXPECT_EQ(testsupport::goldenDifference(text, "service/golden/key_files.txt"), "");
}

TEST_F(KeyFile, IsNotTouchedForARefusedServiceAddress)
{
    reset(0644);
    const ScopedEnvironment refused("PLATTERSCOPE_SERVICE_URL", "ftp://tessera.example");
    EXPECT_TRUE(loaded().starts_with("<The Tessera service address"));
    EXPECT_TRUE(saved().starts_with("The Tessera service address"));
    EXPECT_EQ(problem() + contentOf(m_file), kOld);
    EXPECT_EQ(rightsOf(m_file), "644");
}

TEST_F(KeyFile, ASaveMayFailOrBeKilledAtAnyCall)
{
    int status = -1;
    const auto saveInAProcess = [&status] {
        const pid_t process = ::fork();
        if (process == 0) { ::_exit(saved().empty() ? 0 : HasFailure() ? 2 : 1); }
        ASSERT_EQ(::waitpid(process, &status, 0), process);
    };
    const struct {
        int errorNumber;
        bool isBefore;
        int successes;
    } rows[] = {{EIO, true, 0}, {EINTR, true, 2}, {SIGKILL, true, 0}, {SIGKILL, false, 0}};
    for (const auto& row : rows) {
        const bool kills = row.errorNumber == SIGKILL;
        const Fault fault = [&](bool isBefore) {
            return isBefore != row.isBefore ? 0 : kills ? ::raise(SIGKILL) : row.errorNumber;
        };
        int successes = 0;
        for (const mode_t mode : {0600U, 0U}) {
            const int calls = atEachCall(mode, fault, saveInAProcess, [&] {
                const std::string content = contentOf(m_file);
                EXPECT_TRUE(kills ? status == SIGKILL : status == 0 || WEXITSTATUS(status) == 1) << status;
                EXPECT_TRUE(content == (status == 0 ? kNew
                                        : mode != 0 ? kOld
                                                    : "") ||
                            (kills && content == kNew));
                successes += status == 0 ? 1 : 0;
                expectPrivate(kills ? 2 : 1);
                EXPECT_EQ(saved(), "") << "works again without the fault";
                EXPECT_EQ(loaded(), kNew);
            });
            EXPECT_GT(calls, 5) << "what is written is also flushed";
        }
        EXPECT_EQ(successes, row.successes) << "an interrupted write is repeated";
    }
}

TEST_F(KeyFile, ALoadOrACheckMayFailAtAnyCall)
{
    std::string text;
    const auto load = [&] { text = loaded(); };
    const auto check = [&] { text = problem(); };
    for (const int errorNumber : {EIO, EINTR}) {
        const Fault fault = [errorNumber](bool /*isBefore*/) { return errorNumber; };
        int successes = 0;
        atEachCall(0644, fault, load, [&] {
            successes += text == kOld ? 1 : 0;
            EXPECT_TRUE(text == kOld || text.starts_with('<')) << text;
            EXPECT_EQ(contentOf(m_file), kOld);
        });
        EXPECT_EQ(successes, errorNumber == EINTR ? 2 : 0) << "an interrupted read is repeated";
        EXPECT_EQ(atEachCall(0600, fault, check, [&] { EXPECT_EQ(text, kOthersHaveAccess); }), 2);
    }
    // The file may also be exchanged for one that others can read.
    const Fault exchange = [this](bool isBefore) { return isBefore ? (reset(0644, "theirs"), 0) : 0; };
    atEachCall(0600, exchange, load, [&] { EXPECT_TRUE(text != "theirs" || rightsOf(m_file) == "600"); });
}

TEST_F(KeyFile, ADiskMayFillUpAtAnyByte)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit former = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    for (rlimit limit{0, former.rlim_max}; limit.rlim_cur < kNew.size(); ++limit.rlim_cur) {
        reset(0600);
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const std::string text = saved();
        ::setrlimit(RLIMIT_FSIZE, &former);
        EXPECT_EQ(text, "Failed to write API key file: " + m_file.string());
        EXPECT_EQ(contentOf(m_file), kOld);
        expectPrivate();
    }
}

}  // namespace
