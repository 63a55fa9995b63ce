// libFuzzer entry for the settings and archive text reader: any input must be
// rejected cleanly or give a message that writes itself back identically.
#include "MessageText.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vocato::Message parsed;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    if (vocato::MessageFromText(text, &parsed) != vocato::B_OK) {
        return 0;
    }
    std::string written = vocato::MessageToText(parsed);
    vocato::Message again;
    if (vocato::MessageFromText(written, &again) != vocato::B_OK ||
        vocato::MessageToText(again) != written) {
        std::abort();
    }
    return 0;
}
