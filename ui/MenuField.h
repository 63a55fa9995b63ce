// A labelled pop-up menu that keeps one choice: choosing an item marks it alone and shows its
// text on the button, so the field always says what is chosen. GUI thread only.
#pragma once

#include <QWidget>

class QLabel;
class QMenu;
class QPushButton;

namespace vocato::ui {

class MenuField : public QWidget {
    Q_OBJECT
public:
    // Takes `menu` over; its items become checkable and the one already marked is shown.
    MenuField(const QString& label, QMenu* menu, QWidget* parent = nullptr);

    QMenu* Menu() const { return menu_; }
    QPushButton* Button() const { return button_; }
    // The chosen item's text; empty when nothing is chosen.
    QString Chosen() const;
    // Widens or narrows the label column, so that fields stacked under each other line up.
    void SetDivider(int width);
    int LabelWidth() const;
    // Marks `chosen` alone (null: none) and shows it, as a choice from the menu does.
    void Choose(QAction* chosen);

private:
    QLabel* label_;
    QPushButton* button_;
    QMenu* menu_;
};

} // namespace vocato::ui
