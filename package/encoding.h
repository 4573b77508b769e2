// The encodings of a title package and its container. Numbers of a fixed width are big-endian.
//
//   header, 32 bytes: magic (8), u16 format version 1, u16 header length 32, u32 0, u64 whole length,
//                     u32 chunk count, u32 0
//   chunk:            tag (4), u16 chunk version 1, u16 flags 0, u64 body length, body
#pragma once

#include "base/message.h"

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <cstdint>
#include <span>

namespace package {

inline constexpr qsizetype kHeaderSize = 32;
inline constexpr qsizetype kSha256Size = 32;

void appendU8(QByteArray& out, std::uint8_t value);
void appendU16BE(QByteArray& out, std::uint16_t value);
void appendU32BE(QByteArray& out, std::uint32_t value);
void appendU64BE(QByteArray& out, std::uint64_t value);

// Overwrites eight bytes at `offset`; `out` must have them.
void patchU64BE(QByteArray& out, qsizetype offset, std::uint64_t value);

// Unsigned LEB128: seven bits a byte, the least significant group first, bit 7 set on every byte but the
// last.
void appendVarint(QByteArray& out, std::uint64_t value);

// Appends the length as a varint, then the bytes.
void appendBytes(QByteArray& out, QByteArrayView data);

// Appends a file: its name, the SHA-256 of its bytes, and the bytes.
void appendFile(QByteArray& out, QByteArrayView name, std::span<const std::uint8_t> content);

// Returns the 32 bytes of the SHA-256.
[[nodiscard]] QByteArray sha256(QByteArrayView data);

// Returns a view of bytes that a disc record owns.
[[nodiscard]] QByteArrayView viewOf(std::span<const std::uint8_t> bytes);

struct Chunk {
    std::array<char, 4> tag = {};
    QByteArray body;
};

// Returns the header and the chunks in one buffer, which is reserved once.
[[nodiscard]] QByteArray assemble(const std::array<std::uint8_t, 8>& magic, std::span<const Chunk> chunks);

// Sets `*error`, unless it is null; fail() also returns false.
void setError(Message* error, const char* message);
[[nodiscard]] bool fail(Message* error, const char* message);

}  // namespace package
