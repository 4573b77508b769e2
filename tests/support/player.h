// A second process that opens and closes files at a test's word, as a player does.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>

namespace testsupport {

class Player {
public:
    Player();
    ~Player();  // ends the process; what it has open is closed
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Opens the file for reading under `number`, 3 to 9, until close() of the same number.
    void open(int number, const std::string& path);
    void close(int number);

    // Opens and closes the file so many times.
    void openAndClose(const std::string& path, int times = 1);

    // Runs shell commands and waits for their end.
    void run(const std::string& commands);

private:
    pid_t m_process = -1;
    std::FILE* m_commands = nullptr;
    std::FILE* m_replies = nullptr;
};

}  // namespace testsupport
