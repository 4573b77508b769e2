// What the process writes to standard error while the object lives, by line: the program's log.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace testsupport {

class CapturedLog {
public:
    CapturedLog()
        : m_file(std::tmpfile())
        , m_former(::dup(STDERR_FILENO))
    {
        if (m_file == nullptr || m_former < 0 || ::dup2(::fileno(m_file), STDERR_FILENO) < 0) {
            throw std::runtime_error("cannot capture standard error");
        }
    }
    ~CapturedLog()
    {
        ::dup2(m_former, STDERR_FILENO);
        ::close(m_former);
        std::fclose(m_file);
    }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    [[nodiscard]] std::vector<std::string> lines() const
    {
        std::rewind(m_file);
        std::vector<std::string> lines(1);
        for (int character = std::fgetc(m_file); character != EOF; character = std::fgetc(m_file)) {
            character == '\n' ? lines.emplace_back() : lines.back() += static_cast<char>(character);
        }
        if (lines.back().empty()) { lines.pop_back(); }
        return lines;
    }

private:
    std::FILE* m_file;
    int m_former;
};

}  // namespace testsupport
