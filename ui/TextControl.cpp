#include "TextControl.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace vocato::ui {

TextControl::TextControl(const QString& label, const QString& text, QWidget* parent)
    : QWidget(parent), label_(new QLabel(label, this)), edit_(new QLineEdit(text, this)) {
    // The control's own frame is what gets placed and widened, so nothing may pad it.
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(label_);
    row->addWidget(edit_, 1);
    label_->setBuddy(edit_);
}

QString TextControl::Label() const {
    return label_->text();
}

QString TextControl::Text() const {
    return edit_->text();
}

} // namespace vocato::ui
