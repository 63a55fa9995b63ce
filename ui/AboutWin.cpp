#include "AboutWin.h"

#include <QPainter>

namespace vocato::ui {

AboutView::AboutView(QWidget* parent, const QImage& about, const QImage& scroll, bool splash)
    : QWidget(parent), splash_(splash), about_(about), scroll_(scroll) {
    setObjectName(QStringLiteral("fond"));
    setFocusPolicy(Qt::StrongFocus);
    if (!splash_) {
        connect(&pulse_, &QTimer::timeout, this, &AboutView::Pulse);
        pulse_.start(kPulseMs);
    }
}

void AboutView::Pulse() {
    if (splash_ || scroll_.isNull()) {
        return;
    }
    // Bounds are inclusive: the 116-row picture is 115 high, and so is its frame.
    const int h = about_.height() - 1;
    const int w = about_.width() - 1;
    if (scrollOffset_ > h + kStripHeight) {
        scrollOffset_ = 0;
    }
    strip_ = scroll_.copy(0, static_cast<int>(scrollOffset_), w + 1, kStripHeight + 1);
    scrollOffset_ += 1;
    update(QRect(0, h, w + 1, kStripHeight + 1));
}

void AboutView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), Qt::black);
    p.drawImage(0, 0, about_);
    if (!strip_.isNull()) {
        p.drawImage(0, about_.height() - 1, strip_);
    }
}

void AboutView::mousePressEvent(QMouseEvent*) {
    if (!splash_) {
        window()->close();
    }
}

void AboutView::keyPressEvent(QKeyEvent*) {
    if (!splash_) {
        window()->close();
    }
}

AboutWin::AboutWin(const Artwork& artwork, bool splash) : QWidget(nullptr), splash_(splash) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("About Vocato"));
    setWindowFlags(splash ? Qt::SplashScreen | Qt::FramelessWindowHint
                          : Qt::Tool | Qt::MSWindowsFixedSizeDialogHint);
    const QImage about = artwork.Image("About");
    view_ = new AboutView(this, about, artwork.Image("AboutScroll"), splash);
    const QSize size(about.width(), about.height() + (splash ? 0 : AboutView::kStripHeight));
    view_->resize(size);
    setFixedSize(size);
    move(100, 100);
    view_->setFocus();
    show();
}

} // namespace vocato::ui
