// Reloading the configurations of the open disc.
#include "ui/configurations_page.h"
#include "ui/main_window.h"
#include "ui/message_box.h"

void MainWindow::refreshConfigurations()
{
    if (m_working) { return; }
    if (!hasKey()) {
        showApiKeyDialogSlot();
        return;
    }
    const DiscScanResult result = reloadConfigurationsWithProgress(m_result);
    if (result.ok == 0) {  // the current configurations stay
        showServiceMessage(result);
        return;
    }
    const bool isNewMessage = result.error.english() != m_result.error.english();
    m_result = result;
    m_configurationsPage->showDisc();
    applyEnableRule();
    if (isNewMessage) { showServiceMessage(result); }
}

DiscScanResult MainWindow::reloadConfigurationsWithProgress(const DiscScanResult& current)
{
    return runWithBusyDialog(tr("Refreshing Configurations"), tr("Downloading configurations from Tessera"),
                             [key = m_scanner->apiKey(), current] {
                                 DiscScanner scanner;
                                 scanner.setApiKey(key);
                                 return scanner.refreshConfigurations(current);
                             });
}
