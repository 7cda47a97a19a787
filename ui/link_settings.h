#pragma once
// Settings of the link's port that a dialog changes while it works.

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::ui {

// Remembers the echo window and the idle processing of a port and restores both when it goes, on
// every way out. Where the port does not tell or take a setting any more, it stays as it is.
class LinkSettings {
public:
    // Throws com::Error when the port does not tell them.
    explicit LinkSettings(com::ComPtr<IKelStream> port);
    ~LinkSettings();
    LinkSettings(const LinkSettings&) = delete;
    LinkSettings& operator=(const LinkSettings&) = delete;

private:
    com::ComPtr<IKelStream> port_;
    long echoWindow_ = 0;
    VARIANT_BOOL idleProcessing_ = VARIANT_TRUE;
};

}  // namespace kel::ui
