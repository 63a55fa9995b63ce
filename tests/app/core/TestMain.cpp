// Menus and pixmaps need a QApplication; one for the whole run, offscreen so
// that the tests run without a display. Diagnostic lines would only clutter
// the test log.
#include "Diagnostics.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    vocato::SetDiagnosticsQuiet(true);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
