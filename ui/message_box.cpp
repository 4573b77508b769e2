#include "ui/message_box.h"

#include "ui/plain_text.h"

#include <QMessageBox>
#include <QStringList>

#include <limits>

namespace messagebox {

namespace {

// The most characters in a box's details: 64 KiB of plain English with the ellipsis.
constexpr qsizetype kDetailsLimit = 64 * 1024 - 1;
constexpr qsizetype kAnyLines = std::numeric_limits<qsizetype>::max();

// The part of the text that the box leaves out.
QString restOf(const QString& text, const QString& shown)
{
    const QString whole = plaintext::bounded(text, kTextLimit + kDetailsLimit, kAnyLines);
    if (whole == shown) { return {}; }
    const QString rest = whole.sliced(shown.size() - 1);  // the last character shown is the ellipsis
    return rest.startsWith(QLatin1Char('\n')) ? rest.sliced(1) : rest;
}

QMessageBox::StandardButton show(QMessageBox::Icon icon, QWidget* parent, const QString& title,
                                 const QString& text, QMessageBox::StandardButtons buttons,
                                 QMessageBox::StandardButton defaultButton, const QString& details = {})
{
    QMessageBox box(icon, title, QString(), buttons, parent);
    box.setObjectName(QStringLiteral("messageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(plaintext::bounded(text, kTextLimit, kLineLimit));
    QStringList parts = {restOf(text, box.text()), details};
    parts.removeAll(QString());
    box.setDetailedText(plaintext::bounded(parts.join(QLatin1Char('\n')), kDetailsLimit, kAnyLines));
    box.setDefaultButton(defaultButton);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

}  // namespace

void information(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Information, parent, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

void warning(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Warning, parent, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

void critical(QWidget* parent, const QString& title, const QString& text, const QString& details)
{
    show(QMessageBox::Critical, parent, title, text, QMessageBox::Ok, QMessageBox::Ok, details);
}

bool ask(QWidget* parent, const QString& title, const QString& text)
{
    return show(QMessageBox::Question, parent, title, text, QMessageBox::Yes | QMessageBox::No,
                QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace messagebox
