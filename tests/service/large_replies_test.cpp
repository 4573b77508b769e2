// Replies of 100 MB, each in a process of its own, so that its memory can be measured.
#include "service/authentication.h"
#include "service/configuration_request.h"
#include "service/disc_requests.h"
#include "tests/service/service_fixture.h"
#include "tests/support/fault_table.h"

#include <QCryptographicHash>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <iterator>
#include <string>

using namespace Qt::StringLiterals;
using testsupport::ScriptedReply;

namespace {

constexpr std::size_t kMegabyte = 1'000'000;
constexpr long kBytesPerRssUnit = 1024;

// The address sanitizer keeps what is freed, and notes about all that is allocated; and all takes it longer.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kHasOrdinaryMemory = false;
#else
constexpr bool kHasOrdinaryMemory = true;
#endif
constexpr std::size_t kReplyBytes = (kHasOrdinaryMemory ? 100 : 40) * kMegabyte;

enum class Operation { Authenticate, Find, Add, Configurations };

bool succeeds(Operation operation)
{
    const QString key = u"key"_s;
    const QByteArray bytes = "package bytes";
    const service::TitlePackage package = {service::DiscKind::Dvd, bytes,
                                           QCryptographicHash::hash(bytes, QCryptographicHash::Sha256)};
    switch (operation) {
    case Operation::Authenticate:
        return service::authenticate(key).ok;
    case Operation::Find:
        return service::findDisc(package, key).ok;
    case Operation::Add:
        return service::addDisc(package, key).ok;
    case Operation::Configurations:
        break;
    }
    return service::getConfigurations(package.kind, 17, key).ok;
}

struct Outcome {
    bool ok = false;
    std::size_t memoryBytes = 0;  // the most it held at once, with what this process had
};

// Standard error, to which authenticate() logs a failure, is thrown away.
Outcome runApart(Operation operation)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (std::freopen("/dev/null", "w", stderr) == nullptr) { ::_exit(2); }
        ::_exit(succeeds(operation) ? 0 : 1);
    }
    int status = -1;
    rusage usage = {};
    EXPECT_EQ(::wait4(child, &status, 0, &usage), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << status;
    return {WEXITSTATUS(status) == 0, static_cast<std::size_t>(usage.ru_maxrss * kBytesPerRssUnit)};
}

// A reply of `begin`, as many of `piece` as make it large, and `end`, as the body has its end by the connection's.
ScriptedReply largeReply(int status, const std::string& begin, const std::string& piece,
                         const std::string& end = {})
{
    std::string pieces;
    while (pieces.size() < kMegabyte) {
        pieces += piece;
    }
    return {.rawBytes = "HTTP/1.0 " + std::to_string(status) + " Large\r\n\r\n" + begin,
            .repeated = pieces,
            .repeats = kReplyBytes / pieces.size(),
            .end = end};
}

struct LargeReply {
    const char* name;
    Operation operation;
    ScriptedReply reply;
    bool ok;
    std::size_t
        maximumFactor;  // of the reply's size: a text takes twice its bytes, beside what it is made of
};

std::vector<LargeReply> largeReplies()
{
    std::string zeros;
    for (int i = 0; i < 300'000; ++i) {
        zeros += "0\\u002c";  // a comma to the inner document alone
    }
    const std::string title =
        R"(,{"Data": "{\"titles\": [{\"name\": \")" + std::string(10'000, 'x') + R"(\"}]}"})";
    return {
        {"a member nobody reads", Operation::Authenticate,
         largeReply(200, R"({"UID": 1, "Username": "a", "x": ")", "x", "\"}"), true, 3},
        {"a name", Operation::Authenticate, largeReply(200, R"({"UID": 1, "Username": ")", "x", "\"}"), true,
         4},
        {"an unknown disc", Operation::Find, largeReply(200, R"({"x": ")", "x", "\"}"), true, 3},
        {"a configuration of a known disc", Operation::Find,
         largeReply(200, R"({"Disc ID": 1, "Configurations": [{"Language Code": ")", "x", "\"}]}"), true, 4},
        {"a number", Operation::Add, largeReply(200, "", "0", "17"), true, 3},
        {"a name in a document inside", Operation::Configurations,
         largeReply(200, R"([{"Data": "{\"disc_name\": \")", "x", R"(\"}"}])"), true, 5},
        {"titles in documents inside", Operation::Configurations, largeReply(200, "[{}", title, "]"), true,
         4},
        {"too many configurations", Operation::Configurations, largeReply(200, "[{}", ",{}", "]"), false, 3},
        {"too many values in documents inside", Operation::Configurations,
         largeReply(200, "[{}", R"(,{"Data": "[)" + zeros + R"(0]"})", "]"), false, 5},
        {"an error", Operation::Authenticate, largeReply(500, "", "x"), false, 4},
        {"an error of control characters", Operation::Authenticate, largeReply(500, "", "\x1B"), false, 10},
        {"an error", Operation::Find, largeReply(500, "", "x"), false, 4},
        {"an error", Operation::Add, largeReply(500, "", "x"), false, 4},
        {"an error", Operation::Configurations, largeReply(500, "", "x"), false, 4},
    };
}

class LargeReplies : public ServiceTest {};

}  // namespace

TEST_F(LargeReplies, TakeTimeAndMemoryInProportion)
{
    const std::vector<LargeReply> cases = largeReplies();
    for (const LargeReply& large : cases) {
        SCOPED_TRACE(large.name);
        m_server.play(large.reply);
        const auto begin = std::chrono::steady_clock::now();
        const Outcome outcome = runApart(large.operation);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
        EXPECT_EQ(outcome.ok, large.ok);
        if (kHasOrdinaryMemory) { EXPECT_LT(outcome.memoryBytes, large.maximumFactor * kReplyBytes); }
    }
    if (kHasOrdinaryMemory) {
        testsupport::recordFault("Service: a reply of 100 MB",
                                 "taken or refused within the transfer limit, with memory in proportion",
                                 cases.size());
    }
}
