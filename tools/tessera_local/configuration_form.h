// The form of a new configuration: its fields, their values, and the check of these.
//
//   disc_name, language_code       both are required
//   title_N_id, _type, _name, _file, _note, _first_chapter, _last_chapter
//                                  entry N = 1, 2, ... describes one title; an empty entry is ignored
//   action                         the button that was pressed: "save" or "more"
#pragma once

#include "tools/tessera_local/package_upload.h"

#include <QString>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tessera_local {

inline constexpr std::size_t kRowsAtOnce = 4;
inline constexpr std::size_t kMaximumRows = 200;

// The types of a title; the index is what is stored.
inline constexpr std::array<const char*, 15> kTitleTypes{
    "Unknown",       "Movie",          "Episode",        "Video",        "Music Video",
    "Concert",       "Movie Extra",    "Series Extra",   "Season Extra", "Video Extra",
    "Movie Trailer", "Series Trailer", "Season Trailer", "Game Trailer", "Other"};

enum class FieldKind { Number, Type, LanguageCode, Line, Lines };

struct Field {
    const char* name;  // of an entry's field the part after "title_N_"
    const char* label;
    FieldKind kind;
    int low;   // of a number; of a text 1 if it is required
    int high;  // of a number; of a text its most UTF-16 code units, which is how browsers count
    const char* hint = "";
};

inline constexpr Field kDiscName{"disc_name", "Disc name", FieldKind::Line, 1, 200};
inline constexpr Field kLanguageCode{"language_code",
                                     "Language code",
                                     FieldKind::LanguageCode,
                                     1,
                                     35,
                                     "The language of your texts, for example en or pt-BR."};

// The fields of an entry in their order. Only the id differs between DVD and Blu-ray.
enum Column : std::size_t { Id, Type, Name, File, Note, FirstChapter, LastChapter, kColumns };
using TitleRow = std::array<QString, kColumns>;

constexpr std::array<Field, kColumns> titleFields(DiscKind kind)
{
    return {{
        kind == DiscKind::Dvd ? Field{"id", "Title number", FieldKind::Number, 1, 99}
                              : Field{"id", "Playlist ID", FieldKind::Number, 0, 99'999},
        {"type", "Type", FieldKind::Type, 0, int{kTitleTypes.size()} - 1},
        {"name", "Name", FieldKind::Line, 0, 200},
        {"file", "File", FieldKind::Line, 0, 1000,
         "Your name for the file that this title becomes, if it does."},
        {"note", "Note", FieldKind::Lines, 0, 10'000},
        {"first_chapter", "First chapter", FieldKind::Number, 1, 9'999},
        {"last_chapter", "Last chapter", FieldKind::Number, 1, 9'999,
         "Without chapters the whole title is meant."},
    }};
}

// "title_1_id" and so on.
QString fieldName(std::size_t rowNumber, const Field& field);

struct ConfigurationForm {
    QString discName;
    QString languageCode;
    std::vector<TitleRow> rows;
    bool wantsMore = false;  // more rows instead of being saved

    void addRows();  // kRowsAtOnce, or as many as kMaximumRows leaves
};

// Reads a body of application/x-www-form-urlencoded. Trims the values and turns their line breaks into "\n". What is
// not UTF-8 becomes U+FFFD; a "%" that no two hexadecimal digits follow stays. Ignores fields of other names. Returns
// nothing if there are more than kMaximumRows rows.
std::optional<ConfigurationForm> parseConfigurationForm(const std::string& body);

struct FormProblem {
    QString field;  // its name
    QString label;
    QString text;  // a sentence: what to do about it
};

// Whether `c` is a control character other than a line break.
bool isControl(QChar c);

// Returns why the form of a disc of `kind` cannot be saved: at most one problem for each field, in the order of the
// fields.
std::vector<FormProblem> problemsOf(const ConfigurationForm& form, DiscKind kind);

// A form without problems as the JSON document that is stored:
//   {"disc_name", "paths": [each file once], "titles": [{"id", "type", "path": index into paths or null,
//    "name", "note", "first_chapter", "last_chapter"}]}; the last four only if they are not empty
QString configurationData(const ConfigurationForm& form);

}  // namespace tessera_local
