#include "ui/disabled_button.h"

#include <QPushButton>

QPushButton* disabledButton(const QString& text, const QString& objectName)
{
    auto* button = new QPushButton(text);
    button->setObjectName(objectName);
    button->setAccessibleName(text);
    button->setAutoDefault(true);  // Return presses it, as in dialogs
    button->setEnabled(false);
    return button;
}
