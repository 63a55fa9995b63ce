#include "ResourceArtwork.h"

#include "ImageResources.h"
#include "Resources.h"

#include <string>

namespace vocato {

namespace {

QImage Face(const Message& archive, const char* field) {
    Message picture;
    std::string path;
    if (archive.FindMessage(field, &picture) != B_OK || picture.FindString("_image", &path) != B_OK) {
        return {};
    }
    return QImage(QString::fromStdString(path));
}

} // namespace

ResourceArtwork::ResourceArtwork() {
    if (rsc == nullptr) {
        InitRessources();
    }
}

QImage ResourceArtwork::Image(const char* name) const { return LoadImageResource(name); }

ui::ButtonArt ResourceArtwork::Button(const char* name) const {
    const Message archive = FindArchivedResource(name);
    std::string cls;
    ui::ButtonArt art;
    if (archive.FindString("class", &cls) != B_OK || cls != "BPictureButton") {
        return art;
    }
    Message sent;
    if (archive.FindMessage("_msg", &sent) == B_OK) {
        art.what = sent.what;
    }
    int32_t behave = 0;
    archive.FindInt32("_behave", &behave);
    art.twoState = behave == 1;
    Rect frame;
    if (archive.FindRect("_frame", &frame) == B_OK) {
        // Archive frames are inclusive: (0, 0) - (34, 24) is 35 x 25 pixels.
        art.size = QSize(int(frame.Width()) + 1, int(frame.Height()) + 1);
    }
    art.enabledOn = Face(archive, "_e_on");
    art.enabledOff = Face(archive, "_e_off");
    art.disabledOn = Face(archive, "_d_on");
    art.disabledOff = Face(archive, "_d_off");
    return art;
}

} // namespace vocato
