#include "tools/tessera_local/configuration_page.h"

#include <QByteArrayView>
#include <QCryptographicHash>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace tessera_local {

namespace {

constexpr char kStyle[] = R"(
:root { color-scheme: light dark; --problem: #a4001d; }
@media (prefers-color-scheme: dark) { :root { --problem: #ffa3a3; } }
body { font: 1rem/1.5 sans-serif; max-width: 40rem; margin: 0 auto; padding: 1rem; overflow-wrap: anywhere; }
fieldset { margin: 1.5rem 0; padding: 0 1rem 1rem; min-width: 0; }
legend { font-weight: bold; }
label { display: block; margin-top: 1rem; }
input, select, textarea, button { font: inherit; box-sizing: border-box; max-width: 100%; }
input, select, textarea { width: 100%; padding: 0.25rem; }
select, #language_code, [inputmode=numeric] { width: 12rem; }
button { margin: 0 1rem 1rem 0; padding: 0.5rem 1rem; }
:focus { outline: 3px solid; outline-offset: 2px; }
.hint, .problem { margin: 0; }
.problem, #problems a { color: var(--problem); }
#problems, #saved { border: 2px solid; padding: 0.5rem 1rem; }
#problems { border-color: var(--problem); }
)";

QString escaped(QString text)
{
    std::replace_if(text.begin(), text.end(), isControl, QChar(QChar::ReplacementCharacter));
    return text.toHtmlEscaped();
}

// Markup whose %1, %2, ... are replaced by the texts, escaped.
template <typename... Texts>
QString html(const char* markup, const Texts&... texts)
{
    return QString::fromLatin1(markup).arg(escaped(texts)...);
}

std::string pageOf(const QString& title, const QString& content)
{
    const QString head = html(R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>%1 - Tessera</title>
<style>%2</style>
</head>
<body>
<main>
<h1>%1</h1>
)",
                              title, QLatin1String(kStyle));
    return (head + content + "</main>\n</body>\n</html>\n"_L1).toStdString();
}

QString typesHtml(const QString& value)
{
    QString types;
    for (std::size_t i = 0; i < kTitleTypes.size(); ++i) {
        const QString number = QString::number(i);
        types += html(R"(<option value="%1")", number) + (number == value ? " selected"_L1 : ""_L1) +
                 html(">%1</option>\n", QLatin1String(kTitleTypes[i]));
    }
    return types;
}

// A control, preceded by its label, hint and problem.
QString fieldHtml(const FormPage& page, const Field& field, const QString& name, const QString& value,
                  bool isFocused = false)
{
    const QString hint = QLatin1String(field.hint);
    const auto problem = std::find_if(page.problems.begin(), page.problems.end(),
                                      [&name](const FormProblem& each) { return each.field == name; });
    const bool hasProblem = problem != page.problems.end();
    const bool isText = field.kind != FieldKind::Number && field.kind != FieldKind::Type;

    QString before = html("<label for=\"%1\">%2</label>\n", name, QLatin1String(field.label));
    QString attributes = html(R"( id="%1" name="%1")", name);
    QStringList descriptions;
    if (!hint.isEmpty()) { before += html("<p class=\"hint\" id=\"%1_hint\">%2</p>\n", name, hint); }
    if (hasProblem) {
        before += html("<p class=\"problem\" id=\"%1_problem\">%2</p>\n", name, problem->text);
        descriptions << name + "_problem"_L1;
    }
    if (!hint.isEmpty()) { descriptions << name + "_hint"_L1; }
    if (isText && field.low > 0) { attributes += " required"_L1; }
    if (isFocused) { attributes += " autofocus"_L1; }
    if (hasProblem) { attributes += R"( aria-invalid="true")"_L1; }
    if (!descriptions.isEmpty()) { attributes += html(R"( aria-describedby="%1")", descriptions.join(u' ')); }
    if (field.kind == FieldKind::Number) { attributes += R"( inputmode="numeric")"_L1; }
    if (isText) { attributes += html(R"( maxlength="%1")", QString::number(field.high)); }

    switch (field.kind) {
    case FieldKind::Type:
        return before + "<select"_L1 + attributes + ">\n"_L1 + typesHtml(value) + "</select>\n"_L1;
    case FieldKind::Lines:
        return before + R"(<textarea rows="3")"_L1 + attributes + html(">%1</textarea>\n", value);
    default:
        return before + R"(<input type="text")"_L1 + attributes + html(" value=\"%1\">\n", value);
    }
}

QString problemsHtml(const FormPage& page)
{
    if (page.problems.empty() && page.failure.isEmpty()) { return {}; }
    QString list = page.failure.isEmpty() ? QString() : html("<li>%1</li>\n", page.failure);
    for (const FormProblem& problem : page.problems) {
        list += html("<li><a href=\"#%1\">%2: %3</a></li>\n", problem.field, problem.label, problem.text);
    }
    return R"(<div id="problems" role="alert" tabindex="-1" autofocus>
<p>The configuration was not saved yet:</p>
<ul>
)"_L1 + list +
           "</ul>\n</div>\n"_L1;
}

QString formHtml(const FormPage& page)
{
    QString form = html("<form id=\"configuration\" method=\"post\" action=\"%1\">\n",
                        QString::fromStdString(formAddress(page.kind, page.discId)));
    form += fieldHtml(page, kDiscName, QLatin1String(kDiscName.name), page.form.discName);
    form += fieldHtml(page, kLanguageCode, QLatin1String(kLanguageCode.name), page.form.languageCode);
    const auto fields = titleFields(page.kind);
    for (std::size_t number = 1; number <= page.form.rows.size(); ++number) {
        form += html("<fieldset>\n<legend>Entry %1</legend>\n", QString::number(number));
        for (std::size_t column = 0; column < kColumns; ++column) {
            form += fieldHtml(page, fields[column], fieldName(number, fields[column]),
                              page.form.rows[number - 1][column], number == page.focusedRow && column == Id);
        }
        form += "</fieldset>\n"_L1;
    }
    return form + R"(<button id="save" name="action" value="save">Save Configuration</button>
<button id="more" name="action" value="more" formnovalidate)"_L1 +
           (page.form.rows.size() < kMaximumRows ? ""_L1 : " disabled"_L1) +
           ">Add More Titles</button>\n</form>\n"_L1;
}

}  // namespace

std::string formPath(DiscKind kind)
{
    return std::string("/tessera/") + kindName(kind) + "/new/";
}

std::string formAddress(DiscKind kind, std::int64_t discId)
{
    return formPath(kind) + "?uid=" + std::to_string(discId);
}

std::string htmlOf(const FormPage& page)
{
    const QString saved = u"<p id=\"saved\" role=\"status\">"
                          "The configuration was saved. Press Refresh in Platterscope to see it.</p>\n"_s;
    const QString introduction = html(
        "<p>%1, disc ID %2</p>\n<p>A disc name and a language code are needed, and the %3 of each entry. "
        "Entries left empty are passed over.</p>\n",
        QLatin1String(kindTitle(page.kind)), QString::number(page.discId),
        QString(page.kind == DiscKind::Dvd ? "title number"_L1 : "playlist ID"_L1));
    return pageOf(u"New Configuration"_s,
                  (page.isSaved ? saved : QString()) + problemsHtml(page) + introduction + formHtml(page));
}

std::string htmlOf(const Refusal& refusal)
{
    return pageOf(u"Request Refused"_s, html("<p>%1</p>\n", QString::fromStdString(refusal.text)));
}

std::string contentSecurityPolicy()
{
    const QByteArray style = QCryptographicHash::hash(QByteArrayView(kStyle), QCryptographicHash::Sha256);
    return "default-src 'none'; style-src 'sha256-" + style.toBase64().toStdString() +
           "'; form-action 'self'; frame-ancestors 'none'; base-uri 'none'";
}

}  // namespace tessera_local
