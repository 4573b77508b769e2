// The JSON documents of the replies, without line breaks.
#pragma once

#include "tools/tessera_local/options.h"
#include "tools/tessera_local/store.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessera_local {

// {"UID": number, "Username": text, "LatestVersion": text}; the last only if `latestVersion` is not empty.
std::string userReply(const User& user, const std::string& latestVersion);

// {"Disc ID": number, or null for an unknown disc, "Configurations": array}
std::string findReply(std::optional<std::int64_t> discId, const std::vector<Configuration>& configurations);

// [{"UID", "Disc ID", "Language Code", "Added By Username", "Added By UID", "Data"}...]
std::string configurationsReply(const std::vector<Configuration>& configurations);

}  // namespace tessera_local
