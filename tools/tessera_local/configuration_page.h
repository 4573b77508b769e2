// The web pages of the service as HTML: the form of a new configuration, and refusals. They use no script, no image and
// nothing from other addresses.
#pragma once

#include "tools/tessera_local/configuration_form.h"

#include <cstdint>

namespace tessera_local {

// The path of the forms of `kind`, "/tessera/KIND/new/".
std::string formPath(DiscKind kind);

// The address of one disc's form: the path with "?uid=NUMBER".
std::string formAddress(DiscKind kind, std::int64_t discId);

struct FormPage {
    DiscKind kind = DiscKind::Dvd;
    std::int64_t discId = 0;
    ConfigurationForm form = {};
    std::vector<FormProblem> problems = {};  // of the form
    QString failure = {};                    // why a form without problems was not saved
    bool isSaved = false;                    // a configuration was just saved
    std::size_t focusedRow = 0;              // the row that gets the keyboard, from 1; 0: none
};

std::string htmlOf(const FormPage& page);
std::string htmlOf(const Refusal& refusal);

// The Content-Security-Policy of the pages: it allows their own style and form, and nothing else.
std::string contentSecurityPolicy();

}  // namespace tessera_local
