#include "ui/placeholder_page.h"

#include "ui/push_button.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

PlaceholderPage::PlaceholderPage(QWidget* parent)
    : QWidget(parent)
    , m_label(new QLabel)
    , m_keyButton(pushButton(tr("Enter My API Key"), QStringLiteral("enterKeyButton")))
{
    setObjectName(QStringLiteral("placeholderPage"));
    m_label->setObjectName(QStringLiteral("placeholderLabel"));
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setBuddy(m_keyButton);
    setFocusProxy(m_keyButton);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    layout->addWidget(m_label);
    layout->addWidget(m_keyButton, 0, Qt::AlignHCenter);
    layout->addStretch();

    connect(m_keyButton, &QPushButton::clicked, this, &PlaceholderPage::keyDialogRequested);
    setHasKey(false);
}

void PlaceholderPage::setHasKey(bool hasKey)
{
    m_label->setText(hasKey ? tr("Please Open A Disc")
                            : tr("Tessera API key is required.\nPlease enter your API key to continue."));
    m_keyButton->setHidden(hasKey);
}
