// A bounds-checked cursor over bytes read from a disc. A read past the end returns 0, does not move the cursor and
// makes the reader fail permanently. A parser reads a group of fields and then checks ok() once; a counted loop checks
// it in every round.
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
    constexpr std::uint16_t le16() { return static_cast<std::uint16_t>(littleEndian(2)); }
    constexpr std::uint32_t le32() { return static_cast<std::uint32_t>(littleEndian(4)); }
    constexpr std::uint64_t le64() { return littleEndian(8); }

    // Takes the next `count` bytes. If fewer remain, returns an empty span and the reader fails.
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

    // Moves to `position`, counted from the start of the data; the end is a valid position. 64 bits wide on every
    // system, because offsets on discs are.
    constexpr void seek(std::uint64_t position)
    {
        if (!m_ok || position > m_data.size()) {
            m_ok = false;
            return;
        }
        m_position = static_cast<std::size_t>(position);
    }

    // Returns a separate reader over `count` bytes from `offset` of the data; a failed reader if the data do not hold
    // them all. This reader does not change.
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
