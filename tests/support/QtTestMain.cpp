// Widgets need a QApplication: one for the whole run, offscreen so that the tests run without a
// display, and settings in a folder of the run's own so that the user's are never read or written.
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
