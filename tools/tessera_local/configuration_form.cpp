#include "tools/tessera_local/configuration_form.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace tessera_local {

namespace {

constexpr auto kFields = titleFields(DiscKind::Dvd);  // for what is the same for both kinds of disc

// A name or value. Trims it and turns its line breaks into "\n".
QString decoded(QStringView encoded)
{
    QString text = QUrl::fromPercentEncoding(encoded.toLatin1());
    return text.replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n').trimmed();
}

// Sets the field of an entry. Returns false if the entry is beyond the last.
bool setTitleField(std::vector<TitleRow>& rows, const QString& name, const QString& value)
{
    const std::size_t number = name.section(u'_', 1, 1).toUInt();
    const auto field =
        std::find_if(kFields.begin(), kFields.end(),
                     [part = name.section(u'_', 2)](auto& each) { return part == QLatin1String(each.name); });
    if (number == 0 || field == kFields.end()) { return true; }
    if (number > kMaximumRows) { return false; }
    rows.resize(std::max(rows.size(), number));
    rows[number - 1].at(static_cast<std::size_t>(field - kFields.begin())) = value;
    return true;
}

bool isEmptyRow(TitleRow row)
{
    if (row[Type] == "0"_L1) { row[Type].clear(); }
    return std::ranges::all_of(row, [](const QString& value) { return value.isEmpty(); });
}

// The sentence about an invalid value; empty if the value can be stored.
QString problemOf(const QString& value, const Field& field)
{
    static const QRegularExpression language(u"\\A[A-Za-z]{2,3}(-[A-Za-z0-9]{2,8})*\\z"_s);
    const bool isTooLong = value.size() > field.high;
    if (field.kind == FieldKind::Number || field.kind == FieldKind::Type) {
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        if (isNumber && number >= field.low && number <= field.high) { return {}; }
        return u"Enter a number from %1 to %2."_s.arg(field.low).arg(field.high);
    }
    if (field.kind == FieldKind::LanguageCode) {
        return !isTooLong && language.match(value).hasMatch()
                   ? QString()
                   : u"Enter a language code such as en or pt-BR."_s;
    }
    if (value.size() < field.low) { return u"Enter a name."_s; }
    if (isTooLong) { return u"Enter at most %1 characters."_s.arg(field.high); }
    const bool isLine = field.kind == FieldKind::Line;
    if (std::any_of(value.begin(), value.end(), isControl) || (isLine && value.contains(u'\n'))) {
        return isLine ? u"Remove line breaks, tabs and other control characters."_s
                      : u"Remove tabs and other control characters."_s;
    }
    return value.contains(QChar::ReplacementCharacter)
               ? u"Enter the characters again that could not be read."_s
               : QString();
}

QString problemOfTitle(const TitleRow& row, std::size_t column, const Field& field)
{
    if (row.at(column).isEmpty() && column != Id) { return {}; }
    const QString text = problemOf(row.at(column), field);
    const bool endsTooEarly = column == LastChapter && row[LastChapter].toInt() < row[FirstChapter].toInt();
    return text.isEmpty() && endsTooEarly ? u"Enter a chapter that is not before the first one."_s : text;
}

}  // namespace

QString fieldName(std::size_t rowNumber, const Field& field)
{
    return u"title_%1_%2"_s.arg(QString::number(rowNumber), QLatin1String(field.name));
}

void ConfigurationForm::addRows()
{
    rows.resize(std::min(rows.size() + kRowsAtOnce, kMaximumRows));
}

std::optional<ConfigurationForm> parseConfigurationForm(const std::string& body)
{
    static const QRegularExpression strayPercent(u"%(?![0-9A-Fa-f]{2})"_s);
    QString text = QString::fromLatin1(body.data(), static_cast<qsizetype>(body.size()));
    text.replace(u'+', u' ').replace(strayPercent, u"%25"_s);
    ConfigurationForm form;
    for (const QStringView pair : QStringView(text).split(u'&', Qt::SkipEmptyParts)) {
        const QStringView encodedName = pair.left(pair.indexOf(u'='));
        const QString name = decoded(encodedName);
        const QString value = decoded(pair.mid(encodedName.size() + 1));
        if (name == QLatin1String(kDiscName.name)) { form.discName = value; }
        if (name == QLatin1String(kLanguageCode.name)) { form.languageCode = value; }
        if (name == "action"_L1) { form.wantsMore = value == "more"_L1; }
        if (name.startsWith("title_"_L1) && !setTitleField(form.rows, name, value)) { return std::nullopt; }
    }
    return form;
}

bool isControl(QChar c)
{
    return c.category() == QChar::Other_Control && c != u'\n';
}

std::vector<FormProblem> problemsOf(const ConfigurationForm& form, DiscKind kind)
{
    std::vector<FormProblem> problems;
    const auto add = [&problems](const QString& field, const QString& label, const QString& text) {
        if (!text.isEmpty()) { problems.push_back({field, label, text}); }
    };
    add(QLatin1String(kDiscName.name), QLatin1String(kDiscName.label), problemOf(form.discName, kDiscName));
    add(QLatin1String(kLanguageCode.name), QLatin1String(kLanguageCode.label),
        problemOf(form.languageCode, kLanguageCode));
    const auto fields = titleFields(kind);
    for (std::size_t i = 0; i < form.rows.size(); ++i) {
        for (std::size_t column = 0; column < kColumns && !isEmptyRow(form.rows[i]); ++column) {
            add(fieldName(i + 1, fields[column]),
                u"Entry %1, %2"_s.arg(QString::number(i + 1), QLatin1String(fields[column].label)),
                problemOfTitle(form.rows[i], column, fields[column]));
        }
    }
    return problems;
}

QString configurationData(const ConfigurationForm& form)
{
    QStringList paths;
    QJsonArray titles;
    for (const TitleRow& row : form.rows) {
        if (isEmptyRow(row)) { continue; }
        if (!row[File].isEmpty() && !paths.contains(row[File])) { paths << row[File]; }
        QJsonObject title{{u"id"_s, row[Id].toInt()},
                          {u"type"_s, row[Type].toInt()},
                          {u"path"_s, row[File].isEmpty() ? QJsonValue() : paths.indexOf(row[File])}};
        for (const Column column : {Name, Note, FirstChapter, LastChapter}) {
            if (row.at(column).isEmpty()) { continue; }
            const bool isNumber = kFields[column].kind == FieldKind::Number;
            title.insert(QLatin1String(kFields[column].name),
                         isNumber ? QJsonValue(row.at(column).toInt()) : row.at(column));
        }
        titles.append(title);
    }
    const QJsonObject data{{u"disc_name"_s, form.discName},
                           {u"paths"_s, QJsonArray::fromStringList(paths)},
                           {u"titles"_s, titles}};
    return QString::fromUtf8(QJsonDocument(data).toJson(QJsonDocument::Compact));
}

}  // namespace tessera_local
