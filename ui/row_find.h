// Finding a row of a tree or a list by typing a part of what it says.
#pragma once

#include <QElapsedTimer>
#include <QString>

class QAbstractItemView;

// Role of the first column of a row: text that the row is found by beyond what its columns show.
inline constexpr int kFindRole = Qt::UserRole + 16;

// What is typed without a pause (the toolkit's, QApplication::keyboardInputInterval()) is one text. It is looked for
// without regard to case anywhere in the texts of a row's columns and in its kFindRole, from the current row on and
// then from the first row to the current one. The same character again, and again, at whatever pace, goes on to the
// next row that has it; so a text cannot begin with one character twice, and is found by what follows.
//
// Rows in sight, which those of open branches are, come first; only where none of them has the text are the closed
// branches looked into, and the branch of the row found is opened. A text that no row has changes nothing.
class RowFind {
public:
    // Takes what a key has typed and makes the row that it leads to the view's current one.
    void type(QAbstractItemView& view, const QString& typed);

private:
    QString m_text;
    QElapsedTimer m_sinceLastKey;
};
