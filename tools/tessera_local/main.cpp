// The local Tessera service: reads its arguments, opens its database and serves until a signal ends the process.
#include "tools/tessera_local/options.h"
#include "tools/tessera_local/server.h"
#include "tools/tessera_local/store.h"

#include <QCoreApplication>

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
constexpr char kHelp[] = R"(Usage: tessera_local --database FILE (--key KEY=USER | --keys-file FILE)...
                     [--host ADDRESS] [--port NUMBER] [--latest-version VERSION]

A Tessera service of your own. The manual page tessera_local(1) describes the options, the web pages and the
requests that the service answers.
)";

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
    // Blocked in every thread from the start, so that a signal waits for sigwait() and interrupts nothing.
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
    // The library has no other way to report that it serves. It would ignore an earlier stop().
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
        qputenv("LC_ALL", "C.UTF-8");  // Qt would use the user's locale, and so would the error texts
        const QCoreApplication application(argc, argv);  // Qt finds its database driver through it
        const CommandLine commandLine = parseCommandLine({argv + 1, argv + argc});
        switch (commandLine.action) {
        case CommandLine::Action::Serve:
            return serve(commandLine.options);
        case CommandLine::Action::ShowHelp:
            std::fputs(kHelp, stdout);
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
