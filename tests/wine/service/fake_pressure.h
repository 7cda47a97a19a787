#pragma once
// The collector of pressure samples as a double.

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/service/answers.h"

namespace kel::test {

class FakePressure final : public com::Object<FakePressure, com::Dual<IPressureAccess>> {
public:
    static constexpr com::ClassDescription kClass{};

    Answers answers{{"NewData", {0}}};

    STDMETHODIMP Attach(IKelCommunicator* link) override { return link_ = link, S_OK; }
    STDMETHODIMP StartCollection(VARIANT_BOOL* result) override {
        return answers.give("StartCollection", result);
    }
    STDMETHODIMP StopCollection(VARIANT_BOOL* result) override {
        return answers.give("StopCollection", result);
    }
    STDMETHODIMP get_NewData(VARIANT_BOOL* isNew) override {
        return answers.give("NewData", isNew);
    }
    STDMETHODIMP get_CurrentPressure(double* pressure) override {
        return answers.give("CurrentPressure", pressure);
    }
    STDMETHODIMP get_MeanPressure(double* pressure) override {
        return answers.give("MeanPressure", pressure);
    }
    STDMETHODIMP get_Offset(double* pressure) override { return answers.give("Offset", pressure); }

private:
    com::ComPtr<IKelCommunicator> link_;
};

}  // namespace kel::test
