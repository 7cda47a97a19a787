#pragma once
// The base of the wrappers: an interface of the link, one line a method.

#include <functional>
#include <utility>

#include "com/object.h"
#include "com/text.h"
#include "hosts/trace/arguments.h"
#include "hosts/trace/invocation.h"
#include "hosts/trace/session.h"

namespace kel::trace {

// The names of the interfaces in recordings.
template <class Interface>
inline constexpr const char* kNameOf = nullptr;
template <>
inline constexpr const char* kNameOf<IKelStream> = "IKelStream";
template <>
inline constexpr const char* kNameOf<ISerialStream> = "ISerialStream";
template <>
inline constexpr const char* kNameOf<INetworkStream> = "INetworkStream";
template <>
inline constexpr const char* kNameOf<INetworkStream2> = "INetworkStream2";
template <>
inline constexpr const char* kNameOf<IKelCommunicator> = "IKelCommunicator";
template <>
inline constexpr const char* kNameOf<ICollection> = "ICollection";
template <>
inline constexpr const char* kNameOf<IFirmwareUploader> = "IFirmwareUploader";
template <>
inline constexpr const char* kNameOf<IFirmwareUploader2> = "IFirmwareUploader2";
template <>
inline constexpr const char* kNameOf<IPressureAccess> = "IPressureAccess";
template <>
inline constexpr const char* kNameOf<ICompassAccess> = "ICompassAccess";
template <>
inline constexpr const char* kNameOf<IRecorderAccess> = "IRecorderAccess";

template <class Interface, class... Arguments>
std::type_identity<Interface> interfaceOf(HRESULT (STDMETHODCALLTYPE Interface::*)(Arguments...));

// Parts of an invocation that methods of the same form share, whatever class they are of.
template <class Interface, class... Arguments>
void setForward(Invocation& made, Interface* object,
                HRESULT (STDMETHODCALLTYPE Interface::*method)(Arguments...),
                Arguments... arguments) {
    made.forward = [=] { return (object->*method)(arguments...); };
}

template <class... Arguments>
void setArguments(Invocation& made, Arguments... arguments) {
    made.in = [=] {
        Json::Array values;
        (addArgument<Arguments>(values, arguments), ...);
        return values;
    };
    made.out = [=] {
        Json::Array values;
        (addResult<Arguments>(values, arguments), ...);
        return values;
    };
    made.clear = [=] { (clearResult<Arguments>(arguments), ...); };
    made.give = [=](const Json::Array& values) {
        [[maybe_unused]] std::size_t index = 0;
        (giveResult<Arguments>(values, index, arguments), ...);
    };
}

// The inner object answers for every interface that the wrapper does not have, and those calls are
// not traced (IBinaryCommunicator). Its way of being marshalled would lead around
// the wrapper and is not offered.
template <class Derived, class Interface, class... Bases>
class Traced : public com::Object<Derived, com::Dual<Interface, Bases...>, com::Plain<ITraced>>,
               public TracedObject {
public:
    static constexpr com::ClassDescription kClass{};

    Traced(std::shared_ptr<Session> session, std::string name, IUnknown* inner)
        : TracedObject(std::move(session), std::move(name), inner, com::ObjectCore::inner()) {
        if (inner) com::check(inner->QueryInterface(IID_PPV_ARGS(&typedInner_)));
    }

    IUnknown* wrapper() override { return this->controlling(); }
    STDMETHODIMP_(TracedObject*) traced() override { return this; }

protected:
    // Null in a replay.
    Interface* wrapped() const { return typedInner_.Get(); }

    // The whole of a method that is told, answered or forwarded as it is.
    template <auto method, Treatment treatment = Treatment::kCompared, class... Arguments>
    HRESULT call(const char* name, Arguments... arguments) noexcept {
        return guardedCall([&] { return invocation<method, treatment>(name, arguments...); });
    }

    // The same for a method that changes something of its invocation.
    HRESULT guardedCall(const std::function<Invocation()>& make) noexcept {
        HRESULT result = S_OK;
        DWORD lastError = GetLastError();
        {
            const com::KeepAlive alive(*this);
            result = this->template guarded<Interface>([&] {
                const Invocation made = make();
                SetLastError(lastError);
                const HRESULT code = session().perform(made);
                lastError = GetLastError();
                return code;
            });
        }
        SetLastError(lastError);
        return result;
    }

    template <auto method, Treatment treatment = Treatment::kCompared, class... Arguments>
    Invocation invocation(const char* name, Arguments... arguments) {
        using Declaring = typename decltype(interfaceOf(method))::type;
        Invocation made{*this, __uuidof(Declaring), kNameOf<Declaring>, name, treatment, {}};
        setForward<Declaring, Arguments...>(made, wrapped(), method, arguments...);
        setArguments<Arguments...>(made, arguments...);
        return made;
    }

    HRESULT findElsewhere(REFIID iid, void** result) override {
        if (!innerObject() || iid == IID_IMarshal) return E_NOINTERFACE;
        return innerObject()->QueryInterface(iid, result);
    }

private:
    com::ComPtr<Interface> typedInner_;
};

// A wrapper that goes to other threads as what it wraps does, in a replay as what was wrapped: a
// host chooses its threads by that.
template <class Derived, class Interface>
class MobileTraced : public Traced<Derived, Interface> {
    using Base = Traced<Derived, Interface>;

public:
    MobileTraced(std::shared_ptr<Session> session, std::string name, IUnknown* inner,
                 const Mobility& mobility)
        : Base(std::move(session), std::move(name), inner), mobility_(mobility) {}
    void finalConstruct() { passage_.open(mobility_, this->controlling()); }

    Mobility mobility() const override { return mobility_; }

protected:
    HRESULT findElsewhere(REFIID iid, void** result) override {
        if (Passage::isAskedFor(iid)) return passage_.give(iid, this->controlling(), result);
        return Base::findElsewhere(iid, result);
    }

private:
    const Mobility mobility_;
    Passage passage_;
};

}  // namespace kel::trace
