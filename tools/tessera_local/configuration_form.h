// The form of a new configuration: what was typed into it, whether that can be kept, and as what it is kept.
//
//   disc_name, language_code              both are needed
//   title_N_id, _type, _name, _file, _note, _first_chapter, _last_chapter
//                                         row N = 1, 2, ...: one title; a row left empty is none
//   action                                the button that was pressed: "save" or "more"
#pragma once

#include "tools/tessera_local/package_upload.h"

#include <QString>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessera_local {

inline constexpr std::size_t kRowsAtOnce = 4;
inline constexpr std::size_t kMaximumRows = 200;

// In UTF-16 code units, the way a browser counts.
inline constexpr int kMaximumDiscName = 200;
inline constexpr int kMaximumLanguageCode = 35;

// What a title may be, by the number that is kept.
inline constexpr std::array<const char*, 15> kTitleTypes{
    "Unknown",       "Movie",          "Episode",        "Video",        "Music Video",
    "Concert",       "Movie Extra",    "Series Extra",   "Season Extra", "Video Extra",
    "Movie Trailer", "Series Trailer", "Season Trailer", "Game Trailer", "Other"};

struct TitleRow {
    QString id;    // title number of a DVD, playlist ID of a Blu-ray
    QString type;  // empty counts as 0
    QString name;
    QString file;
    QString note;
    QString firstChapter;
    QString lastChapter;

    bool isEmpty() const;
};

enum class FieldKind { Number, Type, Line, Lines };

struct TitleColumn {
    const char* name;  // row N has the field "title_N_" + name
    const char* label;
    const char* hint;  // may be empty
    QString TitleRow::*value;
    FieldKind kind;
    int low;   // of a number
    int high;  // of a number; of a text its most UTF-16 code units
};

// The fields of a row, in their order. The kinds of disc differ in how titles are told apart, and in no more.
constexpr std::array<TitleColumn, 7> titleColumns(DiscKind kind)
{
    const bool isDvd = kind == DiscKind::Dvd;
    return {{
        {"id", isDvd ? "Title number" : "Playlist ID", "", &TitleRow::id, FieldKind::Number, isDvd ? 1 : 0,
         isDvd ? 99 : 99'999},
        {"type", "Type", "", &TitleRow::type, FieldKind::Type, 0, int{kTitleTypes.size()} - 1},
        {"name", "Name", "", &TitleRow::name, FieldKind::Line, 0, 200},
        {"file", "File", "Your name for the file that this title becomes, if it does.", &TitleRow::file,
         FieldKind::Line, 0, 1000},
        {"note", "Note", "", &TitleRow::note, FieldKind::Lines, 0, 10'000},
        {"first_chapter", "First chapter", "", &TitleRow::firstChapter, FieldKind::Number, 1, 9'999},
        {"last_chapter", "Last chapter", "Without chapters the whole title is meant.", &TitleRow::lastChapter,
         FieldKind::Number, 1, 9'999},
    }};
}

QString fieldName(std::size_t rowNumber, const TitleColumn& column);

struct ConfigurationForm {
    QString discName;
    QString languageCode;
    std::vector<TitleRow> rows;
    bool wantsMore = false;  // more rows, rather than being saved

    void addRows();  // kRowsAtOnce, or as many as kMaximumRows leaves
};

// Reads a body of application/x-www-form-urlencoded. Texts lose the blanks around them, and their line breaks
// become "\n"; what is no UTF-8 becomes U+FFFD. Fields of other names are passed over. Nothing when there
// are more than kMaximumRows rows.
std::optional<ConfigurationForm> parseConfigurationForm(std::string_view body);

struct FormProblem {
    QString field;  // its name
    QString label;
    QString text;  // a sentence: what to do about it
};

// Why the form of a disc of `kind` cannot be kept: at most one problem for a field, in the order of the fields.
std::vector<FormProblem> problemsOf(const ConfigurationForm& form, DiscKind kind);

// A form without problems as the JSON document that is kept:
//   {"disc_name", "paths": [each file once], "titles": [{"id", "type", "path": index into paths or null,
//    "name", "note", "first_chapter", "last_chapter"}]}; the last four only where they were given
std::string configurationData(const ConfigurationForm& form);

}  // namespace tessera_local
