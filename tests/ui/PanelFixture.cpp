#include "PanelFixture.h"

#include <QPainter>

#include <algorithm>

namespace vocato::ui::testing {

bool TestHost::ReadOscilloscope(int16_t (&out)[128]) const {
    if (!inputConnected) {
        return false;
    }
    std::copy(std::begin(samples), std::end(samples), out);
    return true;
}

bool Shows(const QImage& shot, const QImage& image, QPoint at, const QImage& background) {
    const QRect area(at, image.size());
    QImage expected = background.copy(area).convertToFormat(QImage::Format_RGB32);
    {
        QPainter p(&expected);
        p.drawImage(0, 0, image);
    }
    return shot.copy(area).convertToFormat(QImage::Format_RGB32) == expected;
}

Panel::Panel() : skin(artwork.Image("skin")) {
    view = std::make_unique<MainView>(nullptr, host, artwork, skin);
    view->show();
    Settle();
}

} // namespace vocato::ui::testing
