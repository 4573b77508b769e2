// The DVD title package, a disc's canonical technical signature: the raw IFO files and a digest of their title
// sets and titles. Packages of the same disc have the same bytes, and their SHA-256 identifies the disc.
//
//   magic "PSTP-DVD", then four chunks:
//   "DISC"  bytes: the provider identifier's 32 bytes, untrimmed; u32 titles; u64 total duration in ms;
//           u64 total angle-1 size in bytes
//   "IFO "  varint count; for each file: bytes name, SHA-256 (32), bytes content
//   "VTS "  varint count; for each title set: u8 number, u16 width, u16 height, u8 video coding mode,
//           varint audio count, for each: language block (4), u8 coding mode, u8 channels minus one, u8 rate
//           code; varint subpicture count, for each: language block (4), u8 coding mode
//   "TITL"  varint count; for each title: u32 number, u32 chapters, u64 duration in ms,
//           u64 angle-1 size in bytes
//
// A language block is 01, the two characters, 00; or four zero bytes if either character is zero.
#pragma once

#include "base/message.h"
#include "dvdmeta/dvd_disc.h"

#include <QByteArray>

#include <cstdint>

namespace package {

struct DvdDiscTotals {
    std::uint32_t titleCount = 0;
    std::uint64_t durationMs = 0;
    std::uint64_t playbackSizeBytes = 0;
};

// Returns the totals of the disc's titles.
[[nodiscard]] DvdDiscTotals sumDvdTitles(const dvdmeta::DvdDisc& disc);

// Builds the package. Returns its bytes, and their SHA-256 in `*sha256`; on failure an empty array, and a sentence
// in `*error`. `sha256` and `error` may be null.
[[nodiscard]] QByteArray buildDvdPackage(const dvdmeta::DvdDisc* disc, const DvdDiscTotals* totals,
                                         QByteArray* sha256 = nullptr, Message* error = nullptr);

// Each appends the body of one chunk to `body`. They return false, with a message in `*error`, if the record
// breaks a rule of the format; the caller then discards `body`.
[[nodiscard]] bool writeIfoChunk(const dvdmeta::DvdDisc& disc, QByteArray& body, Message* error);
[[nodiscard]] bool writeTitleSetChunk(const dvdmeta::DvdDisc& disc, QByteArray& body, Message* error);
[[nodiscard]] bool writeTitleChunk(const dvdmeta::DvdDisc& disc, QByteArray& body, Message* error);

}  // namespace package
