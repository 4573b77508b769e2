// What assistive technology is told of every page and dialog: names, roles, relations and rows.
#include "tests/support/sample_bluray.h"
#include "tests/ui/window_fixture.h"

#include <QAccessible>
#include <QMenuBar>
#include <QSet>

#include <array>

using testsupport::DiscForm;

class AccessibilityTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyPageIsNamedThroughout();
    void everyDialogIsNamedThroughout();
    void partsHaveTheirRolesAndLabels();
    void treesTellTheirRows();
};

namespace {

constexpr char kBlurayReply[] = R"({"Disc ID": 17, "Configurations": [
    {"UID": 2, "Language Code": "de", "Added By Username": "bert", "Data": "{\"disc_name\": \"The Movie\",
      \"titles\": [{\"id\": 800, \"name\": \"Film\"}]}"}]})";

// The window with the sample Blu-ray open.
struct BlurayFixture : WindowFixture {
    BlurayFixture()
        : WindowFixture(QStringLiteral("key"))
    {
        server.playFor("/api/tessera/bluray/find/", {.body = kBlurayReply});
        if (!startWithKey()) { qFatal("the window does not start"); }
        openDirectory(testsupport::sampleBluray().write(DiscForm::Directory, folder));
    }

    void openConfiguration() const
    {
        trigger("configurationsAction");
        auto* list = part<QTreeWidget>("configurationList");
        list->setCurrentItem(list->topLevelItem(0));
        click("viewConfigurationButton");
    }
};

QString roleOf(const QAccessibleInterface& part)
{
    return QString::fromLatin1(QMetaEnum::fromType<QAccessible::Role>().valueToKey(part.role()));
}

QString nameOf(const QAccessibleInterface& part)
{
    return part.text(QAccessible::Name);
}

// Rows may well read alike, and so may the cells of one.
bool isRowOrCell(const QAccessibleInterface& part)
{
    static const QSet<QAccessible::Role> kRoles = {QAccessible::TreeItem, QAccessible::Cell,
                                                   QAccessible::ListItem, QAccessible::Row};
    return kRoles.contains(part.role());
}

// Adds what is wrong with the part and everything in it that is shown, and counts what can have the focus.
void check(const QAccessibleInterface& part, QStringList& problems, int& focusable)
{
    static const QSet<QAccessible::Role> kNoControl = {QAccessible::NoRole, QAccessible::Client,
                                                       QAccessible::Pane};
    const auto* widget = qobject_cast<const QWidget*>(part.object());
    const bool isFrame = widget != nullptr && widget->focusProxy() != nullptr;  // the focus goes on into it
    const QString what = roleOf(part) + QStringLiteral(" \"") + nameOf(part) + QStringLiteral("\"");
    if (part.state().focusable) {
        ++focusable;
        if (nameOf(part).trimmed().isEmpty() && !isRowOrCell(part)) {
            problems.append(QStringLiteral("no name: ") + what);
        }
        if (kNoControl.contains(part.role()) && !isFrame) {
            problems.append(QStringLiteral("no role: ") + what);
        }
    }
    QSet<QString> siblings;
    for (int i = 0; i < part.childCount(); ++i) {
        const QAccessibleInterface* child = part.child(i);
        if (child == nullptr || child->state().invisible) { continue; }
        const QString key = roleOf(*child) + QLatin1Char(' ') + nameOf(*child);
        if (!nameOf(*child).isEmpty() && !isRowOrCell(*child) && siblings.contains(key)) {
            problems.append(QStringLiteral("twice below ") + what + QStringLiteral(": ") + key);
        }
        siblings.insert(key);
        check(*child, problems, focusable);
    }
}

// What is wrong with a window or dialog as it stands; it must have something to be at with the keyboard.
QStringList problemsOf(QWidget* window)
{
    const QAccessibleInterface* root = QAccessible::queryAccessibleInterface(window);
    QStringList problems;
    int focusable = 0;
    if (root == nullptr) { return {QStringLiteral("nothing there")}; }
    check(*root, problems, focusable);
    if (window->windowTitle().isEmpty() || nameOf(*root) != window->windowTitle()) {
        problems.append(QStringLiteral("the window's name: ") + nameOf(*root));
    }
    if (focusable == 0) { problems.append(QStringLiteral("nothing can have the focus")); }
    return problems;
}

}  // namespace

void AccessibilityTest::initTestCase()
{
    QAccessible::setActive(true);
}

void AccessibilityTest::everyPageIsNamedThroughout()
{
    const BlurayFixture fixture;
    for (const QAction* menu : fixture.window->menuBar()->actions()) {
        QCOMPARE(problemsOf(menu->menu()).filter(QStringLiteral("no name")), QStringList());
        for (int i = 0; i < menu->menu()->actions().size(); ++i) {
            const auto* entry = QAccessible::queryAccessibleInterface(menu->menu())->child(i);
            QCOMPARE(entry->role(), QAccessible::MenuItem);
            QCOMPARE(nameOf(*entry), menu->menu()->actions().at(i)->text());
        }
    }
    QCOMPARE(problemsOf(fixture.window.get()), QStringList());
    fixture.tree()->expandAll();
    QCOMPARE(problemsOf(fixture.window.get()), QStringList());
    fixture.trigger("configurationsAction");
    QCOMPARE(problemsOf(fixture.window.get()), QStringList());
    fixture.openConfiguration();
    QCOMPARE(problemsOf(fixture.window.get()), QStringList());
    fixture.trigger("monitorAction");
    QCOMPARE(problemsOf(fixture.window.get()), QStringList());
}

void AccessibilityTest::everyDialogIsNamedThroughout()
{
    WindowFixture fixture;
    QStringList titles;
    QStringList problems;
    const auto look = [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        titles.append(dialog->windowTitle());
        problems.append(problemsOf(dialog));
    };
    QObject::connect(&fixture.driver, &ModalDriver::boxShown, look);
    fixture.driver.expectBox(QStringLiteral("API Key Security"), QString());
    fixture.driver.expectKeyDialog(QStringLiteral("key"));
    QVERIFY(fixture.start([&] { return fixture.isEnabled("openDiscDirectoryAction"); }));
    QVERIFY(fixture.part<QPushButton>("enterKeyButton")->isHidden());
    fixture.driver.expectHelpBox(QStringLiteral("About Platterscope"), QString(), QString());
    fixture.driver.expectHelpBox(QStringLiteral("Configuration Library"), QString(), QString());
    fixture.trigger("aboutAction");
    fixture.trigger("configurationLibraryAction");
    fixture.server.playFor(kFindPath, {.body = "{}"});
    fixture.driver.whenBusy(QStringLiteral("Loading Disc Data"), [&] {
        QStringList busy = problemsOf(QApplication::activeModalWidget());
        busy.removeAll(QStringLiteral("nothing can have the focus"));  // there is nothing to do
        problems.append(busy);
    });
    fixture.openDirectory(testsupport::sampleDvd().write(DiscForm::Directory, fixture.folder),
                          [&] { fixture.driver.expectBox(kAddTitle, QString(), QMessageBox::No); });
    QCOMPARE(problems, QStringList());
    QCOMPARE(titles.size(), 6);  // with the file dialog, which is the toolkit's
}

void AccessibilityTest::partsHaveTheirRolesAndLabels()
{
    struct Part {
        const char* objectName;
        QAccessible::Role role;
        const char* name;
        const char* label = "";
    };
    const std::array parts = {
        Part{"enterKeyButton", QAccessible::Button, "Enter My API Key", "Please Open A Disc"},
        Part{"titlesTree", QAccessible::Tree, "Titles and streams of the disc"},
        Part{"titleDetails", QAccessible::EditableText, "Details of the selected title or stream"},
        Part{"newConfigurationLink", QAccessible::StaticText, "New Configuration"},
        Part{"viewConfigurationButton", QAccessible::Button, "View"},
        Part{"refreshConfigurationsButton", QAccessible::Button, "Refresh"},
        Part{"configurationList", QAccessible::Tree, "Configurations of the disc"},
        Part{"configurationListButton", QAccessible::Button, "Configuration List"},
        Part{"configurationTree", QAccessible::Tree, "Titles of the configuration"},
        Part{"configurationDetails", QAccessible::EditableText, "Details of the selected title"},
        Part{"startMonitoringButton", QAccessible::Button, "Start"},
        Part{"eventTabBar", QAccessible::PageTabList, "Playlists (.mpls)"},  // the tab that is chosen
        Part{"eventTabs", QAccessible::Client, "Open/Close Events", "Open/Close Events"},
        Part{"openFileTabs", QAccessible::Client, "Currently Open Files", "Currently Open Files"},
        Part{"eventPlaylistList", QAccessible::List, "Open/Close Events: Playlists (.mpls)"},
        Part{"openFileSegmentList", QAccessible::List, "Currently Open Files: Segments (.m2ts)"},
    };
    const BlurayFixture fixture;
    for (const Part& part : parts) {
        const auto* shown = QAccessible::queryAccessibleInterface(fixture.part<QWidget>(part.objectName));
        QCOMPARE(nameOf(*shown), QString::fromLatin1(part.name));
        QVERIFY2(shown->role() == part.role, part.objectName);
        QStringList labels;
        for (const auto& [label, relation] : shown->relations(QAccessible::Label)) {
            labels.append(nameOf(*label));
        }
        QCOMPARE(labels.join(QLatin1Char('|')), QString::fromLatin1(part.label));
    }
}

void AccessibilityTest::treesTellTheirRows()
{
    const BlurayFixture fixture;
    QTreeWidget* tree = fixture.tree();
    tree->topLevelItem(1)->setExpanded(true);
    auto* table = QAccessible::queryAccessibleInterface(tree)->tableInterface();
    QVERIFY(table != nullptr);
    QCOMPARE(table->columnDescription(1), QStringLiteral("Description"));
    QCOMPARE(nameOf(*table->cellAt(1, 0)), QStringLiteral("Title"));
    // The tool tip, which the row also has, is not its name.
    QCOMPARE(nameOf(*table->cellAt(3, 1)), QStringLiteral("English, TrueHD, Multi-channel, 48 kHz"));
    QVERIFY(!tree->topLevelItem(1)->child(1)->toolTip(1).isEmpty());
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(nameOf(*QAccessible::queryAccessibleInterface(tree)->focusChild()), QStringLiteral("Video"));
}

QTEST_MAIN(AccessibilityTest)
#include "accessibility_test.moc"
