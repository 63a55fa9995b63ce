#pragma once

#include "Handler.h"
#include "Message.h"

#include <QAction>

class QMenu;

namespace vocato {

// A menu entry that carries a message and hands it to its target when chosen.
// Without a target a choice goes nowhere. GUI thread only.
class MenuItem : public QAction {
public:
    MenuItem(const QString& label, Message message, QObject* parent);

    const Message& ItemMessage() const { return message_; }
    Handler* Target() const { return target_; }
    void SetTarget(Handler* target) { target_ = target; }
    // Marks the item with a check, as the current choice.
    void SetMarked(bool marked);
    bool IsMarked() const { return isChecked(); }

private:
    Message message_;
    Handler* target_ = nullptr;
};

// Makes `target` the target of every MenuItem directly in `menu`.
void SetTargetForItems(QMenu* menu, Handler* target);

} // namespace vocato
