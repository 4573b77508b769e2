#include "ui/message_box.h"

#include <QCoreApplication>
#include <QMessageBox>

namespace messagebox {

namespace {

QString bounded(const QString& text)
{
    qsizetype end = qMin(text.size(), kTextLimit);
    qsizetype lineEnd = -1;
    for (qsizetype line = 0; line < kLineLimit; ++line) {
        lineEnd = text.indexOf(QLatin1Char('\n'), lineEnd + 1);
        if (lineEnd < 0 || lineEnd >= end) { break; }
    }
    if (lineEnd >= 0) { end = qMin(end, lineEnd); }
    if (end == text.size()) { return text; }
    if (end > 0 && text.at(end - 1).isHighSurrogate()) { --end; }
    return text.first(end) + QChar(0x2026);
}

QMessageBox::StandardButton show(QMessageBox::Icon icon, QWidget* parent, const QString& title,
                                 const QString& text, QMessageBox::StandardButtons buttons,
                                 QMessageBox::StandardButton defaultButton)
{
    QMessageBox box(icon, title, QString(), buttons, parent);
    box.setObjectName(QStringLiteral("messageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(bounded(text));
    box.setDefaultButton(defaultButton);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

}  // namespace

void warning(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Warning, parent, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

void critical(QWidget* parent, const QString& title, const QString& text)
{
    show(QMessageBox::Critical, parent, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

bool ask(QWidget* parent, const QString& title, const QString& text)
{
    return show(QMessageBox::Question, parent, title, text, QMessageBox::Yes | QMessageBox::No,
                QMessageBox::No) == QMessageBox::Yes;
}

QString translated(const QString& message)
{
    // A service's text may be of any size and hold anything; the program's own sentences are short and plain.
    if (message.size() > kTextLimit || message.contains(QChar(u'\0'))) { return message; }
    return QCoreApplication::translate("Messages", message.toUtf8().constData());
}

}  // namespace messagebox
