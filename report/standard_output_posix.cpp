#include "report/standard_output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace report {

namespace {

// Waits until a non-blocking standard output accepts more bytes. Returns false if the wait fails.
bool waitUntilWritable()
{
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, -1) > 0 || errno == EINTR;
}

}  // namespace

int writeStandardOutput(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            if (!waitUntilWritable()) { return errno; }
        } else if (errno == EPIPE) {
            return 0;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void prepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    int number = -1;
    do {
        number = ::open("/dev/null", O_RDONLY);
    } while (number >= 0 && number <= STDERR_FILENO);
    if (number >= 0) { ::close(number); }
}

}  // namespace report
