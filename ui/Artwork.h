// Where the views get their pictures: the application answers from the artwork linked into
// the executable, so the views never know how images are stored.
#pragma once

#include <QImage>
#include <QSize>

#include <cstdint>

namespace vocato::ui {

// What a picture button is built from.
struct ButtonArt {
    uint32_t what = 0;      // the message code the button sends
    bool twoState = false;  // a two-state button toggles between its on and off faces
    QSize size;             // the button keeps the size of its archive
    QImage enabledOn, enabledOff, disabledOn, disabledOff;
};

class Artwork {
public:
    virtual ~Artwork() = default;
    // A null image when there is no picture of that name. GUI thread.
    virtual QImage Image(const char* name) const = 0;
    // The button of that resource name. GUI thread.
    virtual ButtonArt Button(const char* name) const = 0;
};

} // namespace vocato::ui
