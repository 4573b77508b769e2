// A small disc, and opening, reading and listing discs in any form.
#pragma once

#include "discio/bluray_source.h"
#include "tests/support/disc_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace discio_test {

using Names = std::vector<std::string>;

// testsupport::Bytes that differ all over a file of several blocks.
inline testsupport::Bytes pattern(std::size_t size, std::uint8_t seed)
{
    testsupport::Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(seed + i + i / 256);
    }
    return bytes;
}

inline testsupport::DiscTree sampleTree()
{
    return testsupport::DiscTree()
        .add("BDMV/index.bdmv", pattern(100, 1))
        .add("BDMV/PLAYLIST/00010.mpls", pattern(5000, 2))
        .add("BDMV/PLAYLIST/00002.MPLS", pattern(2048, 3))
        .add("BDMV/PLAYLIST/00001.mpls.bak", pattern(1, 4))
        .add("BDMV/PLAYLIST/.mpls", pattern(1, 5))
        .add("BDMV/CLIPINF/00001.clpi", {})
        .add("bdmv.txt", pattern(7, 6));
}

class BluraySource : public testing::Test {
protected:
    int open(const std::string& path)
    {
        return openBluraySource(path.c_str(), m_source, m_text.data(), m_text.size());
    }
    [[nodiscard]] std::string message() const { return m_text.data(); }
    std::string failure(const std::string& path)
    {
        EXPECT_EQ(open(path), -1) << path;
        EXPECT_FALSE(m_source.image.stream);
        return message();
    }

    // A file's bytes; one byte 0xEE where it cannot be read.
    [[nodiscard]] testsupport::Bytes read(const std::string& path) const
    {
        testsupport::Bytes bytes = {1, 2, 3};
        if (readWholeFile(m_source, path, bytes) == 0) { return bytes; }
        EXPECT_TRUE(bytes.empty());
        return m_unreadable;
    }
    [[nodiscard]] Names list(const std::string& directory, const std::string& suffix = ".mpls") const
    {
        Names names = {"before"};
        return listFilesWithSuffix(m_source, directory, suffix, names) == 0 ? names : Names{"failed"};
    }
    [[nodiscard]] std::uint64_t sizeOf(const std::string& path) const
    {
        return blurayFileSize(m_source, path);
    }

    const testsupport::Bytes m_unreadable = {0xEE};
    const Names m_failed = {"failed"};
    testsupport::TemporaryFolder m_folder;
    const std::string m_disc = m_folder / "disc";
    discio::BlurayDiscSource m_source;
    std::array<char, 512> m_text = {'?'};
};

}  // namespace discio_test
