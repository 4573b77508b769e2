#pragma once

#include <QString>

class QPushButton;

// Makes a push button whose text is also its accessible name, and which Return presses, as in dialogs. The caller adds
// it to a layout, which gives it a parent.
[[nodiscard]] QPushButton* pushButton(const QString& text, const QString& objectName);
