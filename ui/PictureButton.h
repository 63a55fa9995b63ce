// A button drawn entirely from four pictures (enabled on/off, disabled on/off). A one-state
// button shows its "on" face while pressed; a two-state button toggles and keeps it.
#pragma once

#include "Artwork.h"

#include <QAbstractButton>

namespace vocato::ui {

class PictureButton : public QAbstractButton {
    Q_OBJECT
public:
    PictureButton(const ButtonArt& art, QWidget* parent);

    uint32_t What() const { return art_.what; }
    // 1 shows the "on" face of a two-state button, 0 the "off" face. GUI thread.
    void SetValue(int value) { setChecked(value != 0); }
    int Value() const { return isChecked() ? 1 : 0; }

signals:
    void Message(uint32_t what);

protected:
    void paintEvent(QPaintEvent* event) override;
    QSize sizeHint() const override { return art_.size; }

private:
    ButtonArt art_;
};

} // namespace vocato::ui
