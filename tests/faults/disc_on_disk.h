// The small discs as they are while reads of them fail.
#pragma once

#include "tests/faults/disc_reading.h"
#include "tests/faults/interposed_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace faults {

// The small disc of a family in one form, on disk; each time it is read no descriptor may be left open.
class DiscOnDisk {
public:
    DiscOnDisk(Family family, testsupport::DiscForm form)
        : m_family(family)
        , m_path(treeOf(family).write(form, m_folder))
    {}

    [[nodiscard]] const std::string& path() const { return m_path; }

    [[nodiscard]] std::string read() const
    {
        const auto before = openDescriptors();
        std::string text = readDisc(m_family, m_path);
        EXPECT_EQ(openDescriptors(), before) << "left open";
        return text;
    }
    [[nodiscard]] std::string readUnder(const ReadHook& hook) const
    {
        const InterposedReads meanwhile(hook);
        return read();
    }

private:
    [[nodiscard]] static std::ptrdiff_t openDescriptors()
    {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    testsupport::TemporaryFolder m_folder;
    Family m_family;
    std::string m_path;
};

// A read fails from this place of a file on; before it the system gives what is there.
[[nodiscard]] inline ReadHook failingFrom(std::string path, std::uint64_t offset, bool& isHit)
{
    return [path = std::move(path), offset, &isHit](FileRead& read) {
        if (read.path != path) { return 0; }
        if (read.offset >= offset) {
            isHit = true;
            return EIO;
        }
        read.sizeBytes =
            static_cast<std::size_t>(std::min<std::uint64_t>(read.sizeBytes, offset - read.offset));
        return 0;
    };
}

}  // namespace faults
