// The user's API key: one small text file, ~/.<service host>/ApiKey.txt, that only its owner can read. The host's name in
// the path prevents that the key of one service is sent to another.
#pragma once

#include "base/message.h"

#include <QString>

namespace service {

// The placeholder for a key in sample files. It is stored like a key and never used as one.
inline constexpr char kPlaceholderKey[] = "REPLACE_WITH_YOUR_API_KEY";

inline constexpr char kApiKeyNotConfigured[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera API key is not configured.");

// Whether `key` is neither empty nor the placeholder.
[[nodiscard]] bool isConfiguredKey(const QString& key);

// Whether `key` contains no line break and no other control character, so that a header line can carry it.
[[nodiscard]] bool isAllowedKeyText(const QString& key);

// The key file's path for the current service address; empty if that address is refused.
[[nodiscard]] QString apiKeyFilePath();

// Restricts the file's rights to its owner again and reads the key, trimmed, into `*key`. The placeholder is returned
// like any key. False, with the reason in `*error` (may be null), if there is no key file, it is no regular file of the
// user, its rights cannot be restricted, it cannot be read, or it contains no usable key. If the service address is
// refused, that is the error and no file is touched.
[[nodiscard]] bool loadApiKey(QString* key, Message* error = nullptr);

// Stores `key`, trimmed. Writes a new owner-only file in the same directory and then replaces the old file with it:
// other users can never read the key, and the old key survives every failure. Creates a missing directory for its owner
// alone. False, with the reason in `*error` (may be null), on failure.
[[nodiscard]] bool saveApiKey(const QString& key, Message* error = nullptr);

// Checks the stored file without changing it. No message if there is no file, or if it is a regular file of the user
// that nobody else can access in a directory that nobody else can write; otherwise "The API key file can be accessed by
// other users.".
[[nodiscard]] Message apiKeyFileProblem();

}  // namespace service
