#include "MainMenu.h"

#include "MenuItem.h"
#include "WindowMessages.h"

#include <QMenuBar>

namespace vocato {

namespace {

void AddItem(QMenu* menu, const char* label, uint32_t what, char shortcut, Handler* target) {
    auto* item = new MenuItem(QString::fromLatin1(label), Message(what), menu);
    if (shortcut != 0) {
        item->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(shortcut)));
    }
    item->SetTarget(target);
    menu->addAction(item);
}

} // namespace

void AddMainMenu(QMenuBar* bar, Handler* target) {
    QMenu* file = bar->addMenu(QStringLiteral("File"));
    AddItem(file, "About ", kAboutRequested, 'I', target);
    file->addSeparator();
    AddItem(file, "Open Wave", kOpenWave, 'O', target);
    AddItem(file, "Export midifile ", kExportMidi, 'S', target);
    file->addSeparator();
    AddItem(file, "Quit", kQuitRequested, 0, target);
    QMenu* options = bar->addMenu(QStringLiteral("Options"));
    AddItem(options, "Parameters", kParameters, 'P', target);
    AddItem(options, "Converter controls", kConverterControls, 0, target);
}

} // namespace vocato
