#pragma once

#include <QImage>
#include <QPixmap>
#include <QString>

namespace vocato {

// The artwork linked into the executable, by the names the views use: "skin",
// "On", "c0" ... "c12", "m0" ... "m31", "About", "AboutScroll", "fader".
// Every image also exists at twice the size for high-density screens.
QString ImageResourcePath(const char* name);

// The image at its nominal size; a null image when there is no such name.
// Any thread (QImage is not tied to the GUI thread).
QImage LoadImageResource(const char* name);

// The image for a screen of the given device pixel ratio: the double-size
// artwork above 1, with the ratio set so that it lays out at the nominal size.
// GUI thread only.
QPixmap LoadPixmapResource(const char* name, qreal devicePixelRatio);

// The same choice for any resource path, such as a button face's "_image".
QPixmap LoadPixmapPath(const QString& path, qreal devicePixelRatio);

} // namespace vocato
