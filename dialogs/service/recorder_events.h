#pragma once
// The recorder's events as the dialog receives them.

#include <windows.h>

#include <ocidl.h>

#include <memory>

#include "com/object.h"
#include "dialogs/service/recorder_board.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

// Called on whatever thread the recorder works on.
class RecorderEvents final : public com::Object<RecorderEvents, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};

    explicit RecorderEvents(std::shared_ptr<RecorderBoard> board) : board_(std::move(board)) {}
    // Throws.
    void finalConstruct();

    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID, WORD, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO*, UINT*) override;

private:
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
