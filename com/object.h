#pragma once
// The base of every COM object: a component lists its interfaces and writes its methods.
//
//     class Counter final
//         : public com::Object<Counter, com::Dual<ICounter>, com::Plain<IResettable>> {
//     public:
//         static constexpr com::ClassDescription kClass{&CLSID_Counter, L"KelUtils.Counter.1"};
//         STDMETHODIMP get_Value(long* value) override {
//             return guarded<ICounter>([&] { com::out(value) = value_; });
//         }
//         ...
//
//     com::createInstance<Counter>(outer, iid, result);

#include <windows.h>

#include <objsafe.h>
#include <ocidl.h>
#include <oleauto.h>

#include <memory>
#include <type_traits>

#include "com/dispatch.h"
#include "com/error.h"
#include "com/module.h"

namespace kel::com {

// What class information an object gives. Objects that no client creates have no identifier; their
// errors name the ProgID of the class that gives them out as their source.
struct ClassDescription {
    const CLSID* identifier = nullptr;
    const wchar_t* programIdentifier = nullptr;
};

// An interface of an object with those of its bases that clients may ask for by name.
template <class Interface, class... Bases>
class Plain : public Interface {
protected:
    void* find(REFIID iid) {
        const bool known = (iid == __uuidof(Interface)) || ((iid == __uuidof(Bases)) || ...);
        return known ? static_cast<Interface*>(this) : nullptr;
    }
};

// The same for a dual interface: answers late-bound calls through the type library.
template <class Interface, class... Bases>
class Dual : public Plain<Interface, Bases..., IDispatch> {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        return guardLateBound([&] { out(count) = 1; });
    }

    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** type) override {
        return guardLateBound([&] {
            out(type) = nullptr;
            if (index != 0) throw Error(DISP_E_BADINDEX);
            *type = typeInfo(__uuidof(Interface)).Detach();
        });
    }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                               DISPID* identifiers) override {
        return guardLateBound([&] {
            if (!names || !identifiers || count == 0) return E_INVALIDARG;
            return DispGetIDsOfNames(typeInfo(__uuidof(Interface)).Get(), names, count,
                                     identifiers);
        });
    }

    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        return guardLateBound([&] {
            if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
            if (!arguments) return E_INVALIDARG;
            return invoke(typeInfo(__uuidof(Interface)).Get(), static_cast<Interface*>(this),
                          member, flags, *arguments, result, exception, badArgument);
        });
    }
};

// What an object has apart from its interfaces: its count, its outer object, its share in the
// module's lock count. The count starts at one, for the creator.
class ObjectCore {
public:
    ObjectCore(const ObjectCore&) = delete;
    ObjectCore& operator=(const ObjectCore&) = delete;

    // The object's own IUnknown; an outer object holds this one.
    IUnknown* inner() { return &inner_; }

    // The IUnknown that the object's identity is: the outer object's, or its own.
    IUnknown* controlling() { return outer_ ? outer_ : &inner_; }

    // Called once by the creator, before anything else.
    void aggregate(IUnknown* outer) { outer_ = outer; }

protected:
    ObjectCore() : inner_(*this) { lockModule(); }
    virtual ~ObjectCore() { unlockModule(); }

    virtual void* findInterface(REFIID iid) = 0;

    // Asked for what findInterface does not know: gives an interface of another object, with the
    // reference that the caller owns. By default there is none.
    virtual HRESULT findElsewhere(REFIID iid, void** result);

private:
    class Inner final : public IUnknown {
    public:
        explicit Inner(ObjectCore& object) : object_(object) {}
        STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
        STDMETHODIMP_(ULONG) AddRef() override;
        STDMETHODIMP_(ULONG) Release() override;

    private:
        ObjectCore& object_;
    };

    Inner inner_;
    IUnknown* outer_ = nullptr;
    LONG references_ = 1;
};

// Holds a reference on an object, and on the outer object that it is part of, for the time of a
// call out: the host may drop its last one.
class KeepAlive {
public:
    explicit KeepAlive(ObjectCore& object) : object_(object.controlling()) {}

private:
    ComPtr<IUnknown> object_;
};

// True for classes that clients create, which have class information in the type library.
inline bool isCreatable(const ClassDescription& description) {
    return description.identifier != nullptr;
}

// Class information of a component, from the type library.
HRESULT classInfo(const ClassDescription& description, ITypeInfo** type);
HRESULT defaultSource(const ClassDescription& description, DWORD kind, GUID* identifier);

// Refuses to be safe for scripts or data that nobody trusts: components reach files, settings and
// the instrument, whoever calls them. `isKnown`: the interface in question is the object's.
HRESULT safetyOptions(const ClassDescription& description, bool isKnown, DWORD* supported,
                      DWORD* enabled);
HRESULT refuseSafety(const ClassDescription& description, bool isKnown, DWORD wanted);

template <class Derived, class... Interfaces>
class Object : public Interfaces...,
               public ISupportErrorInfo,
               public IProvideClassInfo2,
               public IObjectSafety,
               public ObjectCore {
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        return controlling()->QueryInterface(iid, result);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return controlling()->AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return controlling()->Release(); }

    // Late-bound calls tell their failures by themselves.
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid != IID_IDispatch && findInterface(iid) ? S_OK : S_FALSE;
    }

    STDMETHODIMP GetClassInfo(ITypeInfo** type) override {
        return classInfo(Derived::kClass, type);
    }
    STDMETHODIMP GetGUID(DWORD kind, GUID* identifier) override {
        return defaultSource(Derived::kClass, kind, identifier);
    }

    STDMETHODIMP GetInterfaceSafetyOptions(REFIID iid, DWORD* supported, DWORD* enabled) override {
        return safetyOptions(Derived::kClass, findInterface(iid), supported, enabled);
    }
    STDMETHODIMP SetInterfaceSafetyOptions(REFIID iid, DWORD wanted, DWORD) override {
        return refuseSafety(Derived::kClass, findInterface(iid), wanted);
    }

    // Second stage of construction, when the object may already be referenced. Throws.
    void finalConstruct() {}

protected:
    // The border of a method of one of the object's interfaces.
    template <class Interface, class Body>
    HRESULT guarded(Body&& body) noexcept {
        return guard(__uuidof(Interface), Derived::kClass.programIdentifier,
                     std::forward<Body>(body));
    }

    void* findInterface(REFIID iid) override {
        if (void* own = findOwn(iid)) return own;
        if (iid == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
        if (!isCreatable(Derived::kClass)) return nullptr;
        if (iid == IID_IProvideClassInfo || iid == IID_IProvideClassInfo2) {
            return static_cast<IProvideClassInfo2*>(this);
        }
        if (iid == IID_IObjectSafety) return static_cast<IObjectSafety*>(this);
        return nullptr;
    }

private:
    void* findOwn(REFIID iid) {
        void* found = nullptr;
        ((found = found ? found : Interfaces::find(iid)), ...);
        return found;
    }
};

// Makes an object. The result holds its one reference. Throws.
template <class Class, class... Arguments>
ComPtr<IUnknown> createObject(IUnknown* outer, Class** object, Arguments&&... arguments) {
    auto* created = new Class(std::forward<Arguments>(arguments)...);
    ComPtr<IUnknown> owner;
    // Takes over the creator's reference. Not by Attach: some tool chains' adds one of its own.
    *owner.GetAddressOf() = created->inner();
    created->aggregate(outer);
    created->finalConstruct();
    if (object) *object = created;
    return owner;
}

// Makes an object that no outer object holds. Throws.
template <class Class, class... Arguments>
ComPtr<Class> makeObject(Arguments&&... arguments) {
    Class* object = nullptr;
    const ComPtr<IUnknown> owner =
        createObject<Class>(nullptr, &object, std::forward<Arguments>(arguments)...);
    return object;
}

// The instance creator of a class table row. `result` is not null and has been set to null.
template <class Class>
HRESULT createInstance(IUnknown* outer, REFIID iid, void** result) noexcept {
    return guard(iid, Class::kClass.programIdentifier,
                 [&] { return createObject<Class>(outer, nullptr)->QueryInterface(iid, result); });
}

}  // namespace kel::com
