// An IFO file in memory. Its size is the one that the directory gives; of a file in an image that ends early,
// fewer bytes can be read. Readers check the two separately.
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

    // Returns the number of bytes from `offset` to the end that the size gives; 0 if `offset` lies beyond it.
    [[nodiscard]] std::uint64_t sizeBehind(std::uint64_t offset) const
    {
        return offset < m_file.sizeBytes ? m_file.sizeBytes - offset : 0;
    }

    // Returns a reader over `count` bytes at `offset`; a failed one if they cannot all be read.
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
