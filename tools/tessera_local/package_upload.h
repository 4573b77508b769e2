// A title package as it is uploaded: one zlib stream that inflates to the package.
//
// The start of every package, big-endian; the service reads no more of it:
//   0   8  magic: "PSTP-DVD", or "PSTPBD" 00 01 for a Blu-ray
//   16  8  length of the whole package in bytes, header included
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessera_local {

enum class DiscKind { Dvd, Bluray };

// "dvd" or "bluray": as in the addresses, the media types and the database.
const char* kindName(DiscKind kind);

// "DVD" or "Blu-ray": for people.
const char* kindTitle(DiscKind kind);

// The reply to a refused request: the HTTP status and a sentence for people.
struct Refusal {
    int status = 0;
    std::string text;
};

inline constexpr std::uint64_t kMaximumPackageBytes = std::uint64_t{1} << 30;

// Whether `text` is a SHA-256 digest as it is sent: 64 lower-case hexadecimal digits.
bool isSha256Text(std::string_view text);

// Checks an upload: `body` must be exactly one zlib stream of a package of `kind` with the length in its header and
// the digest `statedSha256`. Returns nullopt if it is, otherwise the refusal:
//   400  not a zlib stream, damaged, cut short, or followed by more bytes; `statedSha256` is no digest
//   413  it inflates to more than `maximumPackageBytes`
//   422  the inflated bytes are not such a package, or have another length or digest
// Inflates the package through a small window, so memory does not depend on its size.
std::optional<Refusal> checkPackageUpload(std::span<const std::uint8_t> body, DiscKind kind,
                                          std::string_view statedSha256,
                                          std::uint64_t maximumPackageBytes = kMaximumPackageBytes);

}  // namespace tessera_local
