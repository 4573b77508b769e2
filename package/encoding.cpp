#include "package/encoding.h"

#include <QCryptographicHash>
#include <QtEndian>

namespace package {

namespace {

constexpr std::uint16_t kFormatVersion = 1;
constexpr std::uint16_t kChunkVersion = 1;
constexpr std::uint16_t kNoFlags = 0;
constexpr qsizetype kLengthOffset = 16;
constexpr qsizetype kFramesRoom = 96;  // the header and four chunk frames

template <typename Number>
void appendBigEndian(QByteArray& out, Number value)
{
    std::array<char, sizeof(Number)> bytes = {};
    qToBigEndian(value, bytes.data());
    out.append(bytes.data(), sizeof(Number));
}

}  // namespace

void appendU8(QByteArray& out, std::uint8_t value)
{
    out.append(static_cast<char>(value));
}

void appendU16BE(QByteArray& out, std::uint16_t value)
{
    appendBigEndian(out, value);
}

void appendU32BE(QByteArray& out, std::uint32_t value)
{
    appendBigEndian(out, value);
}

void appendU64BE(QByteArray& out, std::uint64_t value)
{
    appendBigEndian(out, value);
}

void patchU64BE(QByteArray& out, qsizetype offset, std::uint64_t value)
{
    Q_ASSERT(offset >= 0 && offset <= out.size() - 8);
    qToBigEndian(value, out.data() + offset);
}

void appendVarint(QByteArray& out, std::uint64_t value)
{
    while (value > 0x7F) {
        appendU8(out, static_cast<std::uint8_t>(0x80U | (value & 0x7FU)));
        value >>= 7U;
    }
    appendU8(out, static_cast<std::uint8_t>(value));
}

void appendBytes(QByteArray& out, QByteArrayView data)
{
    appendVarint(out, static_cast<std::uint64_t>(data.size()));
    out.append(data);
}

void appendFile(QByteArray& out, QByteArrayView name, std::span<const std::uint8_t> content)
{
    appendBytes(out, name);
    out.append(sha256(viewOf(content)));
    appendBytes(out, viewOf(content));
}

QByteArray sha256(QByteArrayView data)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(data);
    return hash.result();
}

QByteArrayView viewOf(std::span<const std::uint8_t> bytes)
{
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

QByteArray assemble(const std::array<std::uint8_t, 8>& magic, std::span<const Chunk> chunks)
{
    qsizetype room = kHeaderSize + kFramesRoom;
    for (const Chunk& chunk : chunks) {
        room += chunk.body.size();
    }
    QByteArray out;
    out.reserve(room);

    out.append(viewOf(magic));
    appendU16BE(out, kFormatVersion);
    appendU16BE(out, static_cast<std::uint16_t>(kHeaderSize));
    appendU32BE(out, 0);
    appendU64BE(out, 0);
    appendU32BE(out, static_cast<std::uint32_t>(chunks.size()));
    appendU32BE(out, 0);
    for (const Chunk& chunk : chunks) {
        out.append(chunk.tag.data(), static_cast<qsizetype>(chunk.tag.size()));
        appendU16BE(out, kChunkVersion);
        appendU16BE(out, kNoFlags);
        appendU64BE(out, static_cast<std::uint64_t>(chunk.body.size()));
        out.append(chunk.body);
    }
    patchU64BE(out, kLengthOffset, static_cast<std::uint64_t>(out.size()));
    return out;
}

void setError(Message* error, const char* message)
{
    if (error != nullptr) { *error = message; }
}

bool fail(Message* error, const char* message)
{
    setError(error, message);
    return false;
}

}  // namespace package
