// Finds a row of a tree or a list by typed text.
#pragma once

#include <QElapsedTimer>
#include <QString>

class QAbstractItemView;

// Role of a row's first column: text that the row is found by in addition to the texts of its columns.
inline constexpr int kFindRole = Qt::UserRole + 16;

// Characters typed without a pause (QApplication::keyboardInputInterval()) form one search text. A row matches if one
// of its columns or its kFindRole contains the text, ignoring case. The search starts at the current row and continues
// from the first row after the last one. Repeating one character selects the next match, without regard to pauses, so a
// search text cannot start with a doubled character.
//
// Visible rows, which include those of open branches, come first. Only if none of them matches, the rows of closed
// branches count; the branch of the row found is opened. A text without a match changes nothing.
class RowFind {
public:
    // Adds `typed`, the text of a key event, to the search text and makes the matching row the view's current one.
    void type(QAbstractItemView& view, const QString& typed);

private:
    QString m_text;
    QElapsedTimer m_sinceLastKey;
};
