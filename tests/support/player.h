// A second process, a shell, that opens and closes files as a player does.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace testsupport {

class Player {
public:
    Player()
    {
        std::array<int, 2> replies{};
        if (::pipe(replies.data()) != 0) { throw std::runtime_error("no pipe"); }
        ::fcntl(replies[0], F_SETFD, FD_CLOEXEC);
        m_commands = ::popen(("exec sh >/dev/fd/" + std::to_string(replies[1])).c_str(), "we");
        m_replies = ::fdopen(replies[0], "r");
        ::close(replies[1]);
    }
    ~Player()  // ends the process and so closes its files
    {
        ::pclose(m_commands);
        std::fclose(m_replies);
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Runs shell commands and waits for their end.
    void run(const std::string& commands)
    {
        std::fputs((commands + "\necho done\n").c_str(), m_commands);
        std::fflush(m_commands);
        std::array<char, 16> line{};
        if (std::fgets(line.data(), line.size(), m_replies) == nullptr) {
            throw std::runtime_error(commands);
        }
    }

private:
    std::FILE* m_commands = nullptr;
    std::FILE* m_replies = nullptr;
};

}  // namespace testsupport
