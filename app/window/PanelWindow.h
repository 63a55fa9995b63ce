// A window that shows one parameter web through the generic view: the control panel of a
// sound card's mixer (the "node=N" role) or of the running converter.
//
// GUI thread only.
#pragma once

#include "ParameterWeb.h"
#include "ParameterWebView.h"

#include <QWidget>

#include <memory>

namespace vocato {

class PanelWindow final : public QWidget {
    Q_OBJECT
public:
    // Shows itself, sized to the view; deletes itself when closed.
    PanelWindow(std::unique_ptr<media::ParameterWeb> web, const QString& title,
                QWidget* parent = nullptr);

    ui::ParameterWebView* View() const { return view_; }

private:
    std::unique_ptr<media::ParameterWeb> web_;
    ui::ParameterWebView* view_;
};

} // namespace vocato
