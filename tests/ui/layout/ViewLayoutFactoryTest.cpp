#include "ViewLayoutFactory.h"
#include "TextControl.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

#include <memory>
#include <vector>

using namespace vocato::ui;

namespace {

// Views without a parent, owned by the test; `list` is what the factory is given, nulls and
// all.
struct Views {
    void Add(const QRect& geometry) {
        owned.push_back(std::make_unique<QWidget>());
        owned.back()->setGeometry(geometry);
        list.push_back(owned.back().get());
    }
    void AddNull() { list.push_back(nullptr); }
    std::vector<QRect> Geometries() const {
        std::vector<QRect> geometries;
        for (const auto& view : owned) {
            geometries.push_back(view->geometry());
        }
        return geometries;
    }

    std::vector<std::unique_ptr<QWidget>> owned;
    std::vector<QWidget*> list;
};

const ViewLayoutFactory factory;

} // namespace

TEST(ViewLayoutFactory, MoveViewCornerPutsTheChosenCornerOnThePoint) {
    const struct {
        corner c;
        QPoint topLeft;
    } cases[] = {
        {CORNER_TOP_LEFT, {200, 50}},        {CORNER_BOTTOM_LEFT, {200, 30}},
        {CORNER_TOP_RIGHT, {100, 50}},       {CORNER_BOTTOM_RIGHT, {100, 30}},
        {static_cast<corner>(4), {200, 50}}, {static_cast<corner>(-1), {200, 50}},
    };
    for (const auto& tc : cases) {
        QWidget view;
        view.setGeometry(7, 9, 100, 20);
        factory.MoveViewCorner(view, {200, 50}, tc.c);
        EXPECT_EQ(view.geometry(), QRect(tc.topLeft, QSize(100, 20))) << "corner " << tc.c;
    }
}

// First 40x20 at (10,10); the others differ in both dimensions, so a rule that used the wrong
// view's size, or the gap instead of the pitch, lands elsewhere. Nulls take no room.
TEST(ViewLayoutFactory, AlignPlacesEachLaterViewByItsSidesCornerAtAFixedPitchSkippingNulls) {
    const struct {
        align_side side;
        QPoint second; // 60x30
        QPoint third;  // 20x40
    } cases[] = {
        {ALIGN_LEFT, {10, 40}, {10, 70}},   {ALIGN_TOP, {40, 10}, {70, 10}},
        {ALIGN_RIGHT, {-10, 40}, {30, 70}}, {ALIGN_BOTTOM, {40, 0}, {70, -10}},
        {ALIGN_HCENTER, {40, 5}, {70, 0}},  {ALIGN_VCENTER, {0, 40}, {20, 70}},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(tc.side);
        Views views;
        views.Add({10, 10, 40, 20});
        views.AddNull();
        views.Add({500, 500, 60, 30});
        views.AddNull();
        views.Add({-300, 200, 20, 40});
        factory.Align(views.list, tc.side, 30);
        EXPECT_EQ(views.Geometries(), (std::vector<QRect>{QRect(10, 10, 40, 20), QRect(tc.second, QSize(60, 30)),
                                                          QRect(tc.third, QSize(20, 40))}));
    }
}

TEST(ViewLayoutFactory, AlignLeavesEverythingAloneWhenThereIsNothingToLineUp) {
    const struct {
        const char* what;
        bool nullFirst;
        int count;
        align_side side;
    } cases[] = {
        {"one view", false, 1, ALIGN_LEFT},
        {"side past the last", false, 3, static_cast<align_side>(6)},
        {"negative side", false, 3, static_cast<align_side>(-1)},
        {"null first view", true, 2, ALIGN_TOP},
    };
    for (const auto& tc : cases) {
        Views views;
        if (tc.nullFirst) {
            views.AddNull();
        }
        for (int i = 0; i < tc.count; ++i) {
            views.Add({100 * i, 7 * i, 20 + i, 30 + i});
        }
        const std::vector<QRect> before = views.Geometries();
        factory.Align(views.list, tc.side, 30);
        EXPECT_EQ(views.Geometries(), before) << tc.what;
    }
}

TEST(ViewLayoutFactory, ResizeToListMaxEqualisesOnlyTheChosenDimensions) {
    const struct {
        rect_dim dims;
        QSize sizes[3];
    } cases[] = {
        {RECT_WIDTH, {{60, 20}, {60, 10}, {60, 50}}},
        {RECT_HEIGHT, {{40, 50}, {60, 50}, {30, 50}}},
        {RECT_WIDTH | RECT_HEIGHT, {{60, 50}, {60, 50}, {60, 50}}},
    };
    for (const auto& tc : cases) {
        Views views;
        views.Add({5, 5, 40, 20});
        views.AddNull();
        views.Add({50, 5, 60, 10});
        views.Add({120, 5, 30, 50});
        factory.ResizeToListMax(views.list, tc.dims, CORNER_BOTTOM_RIGHT);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(views.owned[i]->size(), tc.sizes[i]) << "dims " << tc.dims << " view " << i;
        }
        EXPECT_EQ(views.owned[2]->pos(), QPoint(120, 5)) << "the corner moves nothing";
    }
}

TEST(ViewLayoutFactory, ResizeAroundChildrenReachesPastTheFarthestDirectChildByTheMargin) {
    QWidget parent;
    parent.resize(500, 500);
    (new QWidget(&parent))->setGeometry(50, 5, 10, 60);
    auto* low = new QWidget(&parent);
    low->setGeometry(10, 70, 30, 20);
    // Its own coordinates reach farther than any child of the parent, but it lies inside `low`.
    (new QWidget(low))->setGeometry(100, 100, 10, 10);
    factory.ResizeAroundChildren(parent, {5, 7});
    EXPECT_EQ(parent.size(), QSize(65, 97));

    QWidget empty;
    empty.resize(500, 500);
    factory.ResizeAroundChildren(empty, {5, 7});
    EXPECT_EQ(empty.size(), QSize(5, 7));
}

TEST(ViewLayoutFactory, TextControlIsNeverNarrowerThanPreferredAndGivesExtraWidthToTheField) {
    QWidget panel;
    auto* narrow = new TextControl("Port", "hw:0", &panel);
    auto* wide = new TextControl("Port", "hw:0", &panel);
    const QSize preferred = narrow->sizeHint();
    factory.LayoutTextControl(*narrow, {0, 0}, preferred.width() - 20.0f);
    factory.LayoutTextControl(*wide, {0, 100}, preferred.width() + 50.0f);
    EXPECT_EQ(narrow->size(), preferred);
    EXPECT_EQ(wide->size(), QSize(preferred.width() + 50, preferred.height()));
    panel.resize(600, 300);
    panel.show();
    EXPECT_EQ(wide->TextView()->width(), narrow->TextView()->width() + 50);

    std::unique_ptr<TextControl> made(
        factory.MakeTextControl("port", "Port", "hw:0", {300, 100}, 250.0f, CORNER_BOTTOM_RIGHT));
    EXPECT_EQ(made->width(), std::max(250, made->sizeHint().width()));
    EXPECT_EQ(made->geometry().bottomRight(), QPoint(299, 99));
}

TEST(ViewLayoutFactory, MadeButtonsAndCheckBoxesArePreferredSizeAndCarryTheirCode) {
    const uint32_t highBit = 0xE0000001;
    std::unique_ptr<QPushButton> button(factory.MakeButton("b", "Record", 7, {200, 50}, CORNER_TOP_RIGHT));
    std::unique_ptr<QCheckBox> box(factory.MakeCheckBox("c", "Record", highBit, {200, 50}, CORNER_TOP_RIGHT));
    for (QWidget* control : {static_cast<QWidget*>(button.get()), static_cast<QWidget*>(box.get())}) {
        EXPECT_EQ(control->size(), control->sizeHint());
        EXPECT_EQ(control->geometry().topRight(), QPoint(199, 50));
    }
    EXPECT_EQ(WhatOf(button.get()), 7u);
    EXPECT_EQ(WhatOf(box.get()), highBit);
    QObject plain;
    EXPECT_EQ(WhatOf(&plain), 0u);
    EXPECT_EQ(WhatOf(nullptr), 0u);
}
