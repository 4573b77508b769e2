// An IFO file in memory, with the two questions its readers ask apart: does an offset lie inside the file as
// its directory gives its size, and can the bytes there really be read.
#pragma once

#include "discio/byte_reader.h"
#include "discio/dvd_source.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dvdmeta {

inline constexpr std::uint64_t kSectorSize = 2048;

class IfoFile {
public:
    IfoFile() = default;
    IfoFile(std::string name, discio::DiscFileBytes file)
        : m_name(std::move(name))
        , m_file(std::move(file))
    {}

    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] std::uint64_t sizeBytes() const { return m_file.sizeBytes; }
    [[nodiscard]] bool isComplete() const { return m_file.isComplete(); }
    [[nodiscard]] std::vector<std::uint8_t> takeBytes() { return std::move(m_file.bytes); }

    // How many bytes of the file's size lie behind `offset`; 0 for an offset beyond it.
    [[nodiscard]] std::uint64_t sizeBehind(std::uint64_t offset) const
    {
        return offset < m_file.sizeBytes ? m_file.sizeBytes - offset : 0;
    }

    // A reader over `count` bytes at `offset`; a failed one where they cannot all be read.
    [[nodiscard]] discio::ByteReader at(std::uint64_t offset, std::uint64_t count) const
    {
        return discio::ByteReader(m_file.bytes).slice(offset, count);
    }

    [[nodiscard]] bool beginsWith(std::string_view magic) const
    {
        const auto begin = at(0, magic.size()).bytes(magic.size());
        return std::equal(
            begin.begin(), begin.end(), magic.begin(), magic.end(),
            [](std::uint8_t byte, char letter) { return byte == static_cast<std::uint8_t>(letter); });
    }

private:
    std::string m_name;
    discio::DiscFileBytes m_file;
};

}  // namespace dvdmeta
