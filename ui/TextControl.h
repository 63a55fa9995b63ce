// A labelled one-line text field: the label at its natural width on the left, the field taking
// whatever width the control is given beyond that.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

namespace vocato::ui {

class TextControl : public QWidget {
    Q_OBJECT
public:
    // GUI thread.
    TextControl(const QString& label, const QString& text, QWidget* parent = nullptr);

    QLineEdit* TextView() const { return edit_; }
    QString Label() const;
    QString Text() const;

private:
    QLabel* label_;
    QLineEdit* edit_;
};

} // namespace vocato::ui
