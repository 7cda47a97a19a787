#pragma once
// The access to the compass as a double.

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/service/answers.h"

namespace kel::test {

class FakeCompass final : public com::Object<FakeCompass, com::Dual<ICompassAccess>> {
public:
    static constexpr com::ClassDescription kClass{};

    Answers answers{{"Calibrating", {0}}};

    STDMETHODIMP Attach(IKelCommunicator* link) override { return link_ = link, S_OK; }
    STDMETHODIMP get_Present(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Calibrating(VARIANT_BOOL* calibrating) override {
        return answers.give("Calibrating", calibrating);
    }
    STDMETHODIMP StopCalibration() override { return answers["Calibrating"] = {0}, S_OK; }
    STDMETHODIMP get_Heading(double* degrees) override { return answers.give("Heading", degrees); }
    STDMETHODIMP get_Pitch(double* degrees) override { return answers.give("Pitch", degrees); }
    STDMETHODIMP get_Roll(double* degrees) override { return answers.give("Roll", degrees); }
    STDMETHODIMP Initialise(VARIANT_BOOL* result) override {
        return answers.give("Initialise", result);
    }
    STDMETHODIMP StartCalibration(VARIANT_BOOL* result) override {
        answers.give("StartCalibration", result);
        return answers["Calibrating"] = {double(*result)}, S_OK;
    }
    STDMETHODIMP get_Busy(VARIANT_BOOL* busy) override { return answers.give("Busy", busy); }
    STDMETHODIMP ReadScores(long* horizontal, long* vertical, double* field,
                            VARIANT_BOOL* result) override {
        answers.give("HorizontalScore", horizontal);
        answers.give("VerticalScore", vertical);
        answers.give("FieldStrength", field);
        return answers.give("ReadScores", result);
    }

private:
    com::ComPtr<IKelCommunicator> link_;
};

}  // namespace kel::test
