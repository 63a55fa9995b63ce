#include "Alert.h"

#include <cstdio>

namespace vocato::media {

void StderrAlert::Show(std::string_view title, std::string_view text) {
    std::fprintf(stderr, "%.*s: %.*s\n", static_cast<int>(title.size()), title.data(),
                 static_cast<int>(text.size()), text.data());
}

} // namespace vocato::media
