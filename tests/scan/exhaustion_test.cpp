// Every operation of a scan with memory that ends at the first allocation, at the second, and so on, once or for good:
// each gives an error or all that it was asked for, and never throws.
#include "scan/disc_scanner.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scopes.h"
#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

using namespace testsupport;

namespace {

// Of this thread alone: the test's server has all the memory that it wants.
thread_local long allowedAllocations = -1;  // below 0: any number
thread_local bool endsForGood = false;      // else only one allocation fails
thread_local bool hasEnded = false;
thread_local int failures = 0;

void* allocate(std::size_t size)
{
    if (allowedAllocations == 0) {
        hasEnded = true;
        ++failures;
        if (!endsForGood) { allowedAllocations = -1; }
        return nullptr;
    }
    if (allowedAllocations > 0) { --allowedAllocations; }
    return std::malloc(size > 0 ? size : 1);
}

}  // namespace

// The other forms of new and delete call these, unless a sanitizer has pairs of its own.

void* operator new(std::size_t size)
{
    void* const memory = allocate(size);
    if (memory == nullptr) { throw std::bad_alloc(); }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

namespace {

// What an operation gave: how much (0: nothing), and whether it failed.
struct Outcome {
    std::size_t amount = 0;
    bool isError = false;
};

// Lets memory end at each allocation of `operation` in turn.
void exhaust(const char* name, const std::function<Outcome()>& operation)
{
    SCOPED_TRACE(name);
    const CapturedLog log;
    const Outcome whole = operation();
    EXPECT_TRUE(whole.amount > 0 && !whole.isError);
    for (const bool isForGood : {false, true}) {
        hasEnded = true;
        for (long allocations = 0; hasEnded && !testing::Test::HasFailure(); ++allocations) {
            Outcome now;
            hasEnded = false;
            endsForGood = isForGood;
            allowedAllocations = allocations;
            EXPECT_NO_THROW(now = operation());
            allowedAllocations = -1;
            EXPECT_TRUE(now.amount == whole.amount || (now.amount == 0 && now.isError));
            EXPECT_TRUE(hasEnded || !now.isError);
            EXPECT_FALSE(testing::Test::HasFailure())
                << allocations << " allocations, for good: " << isForGood;
        }
    }
}

TEST(Exhaustion, OfAnyOperationIsAnErrorOrAWholeResult)
{
    ScriptedServer server;
    const ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", server.url());
    for (const std::string kind : {"/api/tessera/dvd/", "/api/tessera/bluray/"}) {
        server.playFor(kind + "find/", {.body = "{}"});
        server.playFor(kind + "add/", {.body = "23"});
    }
    server.playFor("/api/tessera/dvd/configurations/get/",
                   {.body = R"([{"UID": 5, "Data": "{\"paths\": [\"a\"], \"titles\": [{\"id\": 1}]}"}])"});
    server.playFor("/api/tessera/user/", {.body = R"({"UID": 17, "Username": "ada"})"});
    const TemporaryFolder dvds;
    const TemporaryFolder blurays;
    DiscScanner scanner;
    scanner.setApiKey(QStringLiteral("the-key"));
    const auto outcome = [](const DiscScanResult& result) {
        EXPECT_EQ(result.errorMessage.isEmpty(), result.ok == 1);
        const qsizetype amount = result.dvdTitles.size() + result.blurayTitles.size() +
                                 result.dvdPackage.size() + result.blurayPackage.size();
        EXPECT_EQ(amount > 0, result.discType != DiscType::None);
        return Outcome{static_cast<std::size_t>(amount), result.ok == 0};
    };
    for (const std::string& path :
         {sampleDvd().write(DiscForm::Directory, dvds), sampleDvd().write(DiscForm::Iso, dvds),
          sampleBluray().write(DiscForm::Directory, blurays), sampleBluray().write(DiscForm::Udf, blurays)}) {
        const QString disc = QString::fromStdString(path);
        exhaust(path.c_str(), [&] { return outcome(scanner.scan(disc, true)); });
    }
    DiscScanResult known;
    known.discType = DiscType::Dvd;
    known.discId = 17;
    known.inDatabase = true;
    known.dvdTitles.resize(2);
    exhaust("a refresh", [&] {
        const DiscScanResult result = scanner.refreshConfigurations(known);
        EXPECT_EQ(result.configurations.size(), result.ok);
        return outcome(result);
    });
    exhaust("an authentication", [&] {
        const service::AuthenticationOutcome user = scanner.authenticate();
        EXPECT_EQ(user.error.isEmpty(), user.ok);
        return Outcome{static_cast<std::size_t>(user.user.uid), !user.ok};
    });
    EXPECT_GT(failures, 1000);
}

}  // namespace
