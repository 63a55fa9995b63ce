#include "MenuItem.h"

#include <QMenu>

namespace vocato {

MenuItem::MenuItem(const QString& label, Message message, QObject* parent)
    : QAction(label, parent), message_(std::move(message)) {
    connect(this, &QAction::triggered, this, [this] {
        if (target_ != nullptr) {
            target_->MessageReceived(message_);
        }
    });
}

void MenuItem::SetMarked(bool marked) {
    setCheckable(true);
    setChecked(marked);
}

void SetTargetForItems(QMenu* menu, Handler* target) {
    for (QAction* action : menu->actions()) {
        if (auto* item = dynamic_cast<MenuItem*>(action)) {
            item->SetTarget(target);
        }
    }
}

} // namespace vocato
