// The files that a target reads its input from, by the system's own calls: streams would take most of a run.
#pragma once

#include "fuzz/abort_unless.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

// A file that is made anew, in a folder that is there.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& path)
        : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600))
    {
        abortUnless(m_file >= 0);
    }
    ~ScratchFile() { ::close(m_file); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    void write(std::size_t offset, std::span<const std::uint8_t> bytes) const
    {
        const ssize_t written = ::pwrite(m_file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        abortUnless(written == static_cast<ssize_t>(bytes.size()));
    }
    void resize(std::size_t sizeBytes) const
    {
        abortUnless(::ftruncate(m_file, static_cast<off_t>(sizeBytes)) == 0);
    }

private:
    int m_file;
};

}  // namespace fuzz
