#include "tools/tessera_local/package_upload.h"

#include <QByteArrayView>
#include <QCryptographicHash>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

namespace tessera_local {

namespace {

constexpr std::size_t kWindowBytes = 64 * 1024;
constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kLengthOffset = 16;
constexpr std::array<std::uint8_t, 8> kDvdMagic{'P', 'S', 'T', 'P', '-', 'D', 'V', 'D'};
constexpr std::array<std::uint8_t, 8> kBlurayMagic{'P', 'S', 'T', 'P', 'B', 'D', 0x00, 0x01};

struct InflateEnd {
    void operator()(z_stream* stream) const { inflateEnd(stream); }
};

enum class StreamState { Whole, Broken, TooLong };

// Takes the inflated bytes window by window; collects their number, the header and the hash.
class PackageInspection {
public:
    PackageInspection(DiscKind kind, std::uint64_t maximumBytes)
        : m_kind(kind)
        , m_maximumBytes(maximumBytes)
    {}

    // Returns false if the package is longer than allowed.
    bool take(std::span<const std::uint8_t> window)
    {
        const bool isFirst = m_sizeBytes == 0;
        m_sizeBytes += window.size();
        if (m_sizeBytes > m_maximumBytes) { return false; }
        if (isFirst) { readHeader(window); }
        // Hashing takes most of the time; skip it for a package that is refused anyway.
        if (m_hasMagic && m_sizeBytes <= m_statedBytes) {
            m_hash.addData(QByteArrayView(window.data(), static_cast<qsizetype>(window.size())));
        }
        return true;
    }

    bool hasMagic() const { return m_hasMagic; }
    bool hasStatedLength() const { return m_sizeBytes == m_statedBytes; }
    std::string sha256() const { return m_hash.result().toHex().toStdString(); }

private:
    // A header that does not fit the first window is cut short, because the window is much larger.
    void readHeader(std::span<const std::uint8_t> window)
    {
        const auto& magic = m_kind == DiscKind::Dvd ? kDvdMagic : kBlurayMagic;
        m_hasMagic = window.size() >= kHeaderBytes && std::equal(magic.begin(), magic.end(), window.begin());
        if (!m_hasMagic) { return; }
        for (const std::uint8_t byte : window.subspan(kLengthOffset, 8)) {
            m_statedBytes = m_statedBytes << 8 | byte;
        }
    }

    DiscKind m_kind;
    std::uint64_t m_maximumBytes;
    std::uint64_t m_sizeBytes = 0;
    std::uint64_t m_statedBytes = 0;
    bool m_hasMagic = false;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

// Inflates `body` through one window. inflateInit accepts the zlib form only, neither gzip nor raw deflate.
StreamState inflateInto(PackageInspection& package, std::span<const std::uint8_t> body)
{
    // avail_in is narrower than size_t. Larger bodies are far above the limit of an upload.
    if (body.size() > std::numeric_limits<uInt>::max()) { return StreamState::TooLong; }
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) { throw std::bad_alloc(); }
    const std::unique_ptr<z_stream, InflateEnd> end(&stream);

    std::array<std::uint8_t, kWindowBytes> window;
    stream.next_in = const_cast<Bytef*>(body.data());  // zlib does not change the input
    stream.avail_in = static_cast<uInt>(body.size());
    int result = Z_OK;
    while (result == Z_OK) {
        stream.next_out = window.data();
        stream.avail_out = static_cast<uInt>(window.size());
        result = inflate(&stream, Z_NO_FLUSH);  // Z_BUF_ERROR: the input ended too early
        const std::size_t inflated = window.size() - stream.avail_out;
        if (inflated > 0 && !package.take({window.data(), inflated})) { return StreamState::TooLong; }
    }
    if (result == Z_MEM_ERROR) { throw std::bad_alloc(); }
    return result == Z_STREAM_END && stream.avail_in == 0 ? StreamState::Whole : StreamState::Broken;
}

}  // namespace

const char* kindName(DiscKind kind)
{
    return kind == DiscKind::Dvd ? "dvd" : "bluray";
}

const char* kindTitle(DiscKind kind)
{
    return kind == DiscKind::Dvd ? "DVD" : "Blu-ray";
}

bool isSha256Text(std::string_view text)
{
    const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
    return text.size() == 64 && std::all_of(text.begin(), text.end(), isDigit);
}

std::optional<Refusal> checkPackageUpload(std::span<const std::uint8_t> body, DiscKind kind,
                                          std::string_view statedSha256, std::uint64_t maximumPackageBytes)
{
    if (!isSha256Text(statedSha256)) {
        return Refusal{400, "The package's SHA-256 must be given as 64 lower-case hexadecimal digits."};
    }
    PackageInspection package(kind, maximumPackageBytes);
    switch (inflateInto(package, body)) {
    case StreamState::Broken:
        return Refusal{400, "The uploaded package is not one whole zlib stream: it is damaged or cut short."};
    case StreamState::TooLong:
        return Refusal{413, "The uploaded package is too large."};
    case StreamState::Whole:
        break;
    }
    if (!package.hasMagic()) {
        return Refusal{422, std::string("The upload is not a ") + kindTitle(kind) + " title package."};
    }
    if (!package.hasStatedLength()) {
        return Refusal{422, "The uploaded package does not have the length that its header states."};
    }
    if (package.sha256() != statedSha256) {
        return Refusal{422, "The uploaded package does not have the SHA-256 that was sent with it."};
    }
    return std::nullopt;
}

}  // namespace tessera_local
