// Opens a disc by menu, by drop or at start, and shows the result of the scan.
#include "scan/disc_path.h"
#include "scan/error_result.h"
#include "ui/configurations_page.h"
#include "ui/main_window.h"
#include "ui/message_box.h"
#include "ui/plain_text.h"
#include "ui/titles_page.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeData>

namespace {

// The path of the dragged local directory, file or drive; empty for anything else and for more than one.
QString draggedDisc(const QMimeData* data)
{
    const QList<QUrl> urls = data->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile()) { return {}; }
    const QString path = urls.first().toLocalFile();
    const QFileInfo info(path);
    return info.isDir() || info.isFile() || scan::isBlockDevice(path) ? path : QString();
}

// The disc's name for the window's title: its own name if it has one, otherwise that of the file or folder opened.
QString displayName(const QString& path, const DiscScanResult& result)
{
    if (result.discType == DiscType::None) { return {}; }
    if (!result.blurayDiscName.isEmpty()) { return result.blurayDiscName; }
    QFileInfo opened(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    if (!opened.isDir()) { return opened.completeBaseName(); }
    if (scan::isNavigationDirectory(opened.fileName())) { return QFileInfo(opened.path()).fileName(); }
    return opened.fileName();
}

// One line for each reader that gave a reason for refusing the path.
QString readerDetails(const QList<Message>& readerErrors)
{
    const QStringList lines = {MainWindow::tr("Blu-ray: %1"), MainWindow::tr("DVD: %1")};
    QStringList details;
    for (qsizetype i = 0; i < qMin(lines.size(), readerErrors.size()); ++i) {
        if (!readerErrors.at(i).isEmpty()) {
            details.append(lines.at(i).arg(readerErrors.at(i).translated()));
        }
    }
    return details.join(QLatin1Char('\n'));
}

}  // namespace

void MainWindow::openDiscDirectory()
{
    if (!hasKey()) {
        showApiKeyDialogSlot();
        return;
    }
    const QString path = QFileDialog::getExistingDirectory(
        this, tr("Open Disc Directory"), {}, QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (path.isEmpty()) { return; }
    if (!QDir(path).exists()) {
        messagebox::warning(this, tr("Invalid Directory"), tr("The selected directory does not exist."));
        return;
    }
    openDisc(path);
}

void MainWindow::openDiscIso()
{
    if (!hasKey()) {
        showApiKeyDialogSlot();
        return;
    }
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open Disc ISO"), {}, tr("Disc Images (*.iso);;All Files (*)"));
    if (!path.isEmpty()) { openDisc(path); }
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (hasKey() && !m_working && !draggedDisc(event->mimeData()).isEmpty()) {
        event->acceptProposedAction();
    }
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const QString path = draggedDisc(event->mimeData());
    if (!hasKey() || m_working || path.isEmpty()) { return; }
    event->acceptProposedAction();
    // Queued, because the source of the drop waits until this handler returns.
    QMetaObject::invokeMethod(
        this, [this, path] { openDisc(path); }, Qt::QueuedConnection);
}

void MainWindow::openDisc(const QString& given)
{
    if (m_working) { return; }  // a drop or a choice that was delivered after the busy dialog opened
    const auto [path, problem] = scan::discPathOf(given);
    if (!problem.isEmpty()) {
        populate(given, scan::errorResult(problem));
        return;
    }
    stopMonitoring();  // before the scan, whose own reading must not be reported
    DiscScanResult result = scanDiscWithProgress(path, false);
    if (!m_closeRequested && !result.readWarnings.isEmpty()) {
        QStringList warnings;
        for (const Message& warning : result.readWarnings) {
            warnings.append(warning.translated());
        }
        messagebox::warning(this, tr("Disc Read Error"), warnings.join(QLatin1Char('\n')));
    }
    const bool isUnknown = result.ok != 0 && !result.inDatabase;
    if (isUnknown && !m_closeRequested &&
        messagebox::ask(
            this, tr("Add disc to Tessera?"),
            tr("This disc is not in Tessera. Do you want to add its technical signature? If you don't "
               "add it, you won't be able to create a configuration for this disc."))) {
        result = scanDiscWithProgress(path, true);
    }
    populate(path, result);
}

void MainWindow::populate(const QString& path, const DiscScanResult& result)
{
    stopMonitoring();
    m_discPath = path;
    m_result = result;
    m_discLoaded = result.discType != DiscType::None;
    applyEnableRule();

    QString name = plaintext::oneLine(displayName(path, result), messagebox::kTextLimit);
    if (!name.isEmpty()) {
        // In a window's title the toolkit replaces "[*]" by the mark of a modified document, and "[*][*]" by "[*]".
        name.replace(QLatin1StringView("[*]"), QLatin1StringView("[*][*]"));
        setWindowTitle(tr("Platterscope - %1").arg(name));
    }
    m_configurationsPage->showDisc();
    showServiceMessage(result);
    m_titlesPage->showTitles(result);
    showPage(m_discLoaded ? Page::Titles : Page::Placeholder);
    if (m_discLoaded) { m_titlesPage->setFocus(); }
}

void MainWindow::showServiceMessage(const DiscScanResult& result)
{
    if (m_closeRequested || result.error.isEmpty()) { return; }
    const QString message = result.error.translated();
    if (result.ok == 0) {
        messagebox::critical(this, tr("Tessera Error"), message, readerDetails(result.readerErrors));
    } else {
        messagebox::warning(this, tr("Tessera Message"), message);
    }
}

DiscScanResult MainWindow::scanDiscWithProgress(const QString& path, bool addIfMissing)
{
    return runWithBusyDialog(tr("Loading Disc Data"), tr("Scanning disc data and contacting Tessera"),
                             [key = m_scanner->apiKey(), path, addIfMissing] {
                                 DiscScanner scanner;
                                 scanner.setApiKey(key);
                                 return scanner.scan(path, addIfMissing);
                             });
}
