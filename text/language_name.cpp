#include "text/language_name.h"

#include <QLocale>

#include <array>

namespace {

struct WithdrawnCode {
    const char* code;
    QLocale::Language language;
};

// ISO 639 withdrew these in 1989; discs pressed later still carry them.
constexpr std::array kWithdrawnCodes = {
    WithdrawnCode{"iw", QLocale::Hebrew},
    WithdrawnCode{"in", QLocale::Indonesian},
    WithdrawnCode{"ji", QLocale::Yiddish},
};

QLocale::Language languageOf(const QString& code)
{
    const QString lower = code.toLower();
    for (const WithdrawnCode& withdrawn : kWithdrawnCodes) {
        if (lower == QLatin1StringView(withdrawn.code)) { return withdrawn.language; }
    }
    return QLocale::codeToLanguage(lower);
}

}  // namespace

QString languageName(const QString& code)
{
    const QLocale::Language language = languageOf(code);
    if (language == QLocale::AnyLanguage || language == QLocale::C) { return code; }
    return QLocale::languageToString(language);
}
