// The API key: loading it at start, the key dialog, checking and storing.
#include "base/identity.h"
#include "service/api_key_store.h"
#include "service/authentication.h"
#include "service/service_address.h"
#include "ui/main_window.h"
#include "ui/message_box.h"

#include <QInputDialog>
#include <QLineEdit>
#include <QScreen>
#include <QVersionNumber>

namespace {

// Whether `candidate` is a higher version number than `current`. Ignores surrounding white space, one leading "v", a
// suffix after the numbers, and trailing zeros.
bool isNewerVersion(const QString& candidate, const QString& current)
{
    QString numbers = candidate.trimmed();
    if (numbers.startsWith(QLatin1Char('v'))) { numbers.remove(0, 1); }
    return QVersionNumber::fromString(numbers).normalized() >
           QVersionNumber::fromString(current).normalized();
}

// Wide enough to show a key of 64 characters and, with the width of 6 more, the margins and the frame.
QSize keyDialogSize(const QInputDialog& dialog)
{
    constexpr int kShownCharacters = 64 + 6;
    const int width = dialog.fontMetrics().horizontalAdvance(QString(kShownCharacters, QLatin1Char('X')));
    return {qMin(width, dialog.screen()->availableSize().width()), dialog.sizeHint().height()};
}

}  // namespace

void MainWindow::loadStoredKey()
{
    QString key;
    if (!service::loadApiKey(&key, &m_storedKeyProblem)) { return; }
    if (!service::isConfiguredKey(key)) {
        m_storedKeyProblem = service::kApiKeyNotConfigured;
        return;
    }
    // Only accepted keys are stored, so a stored key counts as accepted until the service refuses it.
    m_scanner->setApiKey(key);
    m_apiKeyAccepted = true;
}

void MainWindow::startUp()
{
    const service::ServiceAddress address = service::currentServiceAddress();
    if (!address.isUsable()) {
        messagebox::warning(this, tr("Tessera Service Address"), address.problem.translated());
    } else if (hasKey()) {
        authenticateAndSaveApiKey(m_scanner->apiKey());
    } else {
        messagebox::warning(this, tr("API Key Security"), m_storedKeyProblem.translated());
        showApiKeyDialogSlot();
    }
    if (hasKey() && !m_closeRequested && !m_discToOpenAtStart.isEmpty()) { openDisc(m_discToOpenAtStart); }
}

void MainWindow::showApiKeyDialogSlot()
{
    if (m_working) { return; }
    QInputDialog dialog(this);
    dialog.setObjectName(QStringLiteral("apiKeyDialog"));
    dialog.setWindowTitle(tr("Vantor API Key"));
    dialog.setLabelText(tr("Enter your Vantor API key:"));
    dialog.setTextEchoMode(QLineEdit::Normal);
    dialog.setTextValue(m_scanner->apiKey());
    dialog.resize(keyDialogSize(dialog));
    if (dialog.exec() == QDialog::Accepted) { authenticateAndSaveApiKey(dialog.textValue()); }
}

bool MainWindow::authenticateAndSaveApiKey(const QString& key)
{
    const QString failureTitle = tr("Tessera Authentication Failed");
    const QString newKey = key.trimmed();
    if (!service::isAllowedKeyText(newKey)) {
        messagebox::critical(this, failureTitle, tr("The API key contains characters that are not allowed."));
        return false;
    }
    const QString formerKey = m_scanner->apiKey();
    const bool wasAccepted = m_apiKeyAccepted;
    setKey(newKey, false);

    const Message fileProblem = service::apiKeyFileProblem();
    if (!fileProblem.isEmpty()) {
        messagebox::warning(this, tr("API Key Security"), fileProblem.translated());
    }
    const auto outcome =
        runWithBusyDialog(tr("Connecting to Tessera"), tr("Authenticating with Tessera"), [newKey] {
            DiscScanner scanner;
            scanner.setApiKey(newKey);
            return scanner.authenticate();
        });
    if (!outcome.ok) {
        setKey(formerKey, wasAccepted);
        messagebox::critical(this, failureTitle, outcome.error.translated());
        return false;
    }
    showUpdateNotice(outcome.user.latestVersion);
    Message saveError;
    if (!service::saveApiKey(newKey, &saveError)) {
        setKey(formerKey, wasAccepted);
        messagebox::critical(this, tr("API Key Security"), saveError.translated());
        return false;
    }
    setKey(newKey, true);
    return true;
}

void MainWindow::showUpdateNotice(const QString& latestVersion)
{
    const QString running = QString::fromUtf8(identity::kVersion);
    if (m_closeRequested || !isNewerVersion(latestVersion, running)) { return; }
    messagebox::information(this, tr("Platterscope Update Available"),
                            tr("A new version of Platterscope is available for download.\n\nCurrent version: "
                               "%1\nAvailable version: %2")
                                .arg(running, latestVersion));
}

void MainWindow::setKey(const QString& key, bool accepted)
{
    m_scanner->setApiKey(key);
    m_apiKeyAccepted = accepted;
    applyEnableRule();
}
