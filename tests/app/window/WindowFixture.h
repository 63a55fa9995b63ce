// The application and its main window with no audio system (sound files still play), a
// fresh settings store per test, and helpers to read the panel from screenshots.
#pragma once

#include "JackServer.h"
#include "NodeHarnessApp.h"
#include "Preferences.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QTest>

#include <string>
#include <vector>

namespace vocato::test {

// The top-level windows of type T that are on screen.
template <class T> std::vector<T*> VisibleWindows() {
    std::vector<T*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<T*>(widget); window != nullptr && window->isVisible()) {
            found.push_back(window);
        }
    }
    return found;
}

// The item labelled `text` in `menu` or its submenus; null when there is none.
QAction* FindItem(QMenu* menu, const QString& text);

class WindowTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // No audio system by default: sound files still play.
    virtual WindowOptions Options() const;
    NodeHarnessWin& Win() { return *app_->Window(); }
    QImage Shot() { return Win().grab().toImage().convertToFormat(QImage::Format_RGB32); }
    // Runs the event loop for `ms` milliseconds.
    static void Wait(int ms) { QTest::qWait(ms); }
    void Click(QPoint at) {
        QTest::mouseClick(Win().View(), Qt::LeftButton, {}, at);
        Wait(20);
    }
    void Press(ui::PanelButton button) {
        QTest::mouseClick(Win().View()->Button(button), Qt::LeftButton);
        Wait(20);
    }
    // Saves the picture as NAME.png when VOCATO_SCREENSHOTS names a directory.
    static void SaveScreenshot(QWidget& widget, const char* name);

    std::unique_ptr<NodeHarnessApp> app_;
    QImage skin_;
};

// The same on a private JACK server (dummy backend): the live input is there from the start.
class JackWindowTest : public WindowTest {
protected:
    void SetUp() override;
    WindowOptions Options() const override;

    JackServer server_;
};

} // namespace vocato::test
