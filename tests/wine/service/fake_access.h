#pragma once
// The accesses to the compass and to the collector of pressure samples as doubles.

#include "com/object.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/service/answers.h"

namespace kel::test {

class FakeCompass final : public com::Object<FakeCompass, com::Dual<ICompassAccess>> {
public:
    static constexpr com::ClassDescription kClass{};

    Answers answers{{"Calibrating", {0}}};

    STDMETHODIMP Attach(IKelCommunicator*) override { return S_OK; }
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
};

class FakePressure final : public com::Object<FakePressure, com::Dual<IPressureAccess>> {
public:
    static constexpr com::ClassDescription kClass{};

    Answers answers{{"NewData", {0}}};

    STDMETHODIMP Attach(IKelCommunicator*) override { return S_OK; }
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
};

}  // namespace kel::test
