#include "report/standard_output.h"

#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <cstdio>

namespace report {

int writeStandardOutput(std::string_view bytes)
{
    ::_setmode(::_fileno(stdout), _O_BINARY);  // line breaks as they are
    errno = 0;
    const bool isWritten =
        std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0;
    if (isWritten || errno == EPIPE) { return 0; }
    return errno != 0 ? errno : EIO;
}

void prepareStandardStreams() {}  // Windows does not reuse standard handles, and has no signal for pipes

}  // namespace report
