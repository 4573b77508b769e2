#include "tools/tessera_local/configuration_form.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <charconv>

namespace tessera_local {

namespace {

// For what is the same with both kinds of disc.
constexpr auto kColumns = titleColumns(DiscKind::Dvd);

// A "%" that no two hexadecimal digits follow stands for itself.
QString decoded(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* digits = text.data() + i + 1;
        unsigned value = 0;
        if (text[i] == '%' && text.size() - i > 2 &&
            std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            bytes += static_cast<char>(value);
            i += 2;
        } else {
            bytes += text[i] == '+' ? ' ' : text[i];
        }
    }
    return QString::fromUtf8(bytes)
        .replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(u'\r', u'\n')
        .trimmed();
}

// False: the field belongs to a row beyond the last.
bool setField(ConfigurationForm& form, const QString& name, const QString& value)
{
    if (name == QLatin1String("disc_name")) {
        form.discName = value;
    } else if (name == QLatin1String("language_code")) {
        form.languageCode = value;
    } else if (name == QLatin1String("action")) {
        form.wantsMore = value == QLatin1String("more");
    } else if (name.startsWith(QLatin1String("title_"))) {
        const std::size_t number = name.section(u'_', 1, 1).toUInt();
        const QString columnName = name.section(u'_', 2);
        const auto column = std::find_if(kColumns.begin(), kColumns.end(), [&](const TitleColumn& each) {
            return columnName == QLatin1String(each.name);
        });
        if (number == 0 || column == kColumns.end()) { return true; }
        if (number > kMaximumRows) { return false; }
        form.rows.resize(std::max(form.rows.size(), number));
        form.rows[number - 1].*column->value = value;
    }
    return true;
}

// The following give what to do about a value; nothing when it is fine.

QString textProblem(const QString& value, int maximumLength, bool mayHaveLines)
{
    const auto isRefused = [mayHaveLines](QChar c) {
        return c.category() == QChar::Other_Control && !(mayHaveLines && c == u'\n');
    };
    if (value.size() > maximumLength) {
        return QStringLiteral("Enter at most %1 characters.").arg(maximumLength);
    }
    if (std::any_of(value.begin(), value.end(), isRefused)) {
        return mayHaveLines ? QStringLiteral("Remove tabs and other control characters.")
                            : QStringLiteral("Remove line breaks, tabs and other control characters.");
    }
    if (value.contains(QChar::ReplacementCharacter)) {
        return QStringLiteral("Enter the characters again that could not be read.");
    }
    return {};
}

QString discNameProblem(const QString& value)
{
    return value.isEmpty() ? QStringLiteral("Enter a name.") : textProblem(value, kMaximumDiscName, false);
}

QString languageCodeProblem(const QString& value)
{
    static const QRegularExpression form(QStringLiteral("\\A[A-Za-z]{2,3}(-[A-Za-z0-9]{2,8})*\\z"));
    if (value.size() <= kMaximumLanguageCode && form.match(value).hasMatch()) { return {}; }
    return QStringLiteral("Enter a language code such as en or pt-BR.");
}

QString titleProblem(const TitleRow& row, const TitleColumn& column)
{
    const QString& value = row.*column.value;
    if (value.isEmpty() && column.value != &TitleRow::id) { return {}; }
    if (column.kind == FieldKind::Line || column.kind == FieldKind::Lines) {
        return textProblem(value, column.high, column.kind == FieldKind::Lines);
    }
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (!isNumber || number < column.low || number > column.high) {
        return QStringLiteral("Enter a number from %1 to %2.").arg(column.low).arg(column.high);
    }
    if (column.value == &TitleRow::lastChapter && number < row.firstChapter.toInt()) {
        return QStringLiteral("Enter a chapter that is not before the first one.");
    }
    return {};
}

}  // namespace

bool TitleRow::isEmpty() const
{
    return std::all_of(kColumns.begin(), kColumns.end(), [this](const TitleColumn& column) {
        const QString& text = this->*column.value;
        return text.isEmpty() || (column.value == &TitleRow::type && text == QLatin1String("0"));
    });
}

QString fieldName(std::size_t rowNumber, const TitleColumn& column)
{
    return QStringLiteral("title_%1_%2").arg(QString::number(rowNumber), QLatin1String(column.name));
}

void ConfigurationForm::addRows()
{
    rows.resize(std::min(rows.size() + kRowsAtOnce, kMaximumRows));
}

std::optional<ConfigurationForm> parseConfigurationForm(std::string_view body)
{
    ConfigurationForm form;
    while (!body.empty()) {
        const std::string_view pair = body.substr(0, body.find('&'));
        body.remove_prefix(std::min(pair.size() + 1, body.size()));
        const std::string_view name = pair.substr(0, pair.find('='));
        const std::string_view value = pair.substr(std::min(name.size() + 1, pair.size()));
        if (!setField(form, decoded(name), decoded(value))) { return std::nullopt; }
    }
    return form;
}

std::vector<FormProblem> problemsOf(const ConfigurationForm& form, DiscKind kind)
{
    std::vector<FormProblem> problems;
    const auto add = [&problems](const QString& field, const QString& label, const QString& text) {
        if (!text.isEmpty()) { problems.push_back({field, label, text}); }
    };
    add(QStringLiteral("disc_name"), QStringLiteral("Disc name"), discNameProblem(form.discName));
    add(QStringLiteral("language_code"), QStringLiteral("Language code"),
        languageCodeProblem(form.languageCode));
    for (std::size_t i = 0; i < form.rows.size(); ++i) {
        if (form.rows[i].isEmpty()) { continue; }
        for (const TitleColumn& column : titleColumns(kind)) {
            const QString label =
                QStringLiteral("Entry %1, %2").arg(QString::number(i + 1), QLatin1String(column.label));
            add(fieldName(i + 1, column), label, titleProblem(form.rows[i], column));
        }
    }
    return problems;
}

std::string configurationData(const ConfigurationForm& form)
{
    QStringList paths;
    QJsonArray titles;
    for (const TitleRow& row : form.rows) {
        if (row.isEmpty()) { continue; }
        if (!row.file.isEmpty() && !paths.contains(row.file)) { paths << row.file; }
        QJsonObject title{{QStringLiteral("id"), row.id.toInt()},
                          {QStringLiteral("type"), row.type.toInt()},
                          {QStringLiteral("path"),
                           row.file.isEmpty() ? QJsonValue() : QJsonValue(paths.indexOf(row.file))}};
        if (!row.name.isEmpty()) { title.insert(QStringLiteral("name"), row.name); }
        if (!row.note.isEmpty()) { title.insert(QStringLiteral("note"), row.note); }
        if (!row.firstChapter.isEmpty()) {
            title.insert(QStringLiteral("first_chapter"), row.firstChapter.toInt());
        }
        if (!row.lastChapter.isEmpty()) {
            title.insert(QStringLiteral("last_chapter"), row.lastChapter.toInt());
        }
        titles.append(title);
    }
    const QJsonObject data{{QStringLiteral("disc_name"), form.discName},
                           {QStringLiteral("paths"), QJsonArray::fromStringList(paths)},
                           {QStringLiteral("titles"), titles}};
    return QJsonDocument(data).toJson(QJsonDocument::Compact).toStdString();
}

}  // namespace tessera_local
