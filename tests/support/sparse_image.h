// A disc image as pieces at offsets. What no piece covers reads as zeros and takes no room on the disk, so an
// image may be many gigabytes long.
#pragma once

#include "tests/support/bytes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

namespace testsupport {

class SparseImage {
public:
    void put(std::uint64_t offset, Bytes bytes)
    {
        m_sizeBytes = std::max(m_sizeBytes, offset + bytes.size());
        m_pieces[offset] = std::move(bytes);
    }

    void putAll(const SparseImage& other)
    {
        for (const auto& [offset, bytes] : other.m_pieces) {
            put(offset, bytes);
        }
    }

    [[nodiscard]] std::uint64_t sizeBytes() const { return m_sizeBytes; }

    // Writes the image and gives it the length of its last piece's end, or another.
    void writeTo(const std::filesystem::path& path) const { writeTo(path, m_sizeBytes); }
    void writeTo(const std::filesystem::path& path, std::uint64_t sizeBytes) const
    {
        std::ofstream out(path, std::ios::binary);
        for (const auto& [offset, bytes] : m_pieces) {
            out.seekp(static_cast<std::streamoff>(offset));
            for (const std::uint8_t byte : bytes) {
                out.put(static_cast<char>(byte));
            }
        }
        if (!out.flush()) { throw std::runtime_error("cannot write " + path.string()); }
        std::filesystem::resize_file(path, sizeBytes);
    }

private:
    std::map<std::uint64_t, Bytes> m_pieces;
    std::uint64_t m_sizeBytes = 0;
};

}  // namespace testsupport
