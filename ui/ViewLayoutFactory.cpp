#include "ViewLayoutFactory.h"

#include "Diagnostics.h"
#include "TextControl.h"

#include <QCheckBox>
#include <QPointF>
#include <QPushButton>
#include <QVariant>

#include <algorithm>
#include <array>

namespace vocato::ui {
namespace {

constexpr char kWhatProperty[] = "what";

// `anchor` is the point of a view, as fractions of its size from its top-left, that sits on
// the line: the first view's anchor is where the line starts, and every later view is moved
// so that its own anchor lands on the advanced point.
struct SideRule {
    QPointF anchor;
    QPointF step;
};

constexpr std::array<SideRule, 6> kSideRules{{
    {{0.0, 0.0}, {0.0, 1.0}}, // ALIGN_LEFT
    {{0.0, 0.0}, {1.0, 0.0}}, // ALIGN_TOP
    {{1.0, 0.0}, {0.0, 1.0}}, // ALIGN_RIGHT
    {{0.0, 1.0}, {1.0, 0.0}}, // ALIGN_BOTTOM
    {{0.0, 0.5}, {1.0, 0.0}}, // ALIGN_HCENTER
    {{0.5, 0.0}, {0.0, 1.0}}, // ALIGN_VCENTER
}};

QPointF Offset(const QWidget& view, QPointF anchor) {
    return {anchor.x() * view.width(), anchor.y() * view.height()};
}

template <typename Control>
Control* MakeControl(const QString& name, const QString& label, uint32_t what, QPoint where,
                     corner c, const ViewLayoutFactory& factory) {
    auto* control = new Control(label);
    control->setObjectName(name);
    control->setProperty(kWhatProperty, QVariant::fromValue(what));
    control->resize(control->sizeHint());
    factory.MoveViewCorner(*control, where, c);
    return control;
}

} // namespace

uint32_t WhatOf(const QObject* control) {
    return control ? control->property(kWhatProperty).value<uint32_t>() : 0;
}

QPushButton* ViewLayoutFactory::MakeButton(const QString& name, const QString& label, uint32_t what,
                                           QPoint where, corner c) const {
    return MakeControl<QPushButton>(name, label, what, where, c, *this);
}

QCheckBox* ViewLayoutFactory::MakeCheckBox(const QString& name, const QString& label, uint32_t what,
                                           QPoint where, corner c) const {
    return MakeControl<QCheckBox>(name, label, what, where, c, *this);
}

TextControl* ViewLayoutFactory::MakeTextControl(const QString& name, const QString& label,
                                                const QString& text, QPoint where, float width,
                                                corner c) const {
    auto* control = new TextControl(label, text);
    control->setObjectName(name);
    LayoutTextControl(*control, where, width, c);
    return control;
}

void ViewLayoutFactory::LayoutTextControl(TextControl& control, QPoint where, float width,
                                          corner c) const {
    control.resize(control.sizeHint());
    const int extra = qRound(width - control.width());
    if (extra > 0) {
        control.resize(control.width() + extra, control.height());
    }
    MoveViewCorner(control, where, c);
}

void ViewLayoutFactory::MoveViewCorner(QWidget& view, QPoint where, corner c) const {
    QPoint topLeft = where;
    if (c == CORNER_TOP_RIGHT || c == CORNER_BOTTOM_RIGHT) {
        topLeft.rx() -= view.width();
    }
    if (c == CORNER_BOTTOM_LEFT || c == CORNER_BOTTOM_RIGHT) {
        topLeft.ry() -= view.height();
    }
    view.move(topLeft);
}

void ViewLayoutFactory::Align(std::span<QWidget* const> views, align_side side,
                              float spacing) const {
    if (views.size() < 2 || side < 0 || side >= int(kSideRules.size()) || !views.front()) {
        return;
    }
    const SideRule& rule = kSideRules[side];
    const QWidget& first = *views.front();
    QPointF point = QPointF(first.geometry().topLeft()) + Offset(first, rule.anchor);
    if (side == ALIGN_VCENTER) {
        media::Diagnostic("Aligning along vcenter\nInitial position: (%.1f, %.1f)\n", point.x(),
                          point.y());
    }
    for (QWidget* view : views.subspan(1)) {
        if (!view) {
            continue;
        }
        point += rule.step * spacing;
        view->move((point - Offset(*view, rule.anchor)).toPoint());
    }
}

void ViewLayoutFactory::ResizeAroundChildren(QWidget& view, QPoint margin) const {
    int right = 0;
    int bottom = 0;
    for (const QWidget* child : view.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        right = std::max(right, child->x() + child->width());
        bottom = std::max(bottom, child->y() + child->height());
    }
    view.resize(right + margin.x(), bottom + margin.y());
}

void ViewLayoutFactory::ResizeToListMax(std::span<QWidget* const> views, rect_dim dims,
                                        corner) const {
    int widest = 0;
    int tallest = 0;
    for (const QWidget* view : views) {
        if (view) {
            widest = std::max(widest, view->width());
            tallest = std::max(tallest, view->height());
        }
    }
    for (QWidget* view : views) {
        if (view) {
            view->resize((dims & RECT_WIDTH) ? widest : view->width(),
                         (dims & RECT_HEIGHT) ? tallest : view->height());
        }
    }
}

} // namespace vocato::ui
