#include "ui/push_button.h"

#include <QPushButton>

QPushButton* pushButton(const QString& text, const QString& objectName)
{
    auto* button = new QPushButton(text);
    button->setObjectName(objectName);
    button->setAccessibleName(text);
    button->setAutoDefault(true);
    return button;
}
