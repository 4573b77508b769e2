#include "tools/tessera_local/configuration_page.h"

#include <QByteArrayView>
#include <QCryptographicHash>
#include <QStringList>

#include <algorithm>

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

// A page in the making. Markup comes from literals alone; every other text is escaped on its way in.
class Html {
public:
    template <std::size_t size>
    Html& operator<<(const char (&markup)[size])
    {
        m_text += QLatin1String(markup);
        return *this;
    }
    Html& operator<<(QString text)
    {
        const auto cannotStand = [](QChar c) { return c.category() == QChar::Other_Control && c != u'\n'; };
        std::replace_if(text.begin(), text.end(), cannotStand, QChar(QChar::ReplacementCharacter));
        m_text += text.toHtmlEscaped();
        return *this;
    }

    std::string text() const { return m_text.toStdString(); }

private:
    QString m_text;
};

void beginPage(Html& html, const QString& title)
{
    html << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
         << title << " - Tessera</title>\n<style>" << kStyle << "</style>\n</head>\n<body>\n<main>\n<h1>"
         << title << "</h1>\n";
}

void endPage(Html& html)
{
    html << "</main>\n</body>\n</html>\n";
}

struct Control {
    FieldKind kind = FieldKind::Line;
    QString field;
    QString label;
    QString value;
    int maximumLength = 0;
    QString hint = {};
    bool isRequired = false;
    bool isFocused = false;
};

void writeTypes(Html& html, const QString& value)
{
    for (std::size_t i = 0; i < kTitleTypes.size(); ++i) {
        const QString number = QString::number(i);
        html << "<option value=\"" << number << "\"";
        if (number == value) { html << " selected"; }
        html << ">" << QLatin1String(kTitleTypes[i]) << "</option>\n";
    }
}

// The attributes that every kind of control has. What describes it stands before it.
void writeAttributes(Html& html, const Control& control, bool hasProblem)
{
    html << " id=\"" << control.field << "\" name=\"" << control.field << "\"";
    if (control.isRequired) { html << " required"; }
    if (control.isFocused) { html << " autofocus"; }
    if (hasProblem) { html << " aria-invalid=\"true\""; }
    QStringList described;
    if (hasProblem) { described << control.field + QLatin1String("_problem"); }
    if (!control.hint.isEmpty()) { described << control.field + QLatin1String("_hint"); }
    if (!described.isEmpty()) { html << " aria-describedby=\"" << described.join(u' ') << "\""; }
    // The length of a number is judged with its value.
    if (control.kind == FieldKind::Number) { html << " inputmode=\"numeric\""; }
    if (control.kind == FieldKind::Line || control.kind == FieldKind::Lines) {
        html << " maxlength=\"" << QString::number(control.maximumLength) << "\"";
    }
}

void writeControl(Html& html, const Control& control, const std::vector<FormProblem>& problems)
{
    const auto problem = std::find_if(problems.begin(), problems.end(),
                                      [&](const FormProblem& each) { return each.field == control.field; });
    const bool hasProblem = problem != problems.end();
    html << "<label for=\"" << control.field << "\">" << control.label << "</label>\n";
    if (!control.hint.isEmpty()) {
        html << "<p class=\"hint\" id=\"" << control.field << "_hint\">" << control.hint << "</p>\n";
    }
    if (hasProblem) {
        html << "<p class=\"problem\" id=\"" << control.field << "_problem\">" << problem->text << "</p>\n";
    }
    if (control.kind == FieldKind::Type) {
        html << "<select";
        writeAttributes(html, control, hasProblem);
        html << ">\n";
        writeTypes(html, control.value);
        html << "</select>\n";
    } else if (control.kind == FieldKind::Lines) {
        html << "<textarea rows=\"3\"";
        writeAttributes(html, control, hasProblem);
        html << ">" << control.value << "</textarea>\n";
    } else {
        html << "<input type=\"text\"";
        writeAttributes(html, control, hasProblem);
        html << " value=\"" << control.value << "\">\n";
    }
}

void writeProblems(Html& html, const std::vector<FormProblem>& problems, const QString& failure)
{
    if (problems.empty() && failure.isEmpty()) { return; }
    html << "<div id=\"problems\" role=\"alert\" tabindex=\"-1\" autofocus>\n"
            "<p>The configuration was not saved yet:</p>\n<ul>\n";
    if (!failure.isEmpty()) { html << "<li>" << failure << "</li>\n"; }
    for (const FormProblem& problem : problems) {
        html << "<li><a href=\"#" << problem.field << "\">" << problem.label << ": " << problem.text
             << "</a></li>\n";
    }
    html << "</ul>\n</div>\n";
}

void writeForm(Html& html, const FormPage& page)
{
    html << "<form id=\"configuration\" method=\"post\" action=\""
         << QString::fromStdString(formAddress(page.kind, page.discId)) << "\">\n";
    writeControl(html,
                 {.field = QStringLiteral("disc_name"),
                  .label = QStringLiteral("Disc name"),
                  .value = page.form.discName,
                  .maximumLength = kMaximumDiscName,
                  .isRequired = true},
                 page.problems);
    writeControl(html,
                 {.field = QStringLiteral("language_code"),
                  .label = QStringLiteral("Language code"),
                  .value = page.form.languageCode,
                  .maximumLength = kMaximumLanguageCode,
                  .hint = QStringLiteral("The language of your texts, for example en or pt-BR."),
                  .isRequired = true},
                 page.problems);
    for (std::size_t number = 1; number <= page.form.rows.size(); ++number) {
        html << "<fieldset>\n<legend>Entry " << QString::number(number) << "</legend>\n";
        for (const TitleColumn& column : titleColumns(page.kind)) {
            const bool isFocused = number == page.focusedRow && column.value == &TitleRow::id;
            writeControl(html,
                         {.kind = column.kind,
                          .field = fieldName(number, column),
                          .label = QLatin1String(column.label),
                          .value = page.form.rows[number - 1].*column.value,
                          .maximumLength = column.high,
                          .hint = QLatin1String(column.hint),
                          .isFocused = isFocused},
                         page.problems);
        }
        html << "</fieldset>\n";
    }
    html << "<button id=\"save\" name=\"action\" value=\"save\">Save Configuration</button>\n"
            "<button id=\"more\" name=\"action\" value=\"more\" formnovalidate";
    if (page.form.rows.size() >= kMaximumRows) { html << " disabled"; }
    html << ">Add More Titles</button>\n</form>\n";
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
    Html html;
    beginPage(html, QStringLiteral("New Configuration"));
    if (page.isSaved) {
        html << "<p id=\"saved\" role=\"status\">"
                "The configuration was saved. Press Refresh in Platterscope to see it.</p>\n";
    }
    writeProblems(html, page.problems, page.failure);
    html << "<p>" << QLatin1String(kindTitle(page.kind)) << ", disc ID " << QString::number(page.discId)
         << "</p>\n<p>A disc name and a language code are needed, and "
         << (page.kind == DiscKind::Dvd ? QStringLiteral("the title number")
                                        : QStringLiteral("the playlist ID"))
         << " of each entry. Entries left empty are passed over.</p>\n";
    writeForm(html, page);
    endPage(html);
    return html.text();
}

std::string htmlOf(const Refusal& refusal)
{
    Html html;
    beginPage(html, QStringLiteral("Request Refused"));
    html << "<p>" << QString::fromStdString(refusal.text) << "</p>\n";
    endPage(html);
    return html.text();
}

std::string contentSecurityPolicy()
{
    const QByteArray style = QCryptographicHash::hash(QByteArrayView(kStyle), QCryptographicHash::Sha256);
    return "default-src 'none'; style-src 'sha256-" + style.toBase64().toStdString() +
           "'; form-action 'self'; frame-ancestors 'none'; base-uri 'none'";
}

}  // namespace tessera_local
