#pragma once
// The collector of pressure samples as a double.

#include <atomic>
#include <functional>
#include <string>

#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::test {

class FakePressure final : public com::Object<FakePressure, com::Dual<IPressureAccess>> {
public:
    static constexpr com::ClassDescription kClass{};

    // Called inside each call, with its name; it fails as this throws.
    std::function<void(const std::string& call)> onCall = [](const std::string&) {};
    bool starts = true;
    bool stops = true;
    std::atomic<int> samples = 0;  // that are new
    double current = 0;
    double mean = 0;
    double offset = 0;

    STDMETHODIMP Attach(IKelCommunicator* link) override {
        return call("Attach", [&] { link_ = link; });
    }
    STDMETHODIMP StartCollection(VARIANT_BOOL* result) override {
        return call("StartCollection", [&] { *result = starts; });
    }
    STDMETHODIMP StopCollection(VARIANT_BOOL* result) override {
        return call("StopCollection", [&] { *result = stops; });
    }
    STDMETHODIMP get_NewData(VARIANT_BOOL* isNew) override {
        return call("NewData", [&] { *isNew = samples > 0 && samples--; });
    }
    STDMETHODIMP get_CurrentPressure(double* pressure) override {
        return call("CurrentPressure", [&] { *pressure = current; });
    }
    STDMETHODIMP get_MeanPressure(double* pressure) override {
        return call("MeanPressure", [&] { *pressure = mean; });
    }
    STDMETHODIMP get_Offset(double* pressure) override {
        return call("Offset", [&] { *pressure = offset; });
    }

private:
    template <class Answer>
    HRESULT call(const char* name, Answer&& answer) {
        return guarded<IPressureAccess>([&] {
            onCall(name);
            answer();
        });
    }

    com::ComPtr<IKelCommunicator> link_;
};

}  // namespace kel::test
