#include "PictureButton.h"

#include <QPainter>

namespace vocato::ui {

PictureButton::PictureButton(const ButtonArt& art, QWidget* parent)
    : QAbstractButton(parent), art_(art) {
    setCheckable(art_.twoState);
    setFocusPolicy(Qt::NoFocus);
    resize(art_.size);
    connect(this, &QAbstractButton::clicked, this, [this] { emit Message(art_.what); });
}

void PictureButton::paintEvent(QPaintEvent*) {
    const bool on = isDown() || isChecked();
    const QImage& face = isEnabled() ? (on ? art_.enabledOn : art_.enabledOff)
                                     : (on ? art_.disabledOn : art_.disabledOff);
    QPainter p(this);
    p.drawImage(rect(), face);
}

} // namespace vocato::ui
