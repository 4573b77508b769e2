// Runs the tests of a program with widgets.
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[])
{
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) { qputenv("QT_QPA_PLATFORM", "offscreen"); }
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
