// The user's API key: one small text file, ~/.<service host>/ApiKey.txt, that only its owner can read. The
// directory carries the host's name so that the key of one service is never sent to another.
#pragma once

#include <QString>

namespace service {

// Stands in sample files where a key belongs; counts as no key wherever a key is used.
inline constexpr char kPlaceholderKey[] = "REPLACE_WITH_YOUR_API_KEY";

inline constexpr char kApiKeyNotConfigured[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera API key is not configured.");

// Whether `key` is something a request may carry: not empty and not the placeholder.
[[nodiscard]] bool isConfiguredKey(const QString& key);

// Whether `key` can stand in a header line: no line break and no other control character.
[[nodiscard]] bool isAllowedKeyText(const QString& key);

// The key file's path for the service address in force; empty when that address is refused.
[[nodiscard]] QString apiKeyFilePath();

// Reads the key, trimmed, into `*key`, after narrowing the file's rights to its owner once more. False with a
// sentence in `*errorText` (may be null) when there is no key file, it is no regular file of the user's own,
// its rights cannot be narrowed, it cannot be read, or it holds no key that could be used. The placeholder is
// returned like any key. A refused service address is the error text, and no file is touched.
[[nodiscard]] bool loadApiKey(QString* key, QString* errorText = nullptr);

// Stores `key`, trimmed. The text is written to a new owner-only file in the same directory, which replaces
// the old one as the last act: the key is at no instant readable by others, and an old key survives every
// failure. The directory is created, for its owner alone, where it is missing. False with a sentence in
// `*errorText` (may be null) on failure.
[[nodiscard]] bool saveApiKey(const QString& key, QString* errorText = nullptr);

// The stored file's security check: an empty text when there is no file, or when it is a regular file of the
// user's own that no one else can access in a directory that no one else can write; otherwise the sentence
// "The API key file can be accessed by other users.". Changes nothing.
[[nodiscard]] QString apiKeyFileProblem();

}  // namespace service
