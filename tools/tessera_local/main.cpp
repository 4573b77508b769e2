// The local Tessera service: reads its arguments, opens its database and serves until a signal ends it.
#include "tools/tessera_local/options.h"
#include "tools/tessera_local/server.h"
#include "tools/tessera_local/store.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <exception>
#include <thread>

using namespace tessera_local;

namespace {

constexpr int kFailure = 1;
constexpr int kWrongUse = 2;

void printReady(const std::string& host, int port)
{
    const bool isIpv6 = host.find(':') != std::string::npos;
    std::printf(isIpv6 ? "tessera_local: listening on http://[%s]:%d\n"
                       : "tessera_local: listening on http://%s:%d\n",
                host.c_str(), port);
    std::fflush(stdout);
}

int serve(const Options& options)
{
    // Blocked in every thread from the start, so that a signal waits for sigwait() and cuts nothing short.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    Store store(options.databasePath);
    Server server(store, options.users, options.latestVersion);
    const int port = server.bind(options.host, options.port);
    if (port < 0) {
        std::fprintf(stderr, "tessera_local: cannot listen on %s port %d\n", options.host.c_str(),
                     options.port);
        return kFailure;
    }
    std::atomic<bool> hasFailed = false;
    std::thread serving([&] {
        hasFailed = !server.serve();
        if (hasFailed) { ::kill(::getpid(), SIGTERM); }
    });
    // The library tells in no other way; stop() before that would be lost.
    while (!server.isServing() && !hasFailed) {
        std::this_thread::yield();
    }
    printReady(options.host, port);
    int signal = 0;
    sigwait(&endSignals, &signal);
    server.stop();
    serving.join();
    if (hasFailed) { std::fprintf(stderr, "tessera_local: listening failed\n"); }
    return hasFailed ? kFailure : 0;
}

}  // namespace

int main(int argc, char* argv[])
{
    try {
        const CommandLine commandLine = parseCommandLine({argv + 1, argv + argc});
        switch (commandLine.action) {
        case CommandLine::Action::Serve:
            return serve(commandLine.options);
        case CommandLine::Action::ShowHelp:
            std::fputs(helpText().c_str(), stdout);
            return 0;
        case CommandLine::Action::ShowVersion:
            std::puts("tessera_local " TESSERA_LOCAL_VERSION);
            return 0;
        case CommandLine::Action::Refuse:
            break;
        }
        std::fprintf(stderr, "tessera_local: %s\nTry 'tessera_local --help'.\n", commandLine.error.c_str());
        return kWrongUse;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessera_local: %s\n", error.what());
        return kFailure;
    }
}
