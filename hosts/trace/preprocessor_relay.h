#pragma once
// Stands between the link and the host's preprocessor, to tell which scripts the link runs.

#include "com/object.h"
#include "hosts/trace/session.h"
#include "interfaces/KelUtils.h"

namespace kel::trace {

// For interfaces beyond IPreprocessor the host's object answers itself.
class PreprocessorRelay final : public com::Object<PreprocessorRelay, com::Dual<IPreprocessor>> {
public:
    static constexpr com::ClassDescription kClass{};

    // `link` is the traced communicator that the preprocessor was put on.
    PreprocessorRelay(std::shared_ptr<Session> session, std::string link, IPreprocessor* target)
        : session_(std::move(session)), link_(std::move(link)), target_(target) {}

    IPreprocessor* target() const { return target_.Get(); }

    STDMETHODIMP get_ParentWindow(long* window) override {
        return target_->get_ParentWindow(window);
    }
    STDMETHODIMP put_ParentWindow(long window) override {
        return target_->put_ParentWindow(window);
    }
    STDMETHODIMP PreprocessAndRun(BSTR script, VARIANT_BOOL* result) override;

protected:
    HRESULT findElsewhere(REFIID iid, void** result) override {
        return target_->QueryInterface(iid, result);
    }

private:
    const std::shared_ptr<Session> session_;
    const std::string link_;
    const com::ComPtr<IPreprocessor> target_;
};

}  // namespace kel::trace
