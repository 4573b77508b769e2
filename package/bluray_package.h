// The Blu-ray title package, a disc's canonical technical signature: the bytes of every clip information file and
// every playlist, and a digest of the titles.
//
//   magic 50 53 54 50 42 44 00 01 ("PSTPBD", then 00 01), then four chunks:
//   "DISC"  u32 presence flags (bit 0 organization id, bit 1 disc id); 4 bytes index version;
//           u32 declared titles; u32 playlists; u32 clips; u32 titles; u64 total duration in ms;
//           u64 total angle-1 size in bytes; u32 total marks; organization id (4) and disc id (16), each only if its flag is set
//   "CLPI"  varint count; for each clip: bytes name, SHA-256 (32), bytes content, u64 stream file size
//   "MPLS"  varint count; for each playlist: bytes name, SHA-256 (32), bytes content
//   "TITL"  varint count; for each title: 5 bytes playlist id, u64 duration in ms, u64 angle-1 size,
//           u32 marks
#pragma once

#include "base/message.h"
#include "bdmeta/bluray_disc.h"
#include "bdmeta/bluray_titles.h"

#include <QByteArray>

#include <span>

namespace package {

// Builds the package of a disc and its titles; title i comes from playlist i. Returns the bytes, and their SHA-256
// in `*sha256`. On failure returns an empty array and a message in `*error`; no message if `disc` or
// `summary` is null. `sha256` and `error` may be null.
[[nodiscard]] QByteArray buildBlurayPackage(const bdmeta::BlurayDisc* disc,
                                            std::span<const bdmeta::BlurayTitle> titles,
                                            const bdmeta::BlurayDiscSummary* summary,
                                            QByteArray* sha256 = nullptr, Message* error = nullptr);

// Each appends the body of one chunk to `body`. They return false, with a message in `*error`, if the record
// breaks a rule of the format; the caller then discards `body`. writeDiscChunk() fails only if an argument is
// null.
[[nodiscard]] bool writeDiscChunk(const bdmeta::BlurayDisc* disc, const bdmeta::BlurayDiscSummary* summary,
                                  std::size_t titleCount, QByteArray& body);
[[nodiscard]] bool writeClipChunk(const bdmeta::BlurayDisc& disc, QByteArray& body, Message* error);
[[nodiscard]] bool writePlaylistChunk(const bdmeta::BlurayDisc& disc, QByteArray& body, Message* error);
[[nodiscard]] bool writeTitleChunk(const bdmeta::BlurayDisc& disc,
                                   std::span<const bdmeta::BlurayTitle> titles, QByteArray& body,
                                   Message* error);

}  // namespace package
