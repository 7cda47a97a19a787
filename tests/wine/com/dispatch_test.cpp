// Late-bound calls as script languages make them, on the doubles of the link: their log shows what
// arrived.
#include <gtest/gtest.h>

#include "com/variant.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

using com::ComPtr;
using com::Variant;

constexpr DISPID kLinkPort = 6;
constexpr DISPID kWaitForString = 9;
constexpr DISPID kBaudRate = 12;
constexpr DISPID kLogFile = 13;
constexpr DISPID kEcho = 15;
constexpr DISPID kSleep = 17;
constexpr DISPID kIdleProcessing = 18;

constexpr WORD kPut = DISPATCH_PROPERTYPUT;
constexpr WORD kPutRef = DISPATCH_PROPERTYPUTREF;

// Calls a member with arguments in their reading order.
HRESULT call(IDispatch* object, DISPID member, WORD flags, std::vector<VARIANT> arguments,
             VARIANT* result = nullptr, EXCEPINFO* exception = nullptr) {
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = flags & (kPut | kPutRef);
    DISPPARAMS parameters = {reversed.data(), isPut ? &put : nullptr,
                             static_cast<UINT>(reversed.size()), isPut ? 1u : 0u};
    return object->Invoke(member, IID_NULL, 0, flags, &parameters, result, exception, nullptr);
}

VARIANT raw(VARTYPE type, void* pointer) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    value.byref = pointer;
    return value;
}

const Variant kRate(9600L);
const Variant kMissing = [] {
    VARIANT value = raw(VT_ERROR, nullptr);
    value.scode = DISP_E_PARAMNOTFOUND;
    return Variant(value);
}();

TEST(Dispatch, PutsAcceptWhatCanBeConverted) {
    const struct {
        DISPID member;
        WORD flags;
        Variant value;
        const char* call;
    } rows[] = {
        {kBaudRate, kPut, kRate, "BaudRate = 9600\n"},
        {kBaudRate, kPut, kRate.convertedTo(VT_I2), "BaudRate = 9600\n"},
        {kBaudRate, kPut, kRate.convertedTo(VT_I8), "BaudRate = 9600\n"},
        {kBaudRate, kPut, kRate.convertedTo(VT_UI4), "BaudRate = 9600\n"},
        {kBaudRate, kPut, kRate.convertedTo(VT_R8), "BaudRate = 9600\n"},
        {kBaudRate, kPut, Variant(L"9600"), "BaudRate = 9600\n"},
        {kBaudRate, kPutRef, kRate, "BaudRate = 9600\n"},
        {kBaudRate, kPut | kPutRef, kRate, "BaudRate = 9600\n"},
        {kBaudRate, kPut, Variant(L"fast"), ""},
        {kIdleProcessing, kPut, Variant(true), "IdleProcessing = -1\n"},
        {kIdleProcessing, kPut, Variant(1L), "IdleProcessing = -1\n"},
        {kIdleProcessing, kPut, Variant(2L).convertedTo(VT_UI1), "IdleProcessing = -1\n"},
        {kIdleProcessing, kPut, Variant(-1L).convertedTo(VT_I2), "IdleProcessing = -1\n"},
        {kIdleProcessing, kPut, Variant(256L).convertedTo(VT_R8), "IdleProcessing = -1\n"},
        {kIdleProcessing, kPut, Variant(L"True"), "IdleProcessing = -1\n"},
        {kIdleProcessing, kPut, Variant(L"0"), "IdleProcessing = 0\n"},
        {kIdleProcessing, kPut, Variant(0L), "IdleProcessing = 0\n"},
        {kIdleProcessing, kPut, Variant(), "IdleProcessing = 0\n"},
        {kIdleProcessing, kPut, Variant(L"maybe"), ""},
        {kLogFile, kPut, Variant(L"a b"), "LogFile = \"a b\"\n"},
        {kLogFile, kPut, Variant(12L), "LogFile = \"12\"\n"},
    };
    FakeLink link;
    for (const auto& row : rows) {
        EXPECT_EQ(call(link.port(), row.member, row.flags, {row.value.get()}),
                  *row.call ? S_OK : DISP_E_TYPEMISMATCH);
        EXPECT_EQ(link.takeWork(), row.call) << "type " << row.value.type();
    }
}

TEST(Dispatch, ObjectsArePutEitherWayAndManyValuesStandForNone) {
    FakeLink link;
    for (const WORD flags : {kPut, kPutRef}) {
        const Variant port(link.port());
        EXPECT_EQ(call(link.communicator(), kLinkPort, flags, {port.get()}), S_OK);
        EXPECT_EQ(link.takeWork(), "Link.Port = serial1\n");
        VARIANT null = raw(VT_NULL, nullptr);
        for (const VARIANT& none : {raw(VT_EMPTY, nullptr), null, kMissing.get(),
                                    raw(VT_DISPATCH, nullptr), raw(VT_VARIANT | VT_BYREF, &null)}) {
            EXPECT_EQ(call(link.communicator(), kLinkPort, flags, {none}), S_OK) << none.vt;
            EXPECT_EQ(link.takeWork(), "Link.Port = nothing\n") << none.vt;
        }
        EXPECT_EQ(call(link.communicator(), kLinkPort, flags, {kRate.get()}), DISP_E_TYPEMISMATCH);
    }
    EXPECT_EQ(link.takeWork(), "");
}

// A script's bare statement calls it as a method.
TEST(Dispatch, PropertiesAreReadHoweverTheyAreCalled) {
    FakeLink link;
    for (const WORD flags :
         {DISPATCH_PROPERTYGET, DISPATCH_METHOD, DISPATCH_PROPERTYGET | DISPATCH_METHOD}) {
        Variant rate;
        EXPECT_EQ(call(link.port(), kBaudRate, flags, {}, rate.put()), S_OK) << flags;
        EXPECT_EQ(rate.toText(), "9600");
    }
    EXPECT_EQ(call(link.port(), kBaudRate, DISPATCH_METHOD, {kRate.get()}), DISP_E_BADPARAMCOUNT);
}

TEST(Dispatch, ReferencesAreAcceptedForValues) {
    FakeLink link;
    long rate = 2400;
    IDispatch* port = link.port();
    VARIANT text = Variant(L"19200").release();
    EXPECT_EQ(call(link.port(), kBaudRate, kPut, {raw(VT_I4 | VT_BYREF, &rate)}), S_OK);
    EXPECT_EQ(call(link.port(), kBaudRate, kPut, {raw(VT_VARIANT | VT_BYREF, &text)}), S_OK);
    EXPECT_EQ(call(link.communicator(), kLinkPort, kPut, {raw(VT_DISPATCH | VT_BYREF, &port)}),
              S_OK);
    EXPECT_EQ(link.takeWork(), "BaudRate = 2400\nBaudRate = 19200\nLink.Port = serial1\n");
    VariantClear(&text);
}

TEST(Dispatch, OutParametersTakeAVariantOrTheirOwnType) {
    FakeLink link;
    link.reply = L"answer";
    const Variant text(L">");
    const Variant timeout(5L);
    Variant result;
    Variant held(L"old");
    VARIANT target = held.release();
    EXPECT_EQ(call(link.port(), kWaitForString, DISPATCH_METHOD,
                   {text.get(), timeout.get(), text.get(), raw(VT_VARIANT | VT_BYREF, &target)},
                   result.put()),
              S_OK);
    EXPECT_EQ(target.vt, VT_BSTR);
    EXPECT_EQ(Variant(target).toText(), "answer");
    EXPECT_EQ(result.type(), VT_BOOL);

    com::Bstr direct;
    EXPECT_EQ(call(link.port(), kWaitForString, DISPATCH_METHOD,
                   {text.get(), timeout.get(), text.get(), raw(VT_BSTR | VT_BYREF, direct.put())}),
              S_OK);
    EXPECT_EQ(direct.view(), L"answer");

    // A failing call leaves it as it is.
    link.failCall(1, E_ABORT);
    EXPECT_EQ(call(link.port(), kWaitForString, DISPATCH_METHOD,
                   {text.get(), timeout.get(), text.get(), raw(VT_VARIANT | VT_BYREF, &target)}),
              DISP_E_EXCEPTION);
    EXPECT_EQ(Variant(target).toText(), "answer");
    VariantClear(&target);
}

TEST(Dispatch, ArgumentsMayBeNamed) {
    FakeLink link;
    std::wstring words[] = {L"waitforstring", L"sStopText", L"NTIMEOUT"};
    LPOLESTR names[] = {words[0].data(), words[1].data(), words[2].data()};
    DISPID identifiers[3];
    ASSERT_EQ(link.port()->GetIDsOfNames(IID_NULL, names, 3, 0, identifiers), S_OK);
    EXPECT_EQ(identifiers[0], kWaitForString);
    const Variant stop(L"stop");
    const Variant text(L"text");
    com::Bstr reply;
    // The named ones first, then the others from the last to the first.
    VARIANT arguments[] = {stop.get(), kRate.get(), raw(VT_BSTR | VT_BYREF, reply.put()),
                           text.get()};
    DISPID named[] = {identifiers[1], identifiers[2], 3};
    std::swap(arguments[0], arguments[2]);
    std::swap(named[0], named[2]);
    DISPPARAMS parameters = {arguments, named, 4, 3};
    EXPECT_EQ(link.port()->Invoke(kWaitForString, IID_NULL, 0, DISPATCH_METHOD, &parameters,
                                  nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(link.takeWork(), "WaitForString \"text\" 9600 \"stop\"\n");
    std::wstring unknown = L"sNothing";
    LPOLESTR wrong[] = {names[0], unknown.data()};
    EXPECT_EQ(link.port()->GetIDsOfNames(IID_NULL, wrong, 2, 0, identifiers), DISP_E_UNKNOWNNAME);
}

TEST(Dispatch, SurplusArgumentsGoToTheDefaultMemberOfAnObject) {
    const auto preprocessor = kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
    com::check(preprocessor->put_Variable(com::Bstr(L"a").get(), com::Bstr(L"5").get()));
    constexpr DISPID kVariables = 1010;
    for (const Variant& index : {Variant(0L), Variant(L"A")}) {
        Variant value;
        EXPECT_EQ(call(preprocessor.Get(), kVariables, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                       {index.get()}, value.put()),
                  S_OK);
        EXPECT_EQ(value.toText(), "5");
    }
    EXCEPINFO exception = {};
    EXPECT_EQ(call(preprocessor.Get(), kVariables, DISPATCH_PROPERTYGET, {Variant(1L).get()},
                   nullptr, &exception),
              DISP_E_EXCEPTION);
    EXPECT_EQ(com::view(exception.bstrDescription), L"There is no value with this index");
    for (const BSTR text : {exception.bstrDescription, exception.bstrSource})
        SysFreeString(text);
    constexpr DISPID kCommunicator = 1;
    EXPECT_EQ(call(preprocessor.Get(), kCommunicator, DISPATCH_PROPERTYGET, {kRate.get()}),
              DISP_E_BADPARAMCOUNT);
}

TEST(Dispatch, RefusesWhatTheTypeLibraryDoesNotKnow) {
    FakeLink link;
    const VARIANT& number = kRate.get();
    EXPECT_EQ(call(link.port(), 999, DISPATCH_METHOD, {}), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(link.port(), kSleep, kPut, {number}), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(link.port(), kSleep, DISPATCH_METHOD, {}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(call(link.port(), kSleep, DISPATCH_METHOD, {number, number}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(call(link.port(), kSleep, DISPATCH_METHOD, {Variant(L"long").get()}),
              DISP_E_TYPEMISMATCH);
    DISPPARAMS none = {};
    EXPECT_EQ(link.port()->Invoke(kSleep, IID_IUnknown, 0, DISPATCH_METHOD, &none, nullptr, nullptr,
                                  nullptr),
              DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(link.port()->Invoke(kSleep, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr,
                                  nullptr),
              E_INVALIDARG);
    ComPtr<ITypeInfo> type;
    EXPECT_EQ(link.port()->GetTypeInfo(1, 0, &type), DISP_E_BADINDEX);
    EXPECT_EQ(link.port()->GetTypeInfo(0, 0, nullptr), E_POINTER);
    EXPECT_EQ(link.port()->GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(link.takeWork(), "");
    EXPECT_FALSE(takeError());
}

TEST(Dispatch, FailuresOfAMemberFillTheException) {
    FakeLink link;
    link.failCall(1, E_ABORT);
    EXCEPINFO exception = {};
    EXPECT_EQ(call(link.port(), kEcho, DISPATCH_METHOD, {Variant(L"x").get()}, nullptr, &exception),
              DISP_E_EXCEPTION);
    EXPECT_EQ(exception.scode, E_ABORT);
    EXPECT_EQ(com::view(exception.bstrDescription), L"Call 1 fails on demand: serial1.Echo(\"x\")");
    for (const BSTR text :
         {exception.bstrDescription, exception.bstrSource, exception.bstrHelpFile}) {
        SysFreeString(text);
    }
}

}  // namespace
}  // namespace kel::test
