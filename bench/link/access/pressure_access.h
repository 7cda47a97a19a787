#pragma once
// Collects pressures.

#include "bench/link/access/access_object.h"
#include "bench/link/access/sample_stream.h"

namespace kel::bench {

// The port's bytes are its own from the start of a collection to its stop.
class PressureAccess final
    : public AccessObject<PressureAccess, IPressureAccess, com::Dual<IPressureAccess>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.PressureAccess.1"};

    // A new collection begins; one that runs is ended.
    STDMETHODIMP StartCollection(VARIANT_BOOL* result) override;
    STDMETHODIMP StopCollection(VARIANT_BOOL* result) override;
    STDMETHODIMP get_NewData(VARIANT_BOOL* newData) override;
    // Both are 0 before the first sample of a collection.
    STDMETHODIMP get_CurrentPressure(double* pressure) override;
    STDMETHODIMP get_MeanPressure(double* pressure) override;
    // While pressures are collected, that of the start: the instrument takes no questions then.
    STDMETHODIMP get_Offset(double* offset) override;

private:
    double askOffset();
    void count();

    SampleStream samples_{home()};
    bool isNew_ = false;
    double current_ = 0;
    double sum_ = 0;
    long number_ = 0;
    double offset_ = 0;
};

}  // namespace kel::bench
