// Part of tls_test.sh: serves https on this computer with the certificate and key given, for the host name
// "localhost", and authenticates with it under that name and under 127.0.0.1. Prints how each attempt ended.
#include "service/authentication.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#define CPPHTTPLIB_OPENSSL_SUPPORT
#include <httplib.h>

namespace {

void authenticate(const std::string& host, int port)
{
    const std::string address = "https://" + host + ":" + std::to_string(port);
    ::setenv("PLATTERSCOPE_SERVICE_URL", address.c_str(), 1);
    const service::AuthenticationOutcome outcome = service::authenticate(QStringLiteral("some key"));
    const std::string result = outcome.ok ? "accepted" : outcome.errorText.toStdString();
    std::printf("%s: %s\n", host.c_str(), result.c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) { return EXIT_FAILURE; }
    httplib::SSLServer server(argv[1], argv[2]);
    int requestCount = 0;
    server.Post("/api/tessera/user/", [&](const httplib::Request&, httplib::Response& response) {
        ++requestCount;
        response.set_content(R"({"UID": 1, "Username": "ada"})", "application/json");
    });
    const int port = server.bind_to_any_port("127.0.0.1");
    if (port <= 0) { return EXIT_FAILURE; }
    std::thread thread([&] { server.listen_after_bind(); });
    authenticate("localhost", port);
    authenticate("127.0.0.1", port);
    server.stop();
    thread.join();
    std::printf("requests served: %d\n", requestCount);
    return EXIT_SUCCESS;
}
