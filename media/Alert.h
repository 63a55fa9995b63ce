// How the node reports a failure the user must see. The window shows a dialog; without a
// window the report goes to standard error.
#pragma once

#include <string_view>

namespace vocato::media {

class Alert {
public:
    virtual ~Alert() = default;
    // Never the audio thread: an alert may wait for the user.
    virtual void Show(std::string_view title, std::string_view text) = 0;
};

class StderrAlert final : public Alert {
public:
    void Show(std::string_view title, std::string_view text) override;
};

} // namespace vocato::media
