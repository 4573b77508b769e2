// The system calls by which the program reads files and directories, answered by a test in the system's place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace faults {

// A read that the program asks for. A hook may ask the system for less of it.
struct FileRead {
    std::string path;
    std::uint64_t offset = 0;
    std::size_t sizeBytes = 0;
};

// The error number with which the read fails; 0: the system answers it.
using ReadHook = std::function<int(FileRead&)>;

// While the object lives, the hook is asked at each read.
class InterposedReads {
public:
    explicit InterposedReads(ReadHook hook);
    ~InterposedReads();
    InterposedReads(const InterposedReads&) = delete;
    InterposedReads& operator=(const InterposedReads&) = delete;

    // How many reads there were.
    [[nodiscard]] static std::size_t count();
};

// While the object lives, listing this directory fails after `names` names of it, "." and ".." among them.
class InterposedListing {
public:
    InterposedListing(std::string path, int names);
    ~InterposedListing();
    InterposedListing(const InterposedListing&) = delete;
    InterposedListing& operator=(const InterposedListing&) = delete;

    // Whether it has failed.
    [[nodiscard]] static bool isHit();
};

}  // namespace faults
