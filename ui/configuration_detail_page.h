// One configuration: its titles, and what it and the disc say of the title selected.
#pragma once

#include "scan/disc_scan_result.h"

#include <QWidget>

class QTextEdit;
class QTreeWidget;
class QTreeWidgetItem;

class ConfigurationDetailPage : public QWidget {
    Q_OBJECT

public:
    explicit ConfigurationDetailPage(QWidget* parent = nullptr);

    // Shows the configuration in this place of the disc's list, with its first title selected.
    void showConfiguration(const DiscScanResult& disc, qsizetype index);

    // Puts the keyboard into the tree. The page has no focus proxy: with one, Tab would pass over what is before it.
    void takeFocus();

Q_SIGNALS:
    void listRequested();

protected:
    // Escape leads back to the list, from wherever the focus is.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void createTree();
    void showDetails(const QTreeWidgetItem* row);

    DiscScanResult m_disc;
    service::DiscConfiguration m_configuration;
    QTreeWidget* m_tree;
    QTextEdit* m_details;
};
