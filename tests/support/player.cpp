#include "tests/support/player.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace testsupport {

namespace {

std::string quoted(const std::string& path)
{
    std::string text = "'";
    for (const char c : path) {
        text += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return text + '\'';
}

}  // namespace

Player::Player()
{
    std::array<int, 2> commands{};
    std::array<int, 2> replies{};
    if (::pipe2(commands.data(), O_CLOEXEC) != 0 || ::pipe2(replies.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    m_process = ::fork();
    if (m_process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(commands[0], STDIN_FILENO);
        ::dup2(replies[1], STDOUT_FILENO);
        ::execl("/bin/sh", "sh", nullptr);
        ::_exit(127);
    }
    ::close(commands[0]);
    ::close(replies[1]);
    m_commands = ::fdopen(commands[1], "w");
    m_replies = ::fdopen(replies[0], "r");
}

Player::~Player()
{
    std::fclose(m_commands);
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
    std::fclose(m_replies);
}

void Player::open(int number, const std::string& path)
{
    run("exec " + std::to_string(number) + "<" + quoted(path));
}

void Player::close(int number)
{
    run("exec " + std::to_string(number) + "<&-");
}

void Player::openAndClose(const std::string& path, int times)
{
    run("i=0; while [ $i -lt " + std::to_string(times) + " ]; do : <" + quoted(path) + "; i=$((i+1)); done");
}

void Player::run(const std::string& commands)
{
    std::fputs((commands + "\necho done\n").c_str(), m_commands);
    std::fflush(m_commands);
    std::array<char, 16> line{};
    if (std::fgets(line.data(), line.size(), m_replies) == nullptr) { throw std::runtime_error(commands); }
}

}  // namespace testsupport
