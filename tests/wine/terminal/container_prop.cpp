#include "tests/wine/terminal/container_prop.h"

#include <olectl.h>

#include <deque>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "tests/support/cases.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"
#include "tests/wine/terminal/container.h"

namespace kel::test {
namespace {

// A property bag that keeps what it is given.
class Bag final : public com::Object<Bag, com::Plain<IPropertyBag>> {
public:
    static constexpr com::ClassDescription kClass{};
    std::map<std::wstring, com::Variant, std::less<>> values;

    STDMETHODIMP Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        const auto found = values.find(name);
        if (found == values.end()) return E_INVALIDARG;
        return VariantCopy(value, const_cast<VARIANT*>(&found->second.get()));
    }
    STDMETHODIMP Write(LPCOLESTR name, VARIANT* value) override {
        values.insert_or_assign(name, com::Variant(*value));
        return S_OK;
    }
};

class ContainerProp final : public Prop {
public:
    explicit ContainerProp(Stage& stage) : stage_(stage), before_(stage.link.onCall) {
        stage.link.onCall = [this](const std::string& call) {
            // In every run it is another one.
            if (const HWND pane = output())
                stage_.transcript.abbreviate(std::to_string(HandleToLong(pane)), "$pane");
            before_(call);
            happen(call);
        };
        container_.onCall = [this](const std::string& call) {
            if (tells_) stage_.transcript.tell(call);
            return happen(call);
        };
    }
    ~ContainerProp() override {
        stage_.link.onCall = before_;
        if (hook_) UnhookWindowsHookEx(hook_);
    }

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string word = takeWord(rest);
        const std::map<std::string_view, std::function<void()>> words = {
            {"activate", [&] { activate(rest); }},
            {"deactivate", [&] { answer(as<IOleInPlaceObject>()->InPlaceDeactivate()); }},
            {"uideactivate", [&] { answer(as<IOleInPlaceObject>()->UIDeactivate()); }},
            {"close", [&] { answer(as<IOleObject>()->Close(OLECLOSE_SAVEIFDIRTY)); }},
            {"leave", [&] { answer(as<IOleObject>()->SetClientSite(nullptr)); }},
            {"end", [&] { container_.end(); }},
            {"drop", [&] { drop(); }},
            {"place", [&] { setPlace(rest); }},
            {"ambient", [&] { setAmbient(rest); }},
            {"watch", [&] { watch(); }},
            {"quick", [&] { activateQuickly(); }},
            {"unwatch", [&] { unwatch(); }},
            {"freeze", [&] { answer(as<IOleControl>()->FreezeEvents(TRUE)); }},
            {"tell", [&] { tells_ = true; }},
            {"refuse", [&] { refused_ = rest; }},
            {"during",
             [&] {
                 const std::size_t bar = rest.find(" | ");
                 during_.emplace_back(rest.substr(0, bar), rest.substr(bar + 3));
             }},
            {"loop", [&] { setLoop(rest); }},
            {"link", [&] { setLink(rest); }},
            {"received", [&] { stage_.link.received = rest; }},
            {"feed", [&] { feed(rest); }},
            {"feeds",
             [&] {
                 int number = std::stoi(takeWord(rest));
                 for (const int last = std::stoi(takeWord(rest)); number <= last; ++number)
                     feed(rest + std::to_string(number) + "\r\n");
             }},
            {"tick", [&] { SendMessageW(window(), WM_TIMER, 1, 0); }},
            {"script", [&] { run(rest); }},
            {"font", [&] { call(invoke(stage_.component(), "Font").result.get().pdispVal, rest); }},
            {"damage", [&] { loadDamaged(); }},
            {"settings", [&] { tellSettings(); }},
            {"save", [&] { save(rest); }},
            {"load", [&] { load(rest); }},
            {"bag",
             [&] {
                 const std::string name = takeWord(rest);
                 takeWord(rest);
                 bag_->values.insert_or_assign(widened(name), com::Variant(widened(rest)));
             }},
        };
        const auto known = words.find(word);
        if (known == words.end()) throw std::invalid_argument("not understood: " + line);
        known->second();
    }

private:
    template <class Interface>
    com::ComPtr<Interface> as() const {
        com::ComPtr<Interface> found;
        com::check(stage_.component()->QueryInterface(IID_PPV_ARGS(&found)));
        return found;
    }
    void answer(HRESULT code) {
        if (code != S_OK) stage_.transcript.tell(std::to_string(code));
        if (takeError() && code == S_OK) stage_.transcript.tell("leaves an error behind");
    }
    HRESULT happen(const std::string& call) {
        if (!refused_.empty() && call.starts_with(refused_)) return S_FALSE;
        while (!during_.empty() && call.starts_with(during_.front().first)) {
            const std::string line = during_.front().second;
            during_.pop_front();
            if (line == "fail") return E_FAIL;
            stage_.play(line);
        }
        return S_OK;
    }
    HWND window() const {
        return FindWindowExW(container_.window(), nullptr, nullptr, L"KelTerminal");
    }

    HWND output() const { return GetDlgItem(window(), IDC_TERMINAL_OUTPUT); }

    void activate(const std::string& how) {
        const LONG verb = how == "ui"        ? OLEIVERB_UIACTIVATE
                          : how == "hide"    ? OLEIVERB_HIDE
                          : how == "primary" ? OLEIVERB_PRIMARY
                                             : OLEIVERB_INPLACEACTIVATE;
        // Nothing holds it but the scene: a call of the container's may drop it.
        IOleObject* const control = as<IOleObject>().Get();
        control->SetClientSite(container_.site());
        answer(control->DoVerb(verb, nullptr, container_.site(), 0, container_.window(), nullptr));
    }
    void drop() {
        as<IOleObject>()->Close(OLECLOSE_NOSAVE);
        as<IOleObject>()->SetClientSite(nullptr);
        stage_.play("release");
    }
    void setPlace(const std::string& line) {
        RECT rectangles[2] = {};
        std::istringstream numbers(line);
        int count = 0;
        for (LONG number; numbers >> number; ++count)
            (&rectangles[0].left)[count] = number;
        const RECT* const clip = count > 4 ? &rectangles[1] : nullptr;
        answer(as<IOleInPlaceObject>()->SetObjectRects(&rectangles[0], clip));
    }
    void setAmbient(std::string line) {
        const std::string name = takeWord(line);
        const DISPID member = name == "BackColor"  ? DISPID_AMBIENT_BACKCOLOR
                              : name == "UserMode" ? DISPID_AMBIENT_USERMODE
                                                   : DISPID_AMBIENT_UIDEAD;
        container_.ambients.insert_or_assign(member, member == DISPID_AMBIENT_BACKCOLOR
                                                         ? com::Variant(std::stol(line))
                                                         : com::Variant(line == "true"));
        answer(as<IOleControl>()->OnAmbientPropertyChange(member));
    }
    void watch() {
        com::check(eventsOf(stage_.component(), IID_IPropertyNotifySink)
                       ->Advise(container_.propertySink(), &cookie_));
        com::check(as<IViewObjectEx>()->SetAdvise(DVASPECT_CONTENT, 0, container_.adviseSink()));
    }
    void unwatch() {
        com::check(eventsOf(stage_.component(), IID_IPropertyNotifySink)->Unadvise(cookie_));
        com::check(as<IViewObjectEx>()->SetAdvise(0, 0, nullptr));
    }
    void activateQuickly() {
        QACONTAINER offered{};
        offered.cbSize = sizeof offered;
        offered.pClientSite = container_.site();
        offered.pAdviseSink = reinterpret_cast<IAdviseSinkEx*>(container_.adviseSink());
        offered.pPropertyNotifySink = container_.propertySink();
        QACONTROL taken{};
        taken.cbSize = sizeof taken;
        answer(as<IQuickActivate>()->QuickActivate(nullptr, &taken));
        answer(as<IQuickActivate>()->QuickActivate(&offered, &taken));
        cookie_ = taken.dwPropNotifyCookie;
        stage_.transcript.tell("status " + std::to_string(taken.dwMiscStatus));
    }
    void setLink(const std::string& which) {
        IKelCommunicator* const link = which == "own"     ? stage_.link.communicator()
                                       : which == "other" ? other_.communicator()
                                                          : nullptr;
        answer(as<IKelTerminal>()->put_Communicator(link));
    }
    void feed(const std::string& text) {
        const HWND pane = output();
        const LRESULT end = SendMessageW(pane, WM_GETTEXTLENGTH, 0, 0);
        SendMessageW(pane, EM_SETSEL, static_cast<WPARAM>(end), end);
        SendMessageW(pane, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(widened(text).c_str()));
    }
    void run(const std::string& script) {
        const auto preprocessor = kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
        com::check(preprocessor->put_Communicator(stage_.link.communicator()));
        stage_.link.preprocessor = preprocessor.Get();
        VARIANT_BOOL ran = VARIANT_FALSE;
        com::check(preprocessor->PreprocessAndRun(com::Bstr(widened(script)).get(), &ran));
        com::check(preprocessor->put_Communicator(nullptr));
        stage_.link.preprocessor = nullptr;
    }

    void tellSettings() {
        std::string all;
        const com::Variant font = invoke(stage_.component(), "Font").result;
        for (const char* name : {"Name", "Size", "Italic"})
            all += show(invoke(font.get().pdispVal, name)) + " ";
        for (const char* name : {"ForeColor", "BackColor", "CommandLineTextColor",
                                 "CommandLineBackColor", "ShowCommandLine"})
            all += show(invoke(stage_.component(), name)) + " ";
        stage_.transcript.tell(all +
                               (as<IPersistStreamInit>()->IsDirty() == S_OK ? "dirty" : "clean"));
    }
    void rewind() const { com::check(stream_->Seek({}, STREAM_SEEK_SET, nullptr)); }
    void save(const std::string& where) {
        if (where == "bag") return answer(as<IPersistPropertyBag>()->Save(bag_.Get(), TRUE, TRUE));
        if (where == "storage") {
            com::ComPtr<ILockBytes> memory;
            com::check(CreateILockBytesOnHGlobal(nullptr, TRUE, &memory));
            com::check(StgCreateDocfileOnILockBytes(
                memory.Get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, &storage_));
            return answer(as<IPersistStorage>()->Save(storage_.Get(), FALSE));
        }
        if (!stream_) com::check(CreateStreamOnHGlobal(nullptr, TRUE, &stream_));
        answer(as<IPersistStreamInit>()->Save(stream_.Get(), TRUE));
    }
    void load(const std::string& from) {
        if (from == "bag") return answer(as<IPersistPropertyBag>()->Load(bag_.Get(), nullptr));
        if (from == "storage") return answer(as<IPersistStorage>()->Load(storage_.Get()));
        if (!std::exchange(isRead_, true)) rewind();
        answer(as<IPersistStreamInit>()->Load(stream_.Get()));
    }
    void loadDamaged() {
        STATSTG whole{};
        com::check(stream_->Stat(&whole, STATFLAG_NONAME));
        for (ULARGE_INTEGER size = whole.cbSize; size.QuadPart-- > 0;) {
            com::check(stream_->SetSize(size));
            rewind();
            if (SUCCEEDED(as<IPersistStreamInit>()->Load(stream_.Get())))
                stage_.transcript.tell("taken: " + std::to_string(size.QuadPart));
        }
    }

    // Whatever loop runs on this thread: what it would do with a message is done when it takes it.
    void setLoop(const std::string& kind) {
        present_ = this;
        isOfDialog_ = kind == "dialog";
        if (!hook_) hook_ = SetWindowsHookExW(WH_GETMESSAGE, take, nullptr, GetCurrentThreadId());
    }
    static LRESULT CALLBACK take(int code, WPARAM removed, LPARAM place) {
        auto& message = *reinterpret_cast<MSG*>(place);
        const bool isKey = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
        if (code < 0 || removed != PM_REMOVE || !isKey)
            return CallNextHookEx(nullptr, code, removed, place);
        const Container& container = present_->container_;
        MSG copy = message;
        const bool isDone = present_->isOfDialog_
                                ? IsDialogMessageW(container.window(), &copy)
                                : container.activeObject() &&
                                      container.activeObject()->TranslateAccelerator(&copy) == S_OK;
        if (isDone) message.message = WM_NULL;
        return 0;
    }

    Stage& stage_;
    const std::function<void(const std::string&)> before_;
    FakeLink other_{stage_.link, "other "};
    bool tells_ = false;
    std::string refused_;
    std::deque<std::pair<std::string, std::string>> during_;
    DWORD cookie_ = 0;
    const com::ComPtr<Bag> bag_ = com::makeObject<Bag>();
    com::ComPtr<IStream> stream_;
    bool isRead_ = false;
    com::ComPtr<IStorage> storage_;
    bool isOfDialog_ = false;
    HHOOK hook_ = nullptr;
    static inline ContainerProp* present_ = nullptr;
    Container container_;
};

}  // namespace

std::unique_ptr<Prop> makeContainerProp(Stage& stage) {
    return std::make_unique<ContainerProp>(stage);
}

}  // namespace kel::test
