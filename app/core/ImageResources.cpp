#include "ImageResources.h"

namespace vocato {

QString ImageResourcePath(const char* name) {
    return QStringLiteral(":/vocato/images/%1.png").arg(QLatin1String(name));
}

QImage LoadImageResource(const char* name) {
    return QImage(ImageResourcePath(name));
}

QPixmap LoadPixmapResource(const char* name, qreal devicePixelRatio) {
    return LoadPixmapPath(ImageResourcePath(name), devicePixelRatio);
}

QPixmap LoadPixmapPath(const QString& path, qreal devicePixelRatio) {
    if (devicePixelRatio > 1.0) {
        QString doubled = path;
        doubled.insert(doubled.size() - 4, QStringLiteral("@2x"));
        QPixmap pixmap(doubled);
        if (!pixmap.isNull()) {
            pixmap.setDevicePixelRatio(2.0);
            return pixmap;
        }
    }
    return QPixmap(path);
}

} // namespace vocato
