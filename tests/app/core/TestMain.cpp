// Menus and pixmaps need a QApplication; one for the whole run, offscreen so
// that the tests run without a display. Settings go to a folder of the run's
// own, never the user's; diagnostic lines would only clutter the test log.
#include "Diagnostics.h"

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    QApplication application(argc, argv);
    vocato::media::SetDiagnosticsQuiet(true);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
