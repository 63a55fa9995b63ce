#include "MenuField.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace vocato::ui {

MenuField::MenuField(const QString& label, QMenu* menu, QWidget* parent)
    : QWidget(parent), label_(new QLabel(label, this)), button_(new QPushButton(this)),
      menu_(menu) {
    menu_->setParent(this, menu_->windowFlags());
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label_);
    layout->addWidget(button_, 1);
    button_->setMenu(menu_);
    QFont bold = label_->font();
    bold.setBold(true);
    label_->setFont(bold);
    for (QAction* action : menu_->actions()) {
        action->setCheckable(true);
    }
    QAction* marked = nullptr;
    for (QAction* action : menu_->actions()) {
        if (action->isChecked()) {
            marked = action;
        }
    }
    Choose(marked);
    connect(menu_, &QMenu::triggered, this, &MenuField::Choose);
}

QString MenuField::Chosen() const {
    for (QAction* action : menu_->actions()) {
        if (action->isChecked()) {
            return action->text();
        }
    }
    return {};
}

void MenuField::SetDivider(int width) {
    label_->setFixedWidth(width);
}

int MenuField::LabelWidth() const {
    return label_->sizeHint().width();
}

void MenuField::Choose(QAction* chosen) {
    for (QAction* action : menu_->actions()) {
        action->setChecked(action == chosen);
    }
    button_->setText(chosen != nullptr ? chosen->text() : QString());
}

} // namespace vocato::ui
