// A bounds-checked cursor over bytes read from a disc. A read past the end yields 0, moves nothing and leaves
// the reader failed for good, so a parser reads a group of fields and then asks ok() once; a counted loop
// asks it in every round.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace discio {

class ByteReader {
public:
    constexpr ByteReader() = default;
    constexpr explicit ByteReader(std::span<const std::uint8_t> data)
        : m_data(data)
    {}

    [[nodiscard]] constexpr bool ok() const { return m_ok; }
    [[nodiscard]] constexpr std::size_t size() const { return m_data.size(); }
    [[nodiscard]] constexpr std::size_t position() const { return m_position; }
    [[nodiscard]] constexpr std::size_t remaining() const { return m_data.size() - m_position; }

    constexpr std::uint8_t u8() { return static_cast<std::uint8_t>(bigEndian(1)); }
    constexpr std::uint16_t be16() { return static_cast<std::uint16_t>(bigEndian(2)); }
    constexpr std::uint32_t be32() { return static_cast<std::uint32_t>(bigEndian(4)); }
    constexpr std::uint64_t be64() { return bigEndian(8); }
    constexpr std::uint16_t le16() { return static_cast<std::uint16_t>(littleEndian(2)); }
    constexpr std::uint32_t le32() { return static_cast<std::uint32_t>(littleEndian(4)); }
    constexpr std::uint64_t le64() { return littleEndian(8); }

    // The next `count` bytes; an empty span, and failure, where fewer remain.
    constexpr std::span<const std::uint8_t> bytes(std::size_t count)
    {
        if (!require(count)) { return {}; }
        const auto taken = m_data.subspan(m_position, count);
        m_position += count;
        return taken;
    }

    constexpr void skip(std::size_t count)
    {
        if (require(count)) { m_position += count; }
    }

    // Moves to `position`, counted from the start of the data; the end itself is a valid position. 64 bits
    // wide on every system, since offsets on discs may be.
    constexpr void seek(std::uint64_t position)
    {
        if (!m_ok || position > m_data.size()) {
            m_ok = false;
            return;
        }
        m_position = static_cast<std::size_t>(position);
    }

    // A reader of its own, with its own end, over `count` bytes from `offset` of the data. A failed reader
    // where they do not all lie inside; this reader is not changed.
    [[nodiscard]] constexpr ByteReader slice(std::uint64_t offset, std::uint64_t count) const
    {
        ByteReader inner;
        if (!m_ok || offset > m_data.size() || count > m_data.size() - offset) {
            inner.m_ok = false;
            return inner;
        }
        inner.m_data = m_data.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
        return inner;
    }

private:
    constexpr bool require(std::size_t count)
    {
        if (!m_ok || count > remaining()) { m_ok = false; }
        return m_ok;
    }

    constexpr std::uint64_t bigEndian(std::size_t count)
    {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : bytes(count)) {
            value = (value << 8U) | byte;
        }
        return value;
    }

    constexpr std::uint64_t littleEndian(std::size_t count)
    {
        std::uint64_t value = 0;
        unsigned shift = 0;
        for (const std::uint8_t byte : bytes(count)) {
            value |= static_cast<std::uint64_t>(byte) << shift;
            shift += 8;
        }
        return value;
    }

    std::span<const std::uint8_t> m_data;
    std::size_t m_position = 0;
    bool m_ok = true;
};

}  // namespace discio
