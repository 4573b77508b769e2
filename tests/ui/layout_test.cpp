// Whether everything can be read: with large letters, in every palette, and on several screens (CMakeLists.txt).
#include "tests/ui/window_fixture.h"
#include "ui/readable_palette.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QScreen>
#include <QTabBar>

#include <gtest/gtest.h>

namespace {

// The labels, buttons, tabs and headers in sight that have less room than their text takes.
QString cutTexts(const QWidget* window)
{
    QString cut;
    const auto check = [&cut](const QString& what, const QSize& size, const QSize& needed) {
        if (size.expandedTo(needed) != size) { cut += what + u'\n'; }
    };
    for (const auto* widget : window->findChildren<QWidget*>()) {
        if (!widget->isVisible()) { continue; }
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            if (label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored) { continue; }
            const QSize wrapped(label->width(), label->heightForWidth(label->width()));
            check(label->text(), label->size(), label->wordWrap() ? wrapped : label->sizeHint());
        } else if (const auto* button = qobject_cast<const QPushButton*>(widget)) {
            check(button->text(), button->size(), button->sizeHint());
        } else if (const auto* bar = qobject_cast<const QTabBar*>(widget)) {
            for (int i = 0; i < bar->count(); ++i) {
                const QSize needed = bar->fontMetrics().size(Qt::TextShowMnemonic, bar->tabText(i));
                check(bar->tabText(i), (bar->tabRect(i) & bar->rect()).size(),
                      needed.expandedTo(bar->tabRect(i).size()));
            }
        } else if (const auto* header = qobject_cast<const QHeaderView*>(widget)) {
            for (int i = 0; i < header->count(); ++i) {
                check(header->model()->headerData(i, Qt::Horizontal).toString(),
                      QSize(header->sectionSize(i), header->height()),
                      QSize(header->sectionSizeHint(i), header->sizeHint().height()));
            }
        }
    }
    return cut;
}

// What is cut, or larger than the screen, of the pages and dialogs of the scripts.
QString problemsOfEverything()
{
    QString problems;
    for (const char* script : {"first_start", "pages", "replies"}) {
        WindowFixture fixture;
        fixture.driver.onShown = [&](QDialog* dialog) {
            if (qobject_cast<QFileDialog*>(dialog) == nullptr) { problems += cutTexts(dialog); }
        };
        (void)fixture.play(script, [&] {
            if (fixture.window == nullptr) { return; }
            problems += cutTexts(fixture.window.get());
            const QSize screen = fixture.window->screen()->availableSize();
            if (fixture.window->minimumSizeHint().expandedTo(screen) != screen) {
                problems += u"too large\n"_s;
            }
        });
    }
    return problems;
}

TEST(Layout, BeginsInsideTheScreen)
{
    const WindowFixture fixture(u"stored key ; start"_s);
    const QSize titleBar(0, fixture.window->style()->pixelMetric(QStyle::PM_TitleBarHeight));
    const QSize available = fixture.window->screen()->availableSize() - titleBar;
    EXPECT_EQ(fixture.window->size(), QSize(900, 600).boundedTo(available));
}

TEST(Layout, CutsNoText)
{
    EXPECT_EQ(problemsOfEverything(), QString());
    // A small screen has no room for larger letters.
    if (QApplication::primaryScreen()->availableSize().width() < 1000) { return; }
    QFont font;
    font.setPointSize(24);
    QApplication::setFont(font);
    EXPECT_EQ(problemsOfEverything(), QString()) << "with large letters";
    QApplication::setFont(QFont());
}

TEST(Layout, LinksCanBeReadOnEveryPalette)
{
    const auto linkOn = [](QRgb window, QRgb link) {
        QPalette palette{QColor(window), QColor(window)};
        palette.setColor(QPalette::WindowText, QColor(0x7F7F00));
        palette.setColor(QPalette::Link, QColor(link));
        return withReadableLinks(palette).color(QPalette::Link).rgb() & 0xFFFFFFU;
    };
    // On both sides of the least contrast, 4.5 to 1, by each colour on light and dark windows.
    const struct {
        QRgb window, readable, unreadable;
    } rows[] = {
        {0xFFFFFF, 0x767676, 0x777777}, {0x000000, 0x757575, 0x747474}, {0x0A0A0A, 0x797979, 0x787878},
        {0x090000, 0x757575, 0x747474}, {0x2B2B2B, 0x929292, 0x919191}, {0xFFFFFF, 0xEE0000, 0xEF0000},
        {0x000000, 0x008800, 0x008700}, {0xFFFFFF, 0x6161FF, 0x6262FF}, {0xFFFFFF, 0x006DFF, 0x006EFF}};
    for (const auto& row : rows) {
        EXPECT_EQ(linkOn(row.window, row.readable), row.readable);
        EXPECT_EQ(linkOn(row.window, row.unreadable), 0x7F7F00U) << std::hex << row.unreadable;
    }

    // The window follows when the desktop changes over.
    const QPalette before = QApplication::palette();
    const WindowFixture fixture(u"stored key ; start"_s);
    const auto* link = fixture.part<QLabel>(u"newConfigurationLink"_s);
    QPalette dark(QColor(0x2B2B2B), QColor(0x1E1E1E));
    dark.setColor(QPalette::Link, QColor(0x0000FF));
    for (const QPalette& palette : {dark, before}) {
        QApplication::setPalette(palette);
        QCoreApplication::processEvents();
        EXPECT_EQ(link->palette().color(QPalette::Link), withReadableLinks(palette).color(QPalette::Link));
    }
}

}  // namespace
