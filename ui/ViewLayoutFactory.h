// Builds plain control panels in code, where there is no skin to say where things go: each
// control at its preferred size with a chosen corner on a given point, then rows and columns
// lined up at a fixed pitch, sizes made equal, and a parent sized to enclose its children.
#pragma once

#include <QPoint>
#include <QString>

#include <cstdint>
#include <span>

class QCheckBox;
class QObject;
class QPushButton;
class QWidget;

namespace vocato::ui {

class TextControl;

// Which corner of a view a point designates. Any other value counts as the top-left corner.
enum corner : int {
    CORNER_TOP_LEFT = 0,
    CORNER_BOTTOM_LEFT = 1,
    CORNER_TOP_RIGHT = 2,
    CORNER_BOTTOM_RIGHT = 3,
};

// How Align lines views up: the point of the first view every later view is placed on, and
// the direction the point advances in.
enum align_side : int {
    ALIGN_LEFT = 0,    // left edges on one line, going down
    ALIGN_TOP = 1,     // top edges on one line, going right
    ALIGN_RIGHT = 2,   // right edges on one line, going down
    ALIGN_BOTTOM = 3,  // bottom edges on one line, going right
    ALIGN_HCENTER = 4, // vertical centres on one line, going right
    ALIGN_VCENTER = 5, // horizontal centres on one line, going down
};

enum rect_dim : uint32_t {
    RECT_WIDTH = 1,
    RECT_HEIGHT = 2,
};

constexpr rect_dim operator|(rect_dim a, rect_dim b) {
    return static_cast<rect_dim>(static_cast<uint32_t>(a) | static_cast<uint32_t>(b));
}

// The message code a control made here stands for; 0 for anything else.
uint32_t WhatOf(const QObject* control);

// Holds nothing: every operation works on its arguments alone. Controls it makes have no
// parent; the caller adds them to a view, which then owns them. GUI thread.
class ViewLayoutFactory {
public:
    QPushButton* MakeButton(const QString& name, const QString& label, uint32_t what, QPoint where,
                            corner c = CORNER_TOP_LEFT) const;
    QCheckBox* MakeCheckBox(const QString& name, const QString& label, uint32_t what, QPoint where,
                            corner c = CORNER_TOP_LEFT) const;
    TextControl* MakeTextControl(const QString& name, const QString& label, const QString& text,
                                 QPoint where, float width, corner c = CORNER_TOP_LEFT) const;

    // Preferred size, widened (the field takes the extra) when `width` is more than that;
    // never narrower than preferred. Then placed by corner.
    void LayoutTextControl(TextControl& control, QPoint where, float width,
                           corner c = CORNER_TOP_LEFT) const;

    // Moves the view so that its corner `c` lies on `where`; the size does not change.
    void MoveViewCorner(QWidget& view, QPoint where, corner c = CORNER_TOP_LEFT) const;

    // The first view stays; each later non-null view is placed `spacing` further along from
    // the previous one's point, so `spacing` is the pitch between views, not the gap. Null
    // views are skipped and take no room. Nothing happens with fewer than two views, a null
    // first view, or a side that is none of the six.
    void Align(std::span<QWidget* const> views, align_side side, float spacing) const;

    // Sizes the view to reach past its farthest direct child by `margin`.
    void ResizeAroundChildren(QWidget& view, QPoint margin) const;

    // Gives every non-null view the largest width and/or height among them; the other
    // dimension stays. Views keep their top-left, whatever corner the caller places them by.
    void ResizeToListMax(std::span<QWidget* const> views, rect_dim dims,
                         corner c = CORNER_TOP_LEFT) const;
};

} // namespace vocato::ui
