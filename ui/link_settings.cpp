#include "ui/link_settings.h"

#include <utility>

namespace kel::ui {

LinkSettings::LinkSettings(com::ComPtr<IKelStream> port) : port_(std::move(port)) {
    com::check(port_->get_EchoWindow(&echoWindow_), port_);
    com::check(port_->get_IdleProcessing(&idleProcessing_), port_);
}

LinkSettings::~LinkSettings() {
    port_->put_EchoWindow(echoWindow_);
    port_->put_IdleProcessing(idleProcessing_);
}

}  // namespace kel::ui
