// Opening, reading and listing of Blu-ray discs in any form.
#pragma once

#include "discio/bluray_source.h"
#include "tests/support/disc_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace discio_test {

using testsupport::Bytes;

inline const Bytes kUnreadable = {0xEE};

// Bytes that differ all over a file of several blocks.
inline Bytes pattern(std::size_t size, std::uint8_t seed)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(seed + i + i / 256);
    }
    return bytes;
}

// The rows of a table in this folder, cut at its tabs. A line with "#" is a comment.
inline std::vector<std::vector<std::string>> table(const std::string& name)
{
    std::ifstream file(std::string(PLATTERSCOPE_DISCIO_TABLES) + '/' + name);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) { continue; }
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, '\t');) {
            rows.back().push_back(cell);
        }
    }
    EXPECT_FALSE(rows.empty()) << name;
    return rows;
}

class BlurayTest : public testing::Test {
protected:
    // Opens the disc. Returns the message of a failure, else "".
    std::string open(const std::string& path)
    {
        std::array<char, 512> text = {'?'};
        const int result = openBluraySource(path.c_str(), m_source, text.data(), text.size());
        EXPECT_EQ(result, text[0] == '\0' ? 0 : -1);
        EXPECT_EQ(m_source.budget == nullptr, result != 0) << "a failure leaves nothing open";
        return text.data();
    }

    // A file's bytes, or kUnreadable.
    [[nodiscard]] Bytes read(const std::string& path) const
    {
        Bytes bytes = {1, 2, 3};
        if (readWholeFile(m_source, path, bytes) == 0) { return bytes; }
        EXPECT_TRUE(bytes.empty());
        return kUnreadable;
    }

    // The names without the suffix, in their order, or "failed".
    [[nodiscard]] std::string list(const std::string& directory, const std::string& suffix = ".x") const
    {
        std::vector<std::string> names = {"before"};
        if (listFilesWithSuffix(m_source, directory, suffix, names) != 0) { return "failed"; }
        std::string text;
        for (const std::string& name : names) {
            text += (text.empty() ? "" : " ") + name;
        }
        return text;
    }

    testsupport::TemporaryFolder m_folder;
    discio::BlurayDiscSource m_source;
};

}  // namespace discio_test
