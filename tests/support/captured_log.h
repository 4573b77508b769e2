// What the process writes to standard error while the object lives, by line: the program's log.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace testsupport {

class CapturedLog {
public:
    CapturedLog()
    {
        std::FILE* const file = std::tmpfile();
        if (file == nullptr || ::dup2(::fileno(file), STDERR_FILENO) < 0) {
            throw std::runtime_error("cannot capture standard error");
        }
        std::fclose(file);
    }
    ~CapturedLog()
    {
        ::dup2(m_former, STDERR_FILENO);
        ::close(m_former);
    }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    [[nodiscard]] static std::vector<std::string> lines()
    {
        std::ifstream file("/proc/self/fd/2");
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

private:
    int m_former = ::dup(STDERR_FILENO);
};

}  // namespace testsupport
