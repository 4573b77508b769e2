// The two requests that carry a title package: is this disc known, and add it. The service identifies a disc
// by its package; the package travels as a zlib stream beside the SHA-256 of its uncompressed bytes.
#pragma once

#include "service/configurations.h"

#include <QByteArray>
#include <QString>

namespace service {

enum class DiscKind { Dvd, Bluray };

// A package and its digest, borrowed for the length of a request.
struct TitlePackage {
    DiscKind kind = DiscKind::Dvd;
    QByteArray bytes;
    QByteArray sha256;  // 32 raw bytes
};

struct FindOutcome {
    bool ok = false;
    ConfigurationReply reply;  // when ok: whether the disc is known, its id, its configurations
    QString errorText;         // when not ok
};

struct AddOutcome {
    bool ok = false;
    qint64 discId = 0;
    QString errorText;
};

// One blocking request each. The error text may be empty only where no step had one to give.
[[nodiscard]] FindOutcome findDisc(const TitlePackage& package, const QString& apiKey);
[[nodiscard]] AddOutcome addDisc(const TitlePackage& package, const QString& apiKey);

// The page where a user completes the entry of disc `discId`, on the service address in force; empty for id
// 0.
[[nodiscard]] QString newDiscUrl(DiscKind kind, qint64 discId);

}  // namespace service
