#pragma once
// The wrappers of the link's services: loading firmware, collecting pressures, the compass.

#include "hosts/trace/event_source.h"
#include "hosts/trace/kinds.h"
#include "hosts/trace/traced.h"

namespace kel::trace {

// A service works on the inner communicator, so that only what comes of its work is told.
template <class Derived, class Service, class... Bases>
class ServiceWrapper : public Traced<Derived, Service, Bases...> {
public:
    using Traced<Derived, Service, Bases...>::Traced;

    STDMETHODIMP Attach(IKelCommunicator* communicator) override {
        return this->guardedCall([&] {
            Invocation made = this->template invocation<&Service::Attach>("Attach", communicator);
            made.forward = [=, this] {
                return this->wrapped()->Attach(innerOf(communicator).Get());
            };
            return made;
        });
    }
};

template <class Derived, class Service, class... Bases>
class UploaderOf : public ServiceWrapper<Derived, Service, Bases...> {
    using Base = ServiceWrapper<Derived, Service, Bases...>;

public:
    using Base::Base;

    STDMETHODIMP put_PackageFile(VARIANT_BOOL package) override {
        return this->template call<&IFirmwareUploader::put_PackageFile>("put_PackageFile", package);
    }
    STDMETHODIMP Upload(BSTR path, VARIANT_BOOL hexadecimal, long baudRate, long accessCode,
                        VARIANT_BOOL* result) override {
        const com::KeepAlive alive(*this);
        const EventSource::Firing firing(events_);
        return this->template call<&IFirmwareUploader::Upload>("Upload", path, hexadecimal,
                                                               baudRate, accessCode, result);
    }
    STDMETHODIMP Verify(BSTR path, VARIANT_BOOL hexadecimal, VARIANT_BOOL* result) override {
        const com::KeepAlive alive(*this);
        const EventSource::Firing firing(events_);
        return this->template call<&IFirmwareUploader::Verify>("Verify", path, hexadecimal, result);
    }

    std::optional<EventAnswered> fire(const EventFired& event) override {
        return events_.fire(event);
    }

protected:
    void* findInterface(REFIID iid) override {
        if (iid != IID_IConnectionPointContainer) return Base::findInterface(iid);
        return events_.isOffered() ? static_cast<IConnectionPointContainer*>(&events_) : nullptr;
    }

private:
    EventSource events_{*this, DIID__IFirmwareUploaderEvents};
};

class Uploader final : public UploaderOf<Uploader, IFirmwareUploader> {
public:
    using UploaderOf::UploaderOf;
};

// An uploader of firmware that comes in two files.
class PairUploader final : public UploaderOf<PairUploader, IFirmwareUploader2, IFirmwareUploader> {
public:
    using UploaderOf::UploaderOf;

    STDMETHODIMP put_CompanionFile(BSTR path) override {
        return call<&IFirmwareUploader2::put_CompanionFile>("put_CompanionFile", path);
    }
};

class PressureAccess final : public ServiceWrapper<PressureAccess, IPressureAccess> {
public:
    using ServiceWrapper::ServiceWrapper;

    STDMETHODIMP StartCollection(VARIANT_BOOL* result) override {
        return call<&IPressureAccess::StartCollection>("StartCollection", result);
    }
    STDMETHODIMP StopCollection(VARIANT_BOOL* result) override {
        return call<&IPressureAccess::StopCollection>("StopCollection", result);
    }
    STDMETHODIMP get_NewData(VARIANT_BOOL* newData) override {
        return call<&IPressureAccess::get_NewData, Treatment::kPolled>("get_NewData", newData);
    }
    STDMETHODIMP get_CurrentPressure(double* pressure) override {
        return call<&IPressureAccess::get_CurrentPressure, Treatment::kState>("get_CurrentPressure",
                                                                              pressure);
    }
    STDMETHODIMP get_MeanPressure(double* pressure) override {
        return call<&IPressureAccess::get_MeanPressure, Treatment::kState>("get_MeanPressure",
                                                                           pressure);
    }
    STDMETHODIMP get_Offset(double* offset) override {
        return call<&IPressureAccess::get_Offset, Treatment::kState>("get_Offset", offset);
    }
};

class CompassAccess final : public ServiceWrapper<CompassAccess, ICompassAccess> {
public:
    using ServiceWrapper::ServiceWrapper;

    STDMETHODIMP get_Present(VARIANT_BOOL* present) override {
        return call<&ICompassAccess::get_Present, Treatment::kState>("get_Present", present);
    }
    STDMETHODIMP get_Calibrating(VARIANT_BOOL* calibrating) override {
        return call<&ICompassAccess::get_Calibrating, Treatment::kState>("get_Calibrating",
                                                                         calibrating);
    }
    STDMETHODIMP StopCalibration() override {
        return call<&ICompassAccess::StopCalibration>("StopCalibration");
    }
    STDMETHODIMP get_Heading(double* degrees) override {
        return call<&ICompassAccess::get_Heading, Treatment::kState>("get_Heading", degrees);
    }
    STDMETHODIMP get_Pitch(double* degrees) override {
        return call<&ICompassAccess::get_Pitch, Treatment::kState>("get_Pitch", degrees);
    }
    STDMETHODIMP get_Roll(double* degrees) override {
        return call<&ICompassAccess::get_Roll, Treatment::kState>("get_Roll", degrees);
    }
    STDMETHODIMP Initialise(VARIANT_BOOL* result) override {
        return call<&ICompassAccess::Initialise>("Initialise", result);
    }
    STDMETHODIMP StartCalibration(VARIANT_BOOL* result) override {
        return call<&ICompassAccess::StartCalibration>("StartCalibration", result);
    }
    STDMETHODIMP get_Busy(VARIANT_BOOL* busy) override {
        return call<&ICompassAccess::get_Busy, Treatment::kState>("get_Busy", busy);
    }
    STDMETHODIMP ReadScores(long* horizontal, long* vertical, double* field,
                            VARIANT_BOOL* result) override {
        return call<&ICompassAccess::ReadScores>("ReadScores", horizontal, vertical, field, result);
    }
};

}  // namespace kel::trace
