// Title packages as far as the service looks into them, deflated and described the way an upload is.
#pragma once

#include "tools/tessera_local/package_upload.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>

namespace tessera_local {

inline std::string deflated(const std::string& bytes, int level = 9)
{
    uLongf size = compressBound(bytes.size());
    std::string stream(size, '\0');
    const int result = compress2(reinterpret_cast<Bytef*>(stream.data()), &size,
                                 reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), level);
    stream.resize(result == Z_OK ? size : 0);
    return stream;
}

inline std::string sha256Of(const std::string& bytes)
{
    return QCryptographicHash::hash(QByteArrayView(bytes), QCryptographicHash::Sha256).toHex().toStdString();
}

inline std::span<const std::uint8_t> spanOf(const std::string& bytes)
{
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

// A package whose header is right; `statedBytes` overrides the length it states.
inline std::string package(DiscKind kind, const std::string& chunks, std::uint64_t statedBytes = 0)
{
    using namespace std::string_literals;
    const std::string magic = kind == DiscKind::Dvd ? "PSTP-DVD"s : "PSTPBD\0\1"s;
    std::uint64_t length = statedBytes != 0 ? statedBytes : 32 + chunks.size();
    std::string lengthBytes(8, '\0');
    for (std::size_t i = lengthBytes.size(); i-- > 0; length >>= 8) {
        lengthBytes[i] = static_cast<char>(length);
    }
    return magic + "\0\1\0\x20\0\0\0\0"s + lengthBytes + "\0\0\0\4\0\0\0\0"s + chunks;
}

// A folder of one test's own, gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string path = (std::filesystem::temp_directory_path() / "tessera_local_XXXXXX").string();
        m_path = ::mkdtemp(path.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string file(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

}  // namespace tessera_local
