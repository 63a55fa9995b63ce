#pragma once

#include <QDir>
#include <QString>

namespace art {

// A contact sheet for reviewing the artwork: the front panel assembled the way
// the views will draw it, at 1x and 2x, then every picture in a grid. Reads
// the PNGs just written under `root`.
bool WritePreview(const QDir& root, const QString& sheetPath);

} // namespace art
