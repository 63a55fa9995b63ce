#include "ButtonCatalogue.h"

namespace vocato {

namespace {

// Layout flags recorded in every button archive: follow the parent's left and
// top edges; draw, and take keyboard navigation.
constexpr int32_t kFollowLeftTop = 0x1212;
constexpr int32_t kWillDrawNavigable = 0x22000000;
// The label font size the faces were designed at; kept for archive fidelity.
constexpr float kDesignFontSize = 11.9873046875f;

constexpr Rect kSmall{0, 0, 34, 24};
constexpr Rect kLarge{0, 0, 37, 27};

Message PictureArchive(const char* resourceName, const char* faceField) {
    Message picture(FourCC("ARCV"));
    picture.AddString("class", "BPicture");
    picture.AddInt32("_ver", 1);
    picture.AddInt8("_endian", 0);
    picture.AddString("_image", ButtonFacePath(resourceName, faceField));
    return picture;
}

} // namespace

const std::array<ButtonDescription, 8> kButtonCatalogue = {{
    {1, "RecMidi", "REC", kSmall, FourCC("MRec"), ButtonBehaviour::TwoState, "Swis721 BT", "Roman",
     27},
    {2, "StopMidi", "STOP", kSmall, FourCC("MStp"), ButtonBehaviour::OneState, "Swis721 BT",
     "Roman", 14},
    {3, "WaveFile", "", kLarge, FourCC("mOpn"), ButtonBehaviour::OneState, "Haru", "Regular", 6},
    {4, "Input", "", kLarge, FourCC("mInp"), ButtonBehaviour::OneState, "Haru", "Regular", 10},
    {5, "Preset", "", kLarge, FourCC("BPst"), ButtonBehaviour::OneState, "Haru", "Regular", 9},
    {6, "Instrument", "", kLarge, FourCC("BIns"), ButtonBehaviour::OneState, "Haru", "Regular", 9},
    {7, "Panic", "", kLarge, FourCC("BPan"), ButtonBehaviour::OneState, "Haru", "Regular", 8},
    {8, "PlayWave", "", kSmall, FourCC("BPla"), ButtonBehaviour::TwoState, "Haru", "Regular", 14},
}};

std::string ButtonFacePath(const char* resourceName, const char* faceField) {
    return std::string(":/vocato/buttons/") + resourceName + faceField + ".png";
}

Message ButtonArchive(const ButtonDescription& button) {
    Message archive(FourCC("ARCV"));
    archive.AddString("class", "BPictureButton");
    archive.AddString("_name", button.viewName);
    archive.AddRect("_frame", button.frame);
    archive.AddInt32("_resize_mode", kFollowLeftTop);
    archive.AddInt32("_flags", kWillDrawNavigable);
    archive.AddString("_fname", button.fontFamily);
    archive.AddString("_fname", button.fontStyle);
    for (int32_t channel : {255, -1, -1}) {
        archive.AddInt32("_color", channel);
    }
    archive.AddMessage("_msg", Message(button.what));
    archive.AddString("_label", "");
    for (const char* face : kButtonFaceFields) {
        archive.AddMessage(face, PictureArchive(button.resourceName, face));
    }
    archive.AddInt32("_behave", int32_t(button.behaviour));
    archive.AddInt32("ID", button.designId);
    archive.AddFloat("designfsize", kDesignFontSize);
    return archive;
}

} // namespace vocato
