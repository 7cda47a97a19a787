#pragma once
// The access to the compass as a double.

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::test {

class FakeCompass final : public com::Object<FakeCompass, com::Dual<ICompassAccess>> {
public:
    static constexpr com::ClassDescription kClass{};

    // Called inside each call, with its name; it fails as this throws.
    std::function<void(const std::string& call)> onCall = [](const std::string&) {};
    bool isPresent = true;
    bool starts = true;
    bool hasScores = true;
    std::atomic<bool> isCalibrating = false;
    std::vector<std::array<double, 3>> readings;  // heading, pitch and roll
    std::atomic<std::size_t> readingsRead = 0;
    long horizontal = 0;
    long vertical = 0;
    double field = 0;

    STDMETHODIMP Attach(IKelCommunicator* link) override {
        return call("Attach", [&] { link_ = link; });
    }
    STDMETHODIMP get_Present(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Calibrating(VARIANT_BOOL* calibrating) override {
        return call("Calibrating", [&] { *calibrating = isCalibrating; });
    }
    STDMETHODIMP StopCalibration() override {
        return call("StopCalibration", [&] { isCalibrating = false; });
    }
    STDMETHODIMP get_Heading(double* degrees) override {
        return call("Heading", [&] { *degrees = readings[readingsRead][0]; });
    }
    STDMETHODIMP get_Pitch(double* degrees) override {
        return call("Pitch", [&] { *degrees = readings[readingsRead][1]; });
    }
    STDMETHODIMP get_Roll(double* degrees) override {
        return call("Roll", [&] {
            *degrees = readings[readingsRead][2];
            ++readingsRead;
        });
    }
    STDMETHODIMP Initialise(VARIANT_BOOL* result) override {
        return call("Initialise", [&] { *result = isPresent; });
    }
    STDMETHODIMP StartCalibration(VARIANT_BOOL* result) override {
        return call("StartCalibration", [&] { *result = isCalibrating = starts; });
    }
    STDMETHODIMP get_Busy(VARIANT_BOOL* busy) override {
        return call("Busy", [&] { *busy = readingsRead == readings.size(); });
    }
    STDMETHODIMP ReadScores(long* horizontalScore, long* verticalScore, double* fieldStrength,
                            VARIANT_BOOL* result) override {
        return call("ReadScores", [&] {
            *horizontalScore = horizontal;
            *verticalScore = vertical;
            *fieldStrength = field;
            *result = hasScores;
        });
    }

private:
    template <class Answer>
    HRESULT call(const char* name, Answer&& answer) {
        return guarded<ICompassAccess>([&] {
            onCall(name);
            answer();
        });
    }

    com::ComPtr<IKelCommunicator> link_;
};

}  // namespace kel::test
