// The two requests that carry a title package: find the disc, and add it. The service identifies a disc by its package.
// The body is the package as a zlib stream; a header has the SHA-256 of the uncompressed package.
#pragma once

#include "base/message.h"
#include "service/configurations.h"

#include <QByteArray>
#include <QString>

namespace service {

enum class DiscKind { Dvd, Bluray };

// A package and its digest.
struct TitlePackage {
    DiscKind kind = DiscKind::Dvd;
    QByteArray bytes;
    QByteArray sha256;  // 32 raw bytes
};

struct FindOutcome {
    bool ok = false;
    ConfigurationReply reply;  // if ok
    Message error;             // if not ok
};

struct AddOutcome {
    bool ok = false;
    qint64 discId = 0;
    Message error;
};

// Send one blocking request each. Throw std::bad_alloc.
[[nodiscard]] FindOutcome findDisc(const TitlePackage& package, const QString& apiKey);
[[nodiscard]] AddOutcome addDisc(const TitlePackage& package, const QString& apiKey);

// The web page where a user completes the entry of disc `discId`. Empty if the id is 0 or the service address is
// refused.
[[nodiscard]] QString newDiscUrl(DiscKind kind, qint64 discId);

}  // namespace service
