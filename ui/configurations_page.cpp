#include "ui/configurations_page.h"

#include "ui/configuration_detail_page.h"
#include "ui/configuration_list_page.h"

ConfigurationsPage::ConfigurationsPage(const DiscScanResult& disc, QWidget* parent)
    : QStackedWidget(parent)
    , m_listPage(new ConfigurationListPage(disc))
    , m_detailPage(new ConfigurationDetailPage(disc))
{
    setObjectName(QStringLiteral("configurationsPage"));
    addWidget(m_listPage);
    addWidget(m_detailPage);
    connect(m_listPage, &ConfigurationListPage::refreshRequested, this,
            &ConfigurationsPage::refreshRequested);
    connect(m_listPage, &ConfigurationListPage::viewRequested, this, &ConfigurationsPage::showConfiguration);
    connect(m_detailPage, &ConfigurationDetailPage::listRequested, this, &ConfigurationsPage::showList);
}

void ConfigurationsPage::showDisc()
{
    m_listPage->showDisc();
    setCurrentWidget(m_listPage);
}

void ConfigurationsPage::setRefreshEnabled(bool enabled)
{
    m_listPage->setRefreshEnabled(enabled);
}

void ConfigurationsPage::takeFocus()
{
    if (currentWidget() == m_detailPage) {
        m_detailPage->takeFocus();
    } else {
        m_listPage->setFocus();
    }
}

void ConfigurationsPage::showList()
{
    setCurrentWidget(m_listPage);
    m_listPage->setFocus();
}

void ConfigurationsPage::showConfiguration(qsizetype index)
{
    setCurrentWidget(m_detailPage);
    m_detailPage->showConfiguration(index);
}
