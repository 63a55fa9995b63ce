// The window tests run offscreen, with settings in a directory of their own so that the
// user's settings are never read or written.
#include "Fixtures.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    vocato::test::TempDir config;
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(config.Path()));
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
