// The local Tessera service as a process of a test's own, on a free loopback port. For tests that link Qt.
#pragma once

#include <QProcess>
#include <QStringList>

#include <signal.h>
#include <sys/prctl.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace testsupport {

class LocalService {
public:
    // Starts `executable` with `--database database`, one `--key` for each of `keys` ("KEY=USER") and the further
    // `arguments`, and waits for its line. Its standard error goes to the file `database` + ".log". The process also
    // ends with the thread that started it, so that an aborted test leaves none running.
    LocalService(const std::string& executable, const std::string& database,
                 const std::vector<std::string>& keys, const std::vector<std::string>& arguments = {})
        : m_logPath(database + ".log")
    {
        QStringList line{QStringLiteral("--database"), QString::fromStdString(database)};
        for (const std::string& key : keys) {
            line << QString::fromStdString("--key=" + key);
        }
        std::ranges::transform(arguments, std::back_inserter(line), &QString::fromStdString);
        m_process.setStandardErrorFile(QString::fromStdString(m_logPath), QIODevice::Append);
        m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_process.start(QString::fromStdString(executable), line);
        while (!m_output.ends_with('\n') && m_process.waitForReadyRead(10'000)) {
            m_output += m_process.readAllStandardOutput().toStdString();
        }
    }
    ~LocalService() { stop(); }

    // Whether the service is listening. If not, the log may have the reason.
    [[nodiscard]] bool isReady() const { return port() > 0; }
    [[nodiscard]] std::string baseUrl() const { return "http://127.0.0.1:" + std::to_string(port()); }
    [[nodiscard]] int port() const { return std::atoi(m_output.c_str() + m_output.rfind(':') + 1); }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

    // What it wrote to standard output until it was ready, and to standard error until now.
    [[nodiscard]] const std::string& output() const { return m_output; }
    [[nodiscard]] std::string log() const
    {
        std::ifstream file(m_logPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Sends `signal` (0: none) and waits for the end; kills the process after `limit`. Returns the exit status, or -1
    // if a signal ended the process.
    int stop(int signal = SIGTERM, std::chrono::milliseconds limit = std::chrono::seconds(10))
    {
        if (m_process.state() != QProcess::NotRunning) {
            if (signal != 0) { ::kill(static_cast<pid_t>(m_process.processId()), signal); }
            if (!m_process.waitForFinished(static_cast<int>(limit.count()))) { m_process.kill(); }
            m_process.waitForFinished();
        }
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

private:
    std::string m_logPath;
    std::string m_output;
    QProcess m_process;
};

}  // namespace testsupport
