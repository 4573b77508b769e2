// Writes the sample Blu-ray disc as a directory, for trying the program: make_sample_bluray DIRECTORY
#include "tests/support/sample_bluray.h"

#include <cstdio>
#include <exception>

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fputs("usage: make_sample_bluray DIRECTORY\n", stderr);
        return 2;
    }
    try {
        testsupport::sampleBluray().writeDirectory(argv[1]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "make_sample_bluray: %s\n", problem.what());
        return 1;
    }
    return 0;
}
