// The web pages of the service as HTML: the form of a new configuration, and refusals. They need no script, no
// image and nothing from elsewhere.
#pragma once

#include "tools/tessera_local/configuration_form.h"

#include <cstdint>

namespace tessera_local {

// Where the forms of `kind` are: "/tessera/KIND/new/", and that of one disc: the same with "?uid=NUMBER".
std::string formPath(DiscKind kind);
std::string formAddress(DiscKind kind, std::int64_t discId);

struct FormPage {
    DiscKind kind = DiscKind::Dvd;
    std::int64_t discId = 0;
    ConfigurationForm form = {};             // the rows it has are shown
    std::vector<FormProblem> problems = {};  // of the form
    QString failure = {};                    // why a form without problems could not be kept
    bool isSaved = false;                    // tells that a configuration was just saved
    std::size_t focusedRow = 0;              // the row to go on with, from 1; 0: none in particular
};

std::string htmlOf(const FormPage& page);
std::string htmlOf(const Refusal& refusal);

// The Content-Security-Policy under which the pages work: their own style and form, and nothing else.
std::string contentSecurityPolicy();

}  // namespace tessera_local
