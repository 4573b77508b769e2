// Name servers that do not answer. This program has a getaddrinfo of its own, which the HTTP library calls.
#include "service/http_client.h"
#include "tests/support/scoped_environment.h"

#include <gtest/gtest.h>
#include <netdb.h>

#include <chrono>
#include <thread>

constexpr std::chrono::seconds kNoAnswer{60};

extern "C" int getaddrinfo(const char* /*node*/, const char* /*service*/, const addrinfo* /*hints*/,
                           addrinfo** /*result*/)
{
    std::this_thread::sleep_for(kNoAnswer);
    return EAI_AGAIN;
}

TEST(SlowNames, DoNotOutlastTheTransferLimit)
{
    const testsupport::ScopedEnvironment address("PLATTERSCOPE_SERVICE_URL", "https://slow.example");
    const testsupport::ScopedEnvironment proxy("https_proxy", "");
    service::HttpRequest request;
    request.path = QStringLiteral("/api/thing/");
    const auto start = std::chrono::steady_clock::now();
    const service::HttpOutcome outcome = service::perform(request, {.transferSeconds = 1});
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.error.english().toStdString(), "Network error: Timeout was reached");
    EXPECT_LT(std::chrono::steady_clock::now() - start, kNoAnswer / 4);
}
