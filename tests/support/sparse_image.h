// A disc image as pieces at offsets. What no piece covers reads as zeros and takes no room on the disk, so an
// image may be many gigabytes long.
#pragma once

#include "tests/support/bytes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace testsupport {

class SparseImage {
public:
    // Puts bytes over what is there. The image grows to hold them.
    SparseImage& put(std::uint64_t offset, Bytes bytes)
    {
        m_sizeBytes = std::max(m_sizeBytes, offset + bytes.size());
        m_pieces.emplace_back(offset, std::move(bytes));
        return *this;
    }
    // Puts a number of `width` bytes, little-endian or big-endian.
    SparseImage& putLe(std::uint64_t offset, std::uint64_t value, std::size_t width)
    {
        return put(offset, leBytes(value, width));
    }
    SparseImage& putBe(std::uint64_t offset, std::uint64_t value, std::size_t width)
    {
        return put(offset, beBytes(value, width));
    }

    // Puts another image over this one.
    void putAll(const SparseImage& other)
    {
        for (const auto& [offset, bytes] : other.m_pieces) {
            put(offset, bytes);
        }
    }

    [[nodiscard]] std::uint64_t sizeBytes() const { return m_sizeBytes; }

    // Writes the image with the length of its last piece's end, or with another length.
    void writeTo(const std::filesystem::path& path, std::optional<std::uint64_t> sizeBytes = {}) const
    {
        std::ofstream out(path, std::ios::binary);
        for (const auto& [offset, bytes] : m_pieces) {
            out.seekp(static_cast<std::streamoff>(offset));
            out.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
        }
        if (!out.flush()) { throw std::runtime_error("cannot write " + path.string()); }
        std::filesystem::resize_file(path, sizeBytes.value_or(m_sizeBytes));
    }

private:
    std::vector<std::pair<std::uint64_t, Bytes>> m_pieces;
    std::uint64_t m_sizeBytes = 0;
};

}  // namespace testsupport
