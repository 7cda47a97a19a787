#include "bench/link/access/quiet_port.h"

#include "bench/link/bytes.h"
#include "com/variant.h"

namespace kel::bench {
namespace {

constexpr long kRest = 2;

// Throws the failure of a call on the port.
void checkPort(HRESULT code, const com::ComPtr<IKelStream>& port) {
    if (SUCCEEDED(code)) return;
    VARIANT_BOOL open = VARIANT_FALSE;
    if (SUCCEEDED(port->get_IsOpen(&open)) && !com::isTrue(open)) {
        throw NoAnswer(L"The port is not open");
    }
    com::check(code, port);
}

}  // namespace

QuietPort::QuietPort(IKelCommunicator* link, const HomeThread& home) : home_(home) {
    call([&] {
        com::ComPtr<IKelStream> port;
        com::check(link->get_Port(&port), link);
        if (!port) throw NoAnswer(L"The link has no port");
        checkPort(port->get_EchoWindow(&echoWindow_), port);
        checkPort(port->put_EchoWindow(0), port);
        port_ = port;
    });
}

QuietPort::~QuietPort() {
    try {
        call([&] {
            long window = 0;
            if (echoWindow_ != 0 && SUCCEEDED(port_->get_EchoWindow(&window)) && window == 0) {
                port_->put_EchoWindow(echoWindow_);
            }
            port_.Reset();
        });
    } catch (const com::Error&) {
        // The thread of the link has ended, and its port cannot be touched any more.
        port_.Detach();
    }
}

void QuietPort::write(std::string_view bytes) {
    const com::Variant data = byteArray(bytes);
    VARIANT_BOOL written = VARIANT_FALSE;
    call([&] { checkPort(port_->WriteBuffer(data.get(), 0, &written), port_); });
    if (!com::isTrue(written)) throw NoAnswer(L"The port takes no bytes");
}

std::string QuietPort::take() {
    com::Variant data;
    call([&] {
        long count = 0;
        VARIANT_BOOL complete = VARIANT_FALSE;
        checkPort(port_->get_BytesInReadBuffer(&count), port_);
        if (count > 0) checkPort(port_->ReadBuffer(count, 0, data.put(), &complete), port_);
    });
    return data.type() == VT_EMPTY ? std::string() : bytesOf(data.get());
}

void QuietPort::rest() {
    if (!home_.isCurrent()) return Sleep(kRest);
    checkPort(port_->Sleep(kRest), port_);
}

void QuietPort::sendBreak(long duration) {
    call([&] { checkPort(port_->SendBreak(duration), port_); });
}

long QuietPort::baudRate() {
    long rate = 0;
    call([&] { checkPort(port_->get_BaudRate(&rate), port_); });
    return rate;
}

void QuietPort::setBaudRate(long rate) {
    call([&] { checkPort(port_->put_BaudRate(rate), port_); });
}

template <class Work>
void QuietPort::call(Work&& work) {
    home_.run(work);
}

}  // namespace kel::bench
