// The local Tessera service as a real process of a test's own, on a free loopback port.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace testsupport {

class LocalService {
public:
    // Starts `executable` with `--database database`, one `--key` for each of `keys` ("KEY=USER") and the
    // further `arguments`, and waits for its line. Its standard error goes to the file `database` + ".log".
    // The process also ends with the thread that started it, so that an aborted test leaves none behind.
    LocalService(const std::string& executable, const std::string& database,
                 const std::vector<std::string>& keys, const std::vector<std::string>& arguments = {});

    // Stops the process if it still runs.
    ~LocalService();

    LocalService(const LocalService&) = delete;
    LocalService& operator=(const LocalService&) = delete;

    // Whether it is listening; otherwise the log may say why not.
    bool isReady() const { return m_port > 0; }

    // "http://127.0.0.1:PORT"; empty when it is not ready.
    const std::string& baseUrl() const { return m_baseUrl; }
    int port() const { return m_port; }
    pid_t processId() const { return m_processId; }

    // All it wrote to standard output until it was ready (with stop(): until its end), and to standard error
    // until now.
    const std::string& output() const { return m_output; }
    std::string log() const;

    // Sends `signal` (0: none) and waits for the end. Gives the exit status; -1 when the process had to be
    // killed after `limit`, ended by a signal, or was stopped before.
    int stop(int signal, std::chrono::milliseconds limit = std::chrono::seconds(10));
    int stop();  // with SIGTERM

private:
    bool readOutput(std::chrono::steady_clock::time_point deadline);
    void awaitReadyLine();

    std::string m_logPath;
    std::string m_output;
    std::string m_baseUrl;
    int m_port = 0;
    pid_t m_processId = -1;
    int m_outputPipe = -1;
};

}  // namespace testsupport
