// The views' pictures from the artwork linked into the executable: images by name, and
// picture buttons rebuilt from their archives.
#pragma once

#include "Artwork.h"

namespace vocato {

class ResourceArtwork final : public ui::Artwork {
public:
    // Registers the linked resources (InitRessources) if nothing did yet. GUI thread.
    ResourceArtwork();
    QImage Image(const char* name) const override;
    // A name without a button archive gives a button with no faces that sends nothing.
    ui::ButtonArt Button(const char* name) const override;
};

} // namespace vocato
