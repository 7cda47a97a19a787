// What the communicator does with its port and its preprocessor.
#include "com/object.h"
#include "com/variant.h"
#include "tests/link/kit.h"

namespace kel::conformance {
namespace {

constexpr long kTimeout = 2000;

// Remembers the script that it is to run.
class Runner final : public com::Object<Runner, com::Dual<IPreprocessor>> {
public:
    static constexpr com::ClassDescription kClass{};

    std::wstring script;
    bool runsToEnd = true;

    STDMETHODIMP PreprocessAndRun(BSTR text, VARIANT_BOOL* result) override {
        return guarded<IPreprocessor>([&] {
            script = com::view(text);
            com::out(result) = com::variantBool(runsToEnd);
        });
    }
    STDMETHODIMP get_ParentWindow(long*) override { return E_NOTIMPL; }
    STDMETHODIMP put_ParentWindow(long) override { return E_NOTIMPL; }
};

bool isSame(IUnknown* left, IUnknown* right) {
    ComPtr<IUnknown> first, second;
    if (left) left->QueryInterface(IID_PPV_ARGS(&first));
    if (right) right->QueryInterface(IID_PPV_ARGS(&second));
    return first.Get() == second.Get();
}

ULONG references(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

void keepsItsPort(const Link& link) {
    const auto communicator = link.communicator();
    ComPtr<IKelStream> port;
    succeeded(communicator->get_Port(&port), "Port");
    expect(!port, "a new communicator to have no Port", "it has one");
    const Wire wire = link.closedWire();
    const ULONG before = references(wire.stream.Get());
    succeeded(communicator->put_Port(wire.stream.Get()), "putting Port");
    succeeded(communicator->get_Port(&port), "Port");
    expect(isSame(port.Get(), wire.stream.Get()), "Port to be the object that was put",
           "it is another one");
    succeeded(communicator->put_Port(nullptr), "putting no Port");
    port.Reset();
    succeeded(communicator->get_Port(&port), "Port");
    expect(!port, "Port to be nothing after nothing was put", "it is something");
    const ULONG after = references(wire.stream.Get());
    expect(after == before, "the stream to be let go: " + std::to_string(before) + " references",
           "it has " + std::to_string(after));
}

bool send(const WiredLink& wired, std::wstring_view command, bool waitsForOk, long timeout) {
    VARIANT_BOOL result = VARIANT_FALSE;
    succeeded(wired.communicator->SendCommand(Bstr(command).get(), com::variantBool(waitsForOk),
                                              timeout, &result),
              "SendCommand " + shown(command));
    return flag(result, "SendCommand");
}

bool waitFor(const WiredLink& wired, std::wstring_view text, long timeout, bool stopsOnPrompt) {
    VARIANT_BOOL result = VARIANT_FALSE;
    succeeded(wired.communicator->WaitForString(Bstr(text).get(), timeout,
                                                com::variantBool(stopsOnPrompt), &result),
              "the communicator's WaitForString");
    return flag(result, "the communicator's WaitForString");
}

void waitsForTheOk(const Link& link) {
    const WiredLink wired(link);
    const std::wstring& command = link.setup().command;
    // Twice: no command is taken for answered by what the one before left.
    for (int i = 0; i < 2; ++i) {
        expect(send(wired, command, true, kPatience),
               "SendCommand " + shown(command) + " to be true", "it is false");
        expect(!send(wired, L"no such command", true, kTimeout),
               "SendCommand of what the instrument refuses to be false", "it is true");
    }
}

void waitsForTexts(const Link& link) {
    const WiredLink wired(link);
    expect(send(wired, link.setup().command, false, 0), "SendCommand without waiting to be true",
           "it is false");
    expect(waitFor(wired, L"OK", kPatience, false), "WaitForString \"OK\" to be true afterwards",
           "it is false");
    wired.wire.settle();
    expect(send(wired, link.setup().command, false, 0), "SendCommand without waiting to be true",
           "it is false");
    const Watch watch;
    expect(!waitFor(wired, L"never said", 2 * kPatience, true),
           "WaitForString of what is never said to be false", "it is true");
    expect(!watch.patienceIsOver(), "WaitForString to give up when the prompt comes",
           "it went on for " + std::to_string(watch.elapsed()) + " ms");
}

void wakesTheInstrument(const Link& link) {
    const WiredLink wired(link);
    VARIANT_BOOL awake = VARIANT_FALSE;
    succeeded(wired.communicator->WakeUpInstrument(&awake), "WakeUpInstrument");
    expect(flag(awake, "WakeUpInstrument"), "WakeUpInstrument to be true", "it is false");
}

void addressesInUpperCase(const Link& link) {
    const WiredLink wired(link);
    succeeded(wired.communicator->put_SDI12Mode(VARIANT_TRUE), "putting SDI12Mode");
    send(wired, L"0m", false, 0);
    const auto reading = wired.wire.waitFor(L"0M", kPatience);
    expect(reading.found, "a command in upper case with SDI12Mode",
           "the echo is " + shown(reading.text));
}

void needsNoPort(const Link& link) {
    const auto communicator = link.communicator();
    VARIANT_BOOL result = VARIANT_TRUE;
    const HRESULT code =
        communicator->SendCommand(Bstr(L"x").get(), VARIANT_TRUE, kTimeout, &result);
    if (FAILED(code)) return failsWithReason(code, "SendCommand");
    expect(!flag(result, "SendCommand"), "SendCommand without a port to be false", "it is true");
}

void runsScriptFiles(const Link& link) {
    const auto communicator = link.communicator();
    const auto runner = com::makeObject<Runner>();
    IPreprocessor* const own = runner.Get();
    const ULONG before = references(own);
    succeeded(communicator->put_Preprocessor(own), "putting Preprocessor");
    ComPtr<IPreprocessor> preprocessor;
    succeeded(communicator->get_Preprocessor(&preprocessor), "Preprocessor");
    expect(isSame(preprocessor.Get(), own), "Preprocessor to be the object that was put",
           "it is another one");
    preprocessor.Reset();

    const TemporaryFile file;
    file.write("first\r\nsecond");
    const Bstr name = file.name();
    for (const bool runsToEnd : {true, false}) {
        VARIANT_BOOL result = VARIANT_FALSE;
        runner->runsToEnd = runsToEnd;
        runner->script.clear();
        succeeded(communicator->RunCommandFile(name.get(), &result), "RunCommandFile");
        std::erase(runner->script, L'\r');
        expect(runner->script == L"first\nsecond", "the preprocessor to get the script file",
               "it got " + shown(runner->script));
        expect(flag(result, "RunCommandFile") == runsToEnd,
               "RunCommandFile to answer as the preprocessor does", "it does not");
    }
    DeleteFileW(file.path);
    VARIANT_BOOL result = VARIANT_FALSE;
    const HRESULT code = communicator->RunCommandFile(name.get(), &result);
    if (FAILED(code)) failsWithReason(code, "RunCommandFile of a missing file");
    expect(FAILED(code) || !flag(result, "RunCommandFile"),
           "RunCommandFile of a missing file not to be true", "it is");

    succeeded(communicator->put_Preprocessor(nullptr), "putting no Preprocessor");
    const ULONG after = references(own);
    expect(after == before,
           "the preprocessor to be let go: " + std::to_string(before) + " references",
           "it has " + std::to_string(after));
}

void collectsInOrder(const Link& link) {
    const auto collection = link.collection();
    for (const long item : {10L, 20L, 30L})
        succeeded(collection->Add(com::Variant(item).get()), "Add");
    succeeded(collection->Remove(com::Variant(1L).get()), "Remove");
    long count = 0;
    succeeded(collection->get_Count(&count), "Count");
    expect(count == 2, "Count to be 2", "it is " + std::to_string(count));
    ComPtr<IUnknown> items;
    succeeded(collection->get__NewEnum(&items), "_NewEnum");
    ComPtr<IEnumVARIANT> enumerator;
    succeeded(items.As(&enumerator), "QueryInterface");
    for (const long index : {0L, 1L}) {
        const std::string wanted = index == 0 ? "10" : "30";
        com::Variant item, next;
        succeeded(collection->get_Item(com::Variant(index).get(), item.put()), "Item");
        expect(item.toText() == wanted, "item " + std::to_string(index) + " to be " + wanted,
               "it is " + item.toText());
        expect(enumerator->Next(1, next.put(), nullptr) == S_OK && next.toText() == wanted,
               "the enumerator to give " + wanted, "it does not");
    }
}

void givesCommunicatorBooleans(const Link& link) {
    const auto communicator = link.communicator();
    const struct {
        const char* name;
        HRESULT (STDMETHODCALLTYPE IKelCommunicator::*put)(VARIANT_BOOL);
        HRESULT (STDMETHODCALLTYPE IKelCommunicator::*get)(VARIANT_BOOL*);
    } rows[] = {
        {"FastConnection", &IKelCommunicator::put_FastConnection,
         &IKelCommunicator::get_FastConnection},
        {"RadioConnection", &IKelCommunicator::put_RadioConnection,
         &IKelCommunicator::get_RadioConnection},
        {"SDI12Mode", &IKelCommunicator::put_SDI12Mode, &IKelCommunicator::get_SDI12Mode},
    };
    for (const auto& [name, put, get] : rows) {
        for (const VARIANT_BOOL wanted : {VARIANT_BOOL{1}, VARIANT_FALSE}) {
            VARIANT_BOOL value = VARIANT_FALSE;
            succeeded((communicator.Get()->*put)(wanted), std::string("putting ") + name);
            succeeded((communicator.Get()->*get)(&value), name);
            expect(flag(value, name) == com::isTrue(wanted),
                   std::string(name) + " to read back " + std::to_string(wanted),
                   "it is " + std::to_string(value));
        }
    }
}

void refusesNullResults(const Link& link) {
    refusesNothing(link.communicator().Get(), __uuidof(IKelCommunicator));
    refusesNothing(link.collection().Get(), __uuidof(ICollection));
}

constexpr Rule kCommunicatorRules[] = {
    {"Port is the object that was put, and nothing lets it go", Scope::kCommunicator, keepsItsPort},
    {"SendCommand waits for the OK of its own command", Scope::kCommunicator, waitsForTheOk},
    {"WaitForString waits for a text, up to the prompt if it is told so", Scope::kCommunicator,
     waitsForTexts},
    {"WakeUpInstrument tells that the instrument answers", Scope::kCommunicator,
     wakesTheInstrument},
    {"SDI12Mode sends in upper case", Scope::kCommunicator, addressesInUpperCase},
    {"SendCommand without a port is no success", Scope::kCommunicator, needsNoPort},
    {"RunCommandFile runs a file through the attached preprocessor", Scope::kCommunicator,
     runsScriptFiles},
    {"the collection keeps its items in their order", Scope::kCommunicator, collectsInOrder},
    {"the communicator's boolean properties are 0 or -1", Scope::kCommunicator,
     givesCommunicatorBooleans},
    {"null result pointers of link and collection are E_POINTER", Scope::kCommunicator,
     refusesNullResults},
};

}  // namespace

std::span<const Rule> communicatorRules() {
    return kCommunicatorRules;
}

}  // namespace kel::conformance
