// A push button that stands in its place before anything can be done with it.
#pragma once

#include <QString>

class QPushButton;

// Disabled, with its text as its accessible name. The caller gives it a parent by putting it into a layout.
[[nodiscard]] QPushButton* disabledButton(const QString& text, const QString& objectName);
