// Writes the sample Blu-ray disc as a directory, for trying the program: make_sample_bluray DIRECTORY
#include "tests/support/sample_bluray.h"

#include <cstdio>

int main(int argc, char* argv[])  // NOLINT(bugprone-exception-escape): an exception ends the program
{
    if (argc != 2) {
        std::fputs("usage: make_sample_bluray DIRECTORY\n", stderr);
        return 2;
    }
    testsupport::sampleBluray().writeDirectory(argv[1]);
}
