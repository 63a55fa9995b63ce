// Failure reports for the user: the text goes to standard error and into a dialog with one
// button "Ok". The dialog does not hold up the caller, which goes on as before.
#pragma once

#include "Alert.h"

#include <QWidget>
#include <QPointer>

namespace vocato {

class WindowAlert final : public media::Alert {
public:
    // GUI thread (the owner's thread calls the alert). `parent` may be null.
    explicit WindowAlert(QWidget* parent = nullptr) : parent_(parent) {}
    void Show(std::string_view title, std::string_view text) override;

private:
    QPointer<QWidget> parent_;
};

} // namespace vocato
