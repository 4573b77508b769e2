// A sentence for the user, kept as its parts until it is logged or shown: the log, the results and the files get
// English, the window the user's language.
#pragma once

#include <QString>
#include <QStringList>

class Message {
public:
    // No message.
    Message() = default;

    // `source` is the English sentence, a literal marked by QT_TRANSLATE_NOOP("Messages", ...). Its places %1 and %2
    // take the arguments, which are the same in every language: paths, numbers, names.
    Message(const char* source, QStringList arguments = {});  // NOLINT(google-explicit-constructor)

    // A text that the program has not written, such as a reply of the service.
    [[nodiscard]] static Message verbatim(const QString& text);

    [[nodiscard]] bool isEmpty() const { return m_source == nullptr; }
    [[nodiscard]] QString english() const;
    [[nodiscard]] QString translated() const;

private:
    [[nodiscard]] QString filledIn(const QString& sentence) const;

    const char* m_source = nullptr;
    QStringList m_arguments;
};
