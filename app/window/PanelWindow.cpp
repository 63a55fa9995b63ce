#include "PanelWindow.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace vocato {

PanelWindow::PanelWindow(std::unique_ptr<media::ParameterWeb> web, const QString& title,
                         QWidget* parent)
    : QWidget(parent, Qt::Window), web_(std::move(web)), view_(new ui::ParameterWebView(*web_)) {
    setWindowTitle(title);
    setObjectName(QStringLiteral("PanelWindow"));
    setAttribute(Qt::WA_DeleteOnClose);
    // A mixer may have dozens of controls: the window scrolls rather than outgrow the screen.
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(view_);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
    const QSize wanted =
        view_->sizeHint() + QSize(scroll->verticalScrollBar()->sizeHint().width() + 4, 4);
    resize(wanted.boundedTo(QSize(wanted.width(), 700)));
    move(50, 50);
    show();
}

} // namespace vocato
