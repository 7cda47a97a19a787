#pragma once
// Calibrates the compass.

#include "bench/link/access/access_object.h"
#include "bench/link/access/sample_stream.h"

namespace kel::bench {

// The port's bytes are its own while the calibration runs.
class CompassAccess final
    : public AccessObject<CompassAccess, ICompassAccess, com::Dual<ICompassAccess>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.CompassAccess.1"};

    STDMETHODIMP get_Present(VARIANT_BOOL* present) override;
    // False also once the instrument itself has left the calibration.
    STDMETHODIMP get_Calibrating(VARIANT_BOOL* calibrating) override;
    STDMETHODIMP StopCalibration() override;
    STDMETHODIMP get_Heading(double* degrees) override;
    STDMETHODIMP get_Pitch(double* degrees) override;
    STDMETHODIMP get_Roll(double* degrees) override;
    STDMETHODIMP Initialise(VARIANT_BOOL* result) override;
    STDMETHODIMP StartCalibration(VARIANT_BOOL* result) override;
    // False once for every reading that is newer than the last one told of.
    STDMETHODIMP get_Busy(VARIANT_BOOL* busy) override;
    STDMETHODIMP ReadScores(long* horizontal, long* vertical, double* field,
                            VARIANT_BOOL* result) override;

private:
    struct Attitude {
        double heading = 0;
        double pitch = 0;
        double roll = 0;
    };

    std::string ask(std::string_view command);
    void receive();
    HRESULT give(double Attitude::*angle, double* degrees);

    SampleStream readings_{home()};
    bool isPresent_ = false;
    bool isNew_ = false;
    Attitude attitude_;
};

}  // namespace kel::bench
