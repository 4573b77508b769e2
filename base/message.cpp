#include "base/message.h"

#include <QCoreApplication>

#include <utility>

Message::Message(const char* source, QStringList arguments)
    : m_source(source)
    , m_arguments(std::move(arguments))
{}

Message Message::verbatim(const QString& text)
{
    return text.isEmpty() ? Message() : Message("%1", {text});
}

QString Message::english() const
{
    return filledIn(QString::fromUtf8(m_source));
}

QString Message::translated() const
{
    return isEmpty() ? QString() : filledIn(QCoreApplication::translate("Messages", m_source));
}

// An argument may hold "%1" or "%2" itself, so both places are filled in at once.
QString Message::filledIn(const QString& sentence) const
{
    switch (m_arguments.size()) {
    case 0:
        return sentence;
    case 1:
        return sentence.arg(m_arguments.first());
    default:
        return sentence.arg(m_arguments.at(0), m_arguments.at(1));
    }
}
