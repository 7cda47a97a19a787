#pragma once
// The recorder's events as the dialog receives them.

#include <windows.h>

#include <ocidl.h>

#include <memory>

#include "com/event_sink.h"
#include "dialogs/service/recorder_board.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

// Called on whatever thread the recorder works on.
class RecorderEvents final : public com::Object<RecorderEvents, com::EventReceiver<>> {
public:
    static constexpr com::ClassDescription kClass{};

    explicit RecorderEvents(std::shared_ptr<RecorderBoard> board) : board_(std::move(board)) {}
    // Throws.
    void finalConstruct();

private:
    HRESULT received(DISPID event, DISPPARAMS* arguments, VARIANT* result) override;
    void* findInterface(REFIID iid) override;
    HRESULT findElsewhere(REFIID iid, void** result) override;
    bool replaces(const std::wstring& fileName);

    std::shared_ptr<RecorderBoard> board_;
    com::ComPtr<IUnknown> marshaler_;
};

// The events arrive as long as it lives.
class RecorderConnection {
public:
    // Throws com::Error.
    RecorderConnection(const com::ComPtr<IRecorderAccess>& recorder,
                       std::shared_ptr<RecorderBoard> board);
    ~RecorderConnection() { point_->Unadvise(cookie_); }
    RecorderConnection(const RecorderConnection&) = delete;
    RecorderConnection& operator=(const RecorderConnection&) = delete;

private:
    com::ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

}  // namespace kel::service
