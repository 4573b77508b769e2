#include "text/language_name.h"

#include <QCoreApplication>
#include <QLocale>

#include <array>

namespace {

struct WithdrawnCode {
    const char* code;
    QLocale::Language language;
};

// The toolkit has English names only. These languages, which most discs use, are translated; others stay English.
[[maybe_unused]] constexpr std::array kTranslatedNames = {
    QT_TRANSLATE_NOOP("Language", "Arabic"),
    QT_TRANSLATE_NOOP("Language", "Bulgarian"),
    QT_TRANSLATE_NOOP("Language", "Catalan"),
    QT_TRANSLATE_NOOP("Language", "Chinese"),
    QT_TRANSLATE_NOOP("Language", "Croatian"),
    QT_TRANSLATE_NOOP("Language", "Czech"),
    QT_TRANSLATE_NOOP("Language", "Danish"),
    QT_TRANSLATE_NOOP("Language", "Dutch"),
    QT_TRANSLATE_NOOP("Language", "English"),
    QT_TRANSLATE_NOOP("Language", "Estonian"),
    QT_TRANSLATE_NOOP("Language", "Finnish"),
    QT_TRANSLATE_NOOP("Language", "French"),
    QT_TRANSLATE_NOOP("Language", "German"),
    QT_TRANSLATE_NOOP("Language", "Greek"),
    QT_TRANSLATE_NOOP("Language", "Hebrew"),
    QT_TRANSLATE_NOOP("Language", "Hindi"),
    QT_TRANSLATE_NOOP("Language", "Hungarian"),
    QT_TRANSLATE_NOOP("Language", "Icelandic"),
    QT_TRANSLATE_NOOP("Language", "Indonesian"),
    QT_TRANSLATE_NOOP("Language", "Italian"),
    QT_TRANSLATE_NOOP("Language", "Japanese"),
    QT_TRANSLATE_NOOP("Language", "Korean"),
    QT_TRANSLATE_NOOP("Language", "Latvian"),
    QT_TRANSLATE_NOOP("Language", "Lithuanian"),
    QT_TRANSLATE_NOOP("Language", "Malay"),
    QT_TRANSLATE_NOOP("Language", "Norwegian Bokmal"),
    QT_TRANSLATE_NOOP("Language", "Persian"),
    QT_TRANSLATE_NOOP("Language", "Polish"),
    QT_TRANSLATE_NOOP("Language", "Portuguese"),
    QT_TRANSLATE_NOOP("Language", "Romanian"),
    QT_TRANSLATE_NOOP("Language", "Russian"),
    QT_TRANSLATE_NOOP("Language", "Serbian"),
    QT_TRANSLATE_NOOP("Language", "Slovak"),
    QT_TRANSLATE_NOOP("Language", "Slovenian"),
    QT_TRANSLATE_NOOP("Language", "Spanish"),
    QT_TRANSLATE_NOOP("Language", "Swedish"),
    QT_TRANSLATE_NOOP("Language", "Tamil"),
    QT_TRANSLATE_NOOP("Language", "Telugu"),
    QT_TRANSLATE_NOOP("Language", "Thai"),
    QT_TRANSLATE_NOOP("Language", "Turkish"),
    QT_TRANSLATE_NOOP("Language", "Ukrainian"),
    QT_TRANSLATE_NOOP("Language", "Urdu"),
    QT_TRANSLATE_NOOP("Language", "Vietnamese"),
    QT_TRANSLATE_NOOP("Language", "Afrikaans"),
    QT_TRANSLATE_NOOP("Language", "Albanian"),
    QT_TRANSLATE_NOOP("Language", "Armenian"),
    QT_TRANSLATE_NOOP("Language", "Bangla"),
    QT_TRANSLATE_NOOP("Language", "Basque"),
    QT_TRANSLATE_NOOP("Language", "Belarusian"),
    QT_TRANSLATE_NOOP("Language", "Bosnian"),
    QT_TRANSLATE_NOOP("Language", "Cantonese"),
    QT_TRANSLATE_NOOP("Language", "Filipino"),
    QT_TRANSLATE_NOOP("Language", "Galician"),
    QT_TRANSLATE_NOOP("Language", "Georgian"),
    QT_TRANSLATE_NOOP("Language", "Gujarati"),
    QT_TRANSLATE_NOOP("Language", "Irish"),
    QT_TRANSLATE_NOOP("Language", "Kannada"),
    QT_TRANSLATE_NOOP("Language", "Kazakh"),
    QT_TRANSLATE_NOOP("Language", "Khmer"),
    QT_TRANSLATE_NOOP("Language", "Latin"),
    QT_TRANSLATE_NOOP("Language", "Macedonian"),
    QT_TRANSLATE_NOOP("Language", "Malayalam"),
    QT_TRANSLATE_NOOP("Language", "Marathi"),
    QT_TRANSLATE_NOOP("Language", "Mongolian"),
    QT_TRANSLATE_NOOP("Language", "Norwegian Nynorsk"),
    QT_TRANSLATE_NOOP("Language", "Punjabi"),
    QT_TRANSLATE_NOOP("Language", "Sinhala"),
    QT_TRANSLATE_NOOP("Language", "Swahili"),
    QT_TRANSLATE_NOOP("Language", "Welsh"),
    QT_TRANSLATE_NOOP("Language", "Yiddish"),
};

// ISO 639 withdrew these in 1989; later discs still use them.
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
    return QCoreApplication::translate("Language", QLocale::languageToString(language).toUtf8().constData());
}
