// The Help menu: the About box, the Configuration Library box and the documents that they open.
#include "base/identity.h"
#include "ui/document.h"
#include "ui/main_window.h"
#include "ui/message_box.h"

#include <QMessageBox>
#include <QPushButton>

namespace {

// Shows a box of rich text with the buttons `buttonText` and Close. Returns whether the first was pressed.
bool offerDocument(QWidget* parent, const QString& title, const QString& richText, const QString& buttonText)
{
    QMessageBox box(QMessageBox::NoIcon, title, richText, QMessageBox::NoButton, parent);
    box.setObjectName(QStringLiteral("helpBox"));
    box.setTextFormat(Qt::RichText);
    const QAbstractButton* openButton = box.addButton(buttonText, QMessageBox::ActionRole);
    QPushButton* closeButton = box.addButton(QMessageBox::Close);
    box.setDefaultButton(closeButton);
    box.setEscapeButton(closeButton);
    box.exec();
    return box.clickedButton() == openButton;
}

QString paragraphs(const QString& heading, const QStringList& texts)
{
    QString html = QStringLiteral("<h2>%1</h2>").arg(heading.toHtmlEscaped());
    for (const QString& text : texts) {
        html += QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped());
    }
    return html;
}

}  // namespace

void MainWindow::showAboutDialog()
{
    const QStringList texts = {
        tr("Version %1").arg(QString::fromUtf8(identity::kVersion)),
        tr("Platterscope helps you explore the technical makeup of DVD and Blu-ray discs. Open a disc ISO or "
           "directory to review its titles, configurations, and Blu-ray access activity."),
        tr("Technical disc-signature lookups are powered by Vantor's Tessera."),
        tr("Platterscope uses Qt under the GNU Lesser General Public License version 3."),
        tr("Third-party notices, license texts, and Qt source information are included with this "
           "application."),
    };
    if (!offerDocument(this, tr("About Platterscope"), paragraphs(tr("Platterscope"), texts),
                       tr("Open Third-Party Notices"))) {
        return;
    }
    const QString path =
        document::path(QStringLiteral("THIRD_PARTY_NOTICES.txt"), document::Place::BesideExecutable);
    if (!document::open(path)) {
        messagebox::warning(this, tr("Third-Party Notices"),
                            tr("The third-party notices file could not be opened:\n%1").arg(path));
    }
}

void MainWindow::showConfigurationLibraryDialog()
{
    const QStringList texts = {
        tr("The Configuration Library documentation describes the technical disc configuration data "
           "available through Platterscope and Vantor's Tessera."),
        tr("Vantor and Platterscope are intended solely for lawful personal, archival, and technical use of "
           "media you are authorized to access. Vantor does not endorse, encourage, facilitate, or condone "
           "piracy, copyright infringement, or the unauthorized copying, distribution, or access of "
           "protected content. You are responsible for ensuring that your use complies with applicable laws "
           "and the rights of copyright holders."),
    };
    const QString title = tr("Configuration Library");
    if (offerDocument(this, title, paragraphs(title, texts), tr("Open Documentation"))) {
        openConfigurationLibraryDocumentation();
    }
}

void MainWindow::openConfigurationLibraryDocumentation()
{
    const QString path =
        document::path(QStringLiteral("CONFIGURATION_LIBRARY.md"), document::Place::SharedDocuments);
    if (!document::open(path)) {
        messagebox::warning(this, tr("Configuration Library Documentation"),
                            tr("The configuration library documentation could not be opened:\n%1").arg(path));
    }
}
