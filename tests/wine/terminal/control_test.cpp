// The terminal as a control: what containers of every kind ask of it, in every order.
#include <olectl.h>

#include <algorithm>
#include <random>

#include "tests/wine/terminal/terminal_fixture.h"

namespace kel::test {
namespace {

using ControlTest = TerminalTest;

com::ComPtr<IStream> newStream() {
    com::ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &stream), S_OK);
    return stream;
}

void rewind(IStream* stream, LONGLONG to = 0) {
    LARGE_INTEGER place;
    place.QuadPart = to;
    stream->Seek(place, STREAM_SEEK_SET, nullptr);
}

std::string bytesOf(IStream* stream) {
    rewind(stream);
    std::string bytes(65536, '\0');
    ULONG size = 0;
    stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &size);
    bytes.resize(size);
    return bytes;
}

com::ComPtr<IStream> streamOf(const std::string& bytes) {
    const com::ComPtr<IStream> stream = newStream();
    stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    rewind(stream.Get());
    return stream;
}

// A property bag that keeps what it is given.
class Bag final : public com::Object<Bag, com::Plain<IPropertyBag>> {
public:
    static constexpr com::ClassDescription kClass{};
    std::map<std::wstring, com::Variant> values;

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

// The six persisted properties, as one text.
std::string settingsOf(IKelTerminal* terminal) {
    OLE_COLOR colours[4]{};
    VARIANT_BOOL shows = VARIANT_FALSE;
    com::ComPtr<IFontDisp> font;
    com::ComPtr<IFont> details;
    com::Bstr face;
    CY size{};
    BOOL italic = FALSE;
    terminal->get_ForeColor(&colours[0]);
    terminal->get_BackColor(&colours[1]);
    terminal->get_CommandLineTextColor(&colours[2]);
    terminal->get_CommandLineBackColor(&colours[3]);
    terminal->get_ShowCommandLine(&shows);
    terminal->get_Font(&font);
    font.As(&details);
    details->get_Name(face.put());
    details->get_Size(&size);
    // The platform rounds to a size that the face has, three quarters of a point away at most.
    size.int64 = (size.int64 + 7500) / 20000 * 20000;
    details->get_Italic(&italic);
    std::string text = com::narrow(face.view()) + " " + std::to_string(size.int64) +
                       (italic ? " italic" : "") + (shows ? " line" : "");
    for (const OLE_COLOR colour : colours)
        text += " " + std::to_string(colour);
    return text;
}

constexpr char kDefaults[] = "Arial 120000 line 16777215 0 16777215 0";
constexpr char kOthers[] = "Courier New 120000 italic 255 2147483656 65280 16711680";

void setOthers(IKelTerminal* terminal) {
    wchar_t face[] = L"Courier New";
    FONTDESC description{sizeof(FONTDESC), face, {}, FW_BOLD, 0, TRUE, FALSE, FALSE};
    description.cySize.int64 = 120000;
    com::ComPtr<IFontDisp> font;
    ASSERT_EQ(OleCreateFontIndirect(&description, IID_PPV_ARGS(&font)), S_OK);
    EXPECT_EQ(terminal->putref_Font(font.Get()), S_OK);
    EXPECT_EQ(terminal->put_ForeColor(0x0000FF), S_OK);
    EXPECT_EQ(terminal->put_BackColor(0x80000000 | COLOR_WINDOWTEXT), S_OK);
    EXPECT_EQ(terminal->put_CommandLineTextColor(0x00FF00), S_OK);
    EXPECT_EQ(terminal->put_CommandLineBackColor(0xFF0000), S_OK);
    EXPECT_EQ(terminal->put_ShowCommandLine(VARIANT_FALSE), S_OK);
}

TEST_F(ControlTest, TellsWhatItIs) {
    DWORD status = 0;
    EXPECT_EQ(object()->GetMiscStatus(DVASPECT_CONTENT, &status), S_OK);
    EXPECT_EQ(status, 131473u);
    CLSID identifier{};
    EXPECT_EQ(object()->GetUserClassID(&identifier), S_OK);
    EXPECT_EQ(identifier, CLSID_KelTerminal);
    LPOLESTR type = nullptr;
    EXPECT_EQ(object()->GetUserType(USERCLASSTYPE_FULL, &type), S_OK);
    EXPECT_STREQ(type, L"KelTerminal Class");
    CoTaskMemFree(type);

    SIZEL extent{}, natural{};
    DVEXTENTINFO content{sizeof content, DVEXTENT_CONTENT, {}};
    EXPECT_EQ(object()->GetExtent(DVASPECT_CONTENT, &extent), S_OK);
    EXPECT_EQ(as<IViewObjectEx>()->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr,
                                                    &content, &natural),
              S_OK);
    EXPECT_EQ(extent.cx, natural.cx);
    EXPECT_GT(extent.cx, 5000);
    EXPECT_GT(extent.cy, 3000);
    EXPECT_EQ(object()->GetExtent(DVASPECT_ICON, &extent), DV_E_DVASPECT);
    SIZEL wanted{2000, 1000};
    EXPECT_EQ(object()->SetExtent(DVASPECT_CONTENT, &wanted), S_OK);
    EXPECT_EQ(as<IViewObjectEx>()->GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent), S_OK);
    EXPECT_EQ(extent.cy, 1000);

    CAUUID pages{};
    EXPECT_EQ(as<ISpecifyPropertyPages>()->GetPages(&pages), S_OK);
    CoTaskMemFree(pages.pElems);
    CONTROLINFO keys{sizeof keys, nullptr, 0, 0};
    EXPECT_EQ(as<IOleControl>()->GetControlInfo(&keys), S_OK);
    EXPECT_EQ(keys.dwFlags, CTRLINFO_EATS_RETURN + 0u);
    EXPECT_NE(as<IConnectionPointContainer>(), nullptr);
}

TEST_F(ControlTest, IsActivatedAndDeactivatedInOrder) {
    ASSERT_EQ(object()->SetClientSite(container.site()), S_OK);
    EXPECT_EQ(verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    EXPECT_EQ(container.takeCalls(),
              "CanInPlaceActivate, OnInPlaceActivateEx, GetWindow, GetWindowContext, ShowObject");
    HWND window = nullptr;
    ASSERT_EQ(as<IOleInPlaceObject>()->GetWindow(&window), S_OK);
    EXPECT_EQ(GetParent(window), container.window());
    EXPECT_TRUE(IsWindowVisible(window));
    RECT place{};
    GetWindowRect(window, &place);
    MapWindowPoints(nullptr, container.window(), reinterpret_cast<POINT*>(&place), 2);
    EXPECT_TRUE(EqualRect(&place, &container.place));

    EXPECT_EQ(verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(container.takeCalls(), "OnUIActivate, OnFocus, SetActiveObject, ShowObject");
    EXPECT_NE(container.activeObject(), nullptr);
    EXPECT_EQ(as<IOleInPlaceObject>()->UIDeactivate(), S_OK);
    EXPECT_EQ(container.takeCalls(), "SetActiveObject none, OnUIDeactivate");
    EXPECT_EQ(as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(container.takeCalls(), "OnInPlaceDeactivate");
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(as<IOleInPlaceObject>()->GetWindow(&window), E_UNEXPECTED);
}

TEST_F(ControlTest, IsClippedToWhatTheContainerShows) {
    activate();
    const RECT place{50, 50, 250, 150};
    const RECT clip{100, 0, 600, 100};
    EXPECT_EQ(as<IOleInPlaceObject>()->SetObjectRects(&place, &clip), S_OK);
    RECT visible{};
    GetWindowRgnBox(hwnd(), &visible);
    const RECT expected{50, 0, 200, 50};
    EXPECT_TRUE(EqualRect(&visible, &expected));
    EXPECT_EQ(as<IOleInPlaceObject>()->SetObjectRects(&place, &place), S_OK);
    EXPECT_EQ(GetWindowRgnBox(hwnd(), &visible), ERROR);
}

// Each call on the container fails, deactivates the control, or drops the last reference.
TEST_F(ControlTest, SurvivesWhatItsContainerDoesInACall) {
    activate(OLEIVERB_UIACTIVATE);
    as<IOleInPlaceObject>()->InPlaceDeactivate();
    const std::vector<std::string> calls = std::exchange(container.calls, {});
    for (const std::string& call : calls) {
        for (const int deed : {0, 1, 2}) {
            SCOPED_TRACE(call + " " + std::to_string(deed));
            com::ComPtr<IOleObject> control = newTerminal();
            com::ComPtr<IOleInPlaceObject> inPlace;
            control.As(&inPlace);
            container.onCall = [&](const std::string& now) {
                if (now != call) return S_OK;
                if (deed == 0) return E_FAIL;
                container.onCall = nullptr;
                if (deed == 1 && inPlace) inPlace->InPlaceDeactivate();
                if (deed == 2) inPlace.Reset();
                if (deed == 2) control.Reset();
                return S_OK;
            };
            IOleObject* called = control.Get();
            called->SetClientSite(container.site());
            called->DoVerb(OLEIVERB_UIACTIVATE, nullptr, container.site(), 0, container.window(),
                           nullptr);
            if (inPlace) inPlace->InPlaceDeactivate();
            container.onCall = nullptr;
            if (control) control->SetClientSite(nullptr);
            inPlace.Reset();
            control.Reset();
            EXPECT_EQ(GetWindow(container.window(), GW_CHILD), nullptr);
            const auto count = [&](const char* name) {
                return std::count(container.calls.begin(), container.calls.end(), name);
            };
            // Whoever was told of an activation hears of its end.
            if (call != "OnInPlaceActivateEx" || deed != 0) {
                EXPECT_EQ(count("OnInPlaceActivateEx"), count("OnInPlaceDeactivate"));
            }
            container.calls.clear();
        }
    }
}

// A sink that holds the control, and its last reference in the end.
class HoldingSink final : public com::Object<HoldingSink, com::Plain<IAdviseSink>> {
public:
    static constexpr com::ClassDescription kClass{};
    HoldingSink(com::ComPtr<IUnknown> held, bool& keptAlive) : held_(held), keptAlive_(keptAlive) {}
    ~HoldingSink() override {
        held_.Reset();
        keptAlive_ = kelUtils().canUnloadNow() == S_FALSE;
    }

    STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override {}
    STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override {}
    STDMETHODIMP_(void) OnRename(IMoniker*) override {}
    STDMETHODIMP_(void) OnSave() override {}
    STDMETHODIMP_(void) OnClose() override {}

private:
    com::ComPtr<IUnknown> held_;
    bool& keptAlive_;
};

TEST_F(ControlTest, LivesAsLongAsItsCalls) {
    terminal.Reset();
    bool keptAlive = false;
    IViewObjectEx* view = to<IViewObjectEx>(newTerminal().Get()).Detach();
    view->SetAdvise(DVASPECT_CONTENT, 0, com::makeObject<HoldingSink>(view, keptAlive).Get());
    view->Release();
    EXPECT_EQ(view->SetAdvise(0, 0, nullptr), S_OK);
    EXPECT_TRUE(keptAlive);
}

TEST_F(ControlTest, TakesCallsInAnyOrder) {
    const auto stream = newStream();
    const std::function<void(IOleObject*)> deeds[] = {
        [&](IOleObject* o) { o->SetClientSite(container.site()); },
        [&](IOleObject* o) { o->SetClientSite(nullptr); },
        [&](IOleObject* o) { o->Close(OLECLOSE_SAVEIFDIRTY); },
        [&](IOleObject* o) { to<IOleInPlaceObject>(o)->InPlaceDeactivate(); },
        [&](IOleObject* o) { to<IOleInPlaceObject>(o)->UIDeactivate(); },
        [&](IOleObject* o) { to<IOleInPlaceObject>(o)->SetObjectRects(&container.place, nullptr); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->put_Communicator(link.communicator()); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->put_Communicator(nullptr); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->Send(); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->Clear(); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->ShowSearch(); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->put_ShowCommandLine(VARIANT_FALSE); },
        [&](IOleObject* o) { to<IKelTerminal3>(o)->put_ShowCommandLine(VARIANT_TRUE); },
        [&](IOleObject* o) { setOthers(to<IKelTerminal3>(o).Get()); },
        [&](IOleObject* o) {
            rewind(stream.Get());
            to<IPersistStreamInit>(o)->Save(stream.Get(), TRUE);
        },
        [&](IOleObject* o) {
            rewind(stream.Get());
            to<IPersistStreamInit>(o)->Load(stream.Get());
        },
        [&](IOleObject* o) { perform(o, OLEIVERB_INPLACEACTIVATE); },
        [&](IOleObject* o) { perform(o, OLEIVERB_UIACTIVATE); },
        [&](IOleObject* o) { perform(o, OLEIVERB_HIDE); },
        [&](IOleObject* o) { perform(o, OLEIVERB_PRIMARY); },
        [&](IOleObject*) { runMessages(); },
    };
    std::mt19937 random(1);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const com::ComPtr<IOleObject> control = newTerminal();
        for (int step = 0; step < 12; ++step)
            deeds[random() % std::size(deeds)](control.Get());
        // The frame holds an active object; any other may be dropped as it is.
        if (container.activeObject()) to<IOleInPlaceObject>(control.Get())->UIDeactivate();
    }
    EXPECT_EQ(GetWindow(container.window(), GW_CHILD), nullptr);
    EXPECT_EQ(link.shownIn(), 0);
}

TEST_F(ControlTest, AsksAndTellsWhoWatchesItsProperties) {
    DWORD cookie = 0;
    const auto point = eventsOf(terminal.Get(), IID_IPropertyNotifySink);
    ASSERT_EQ(point->Advise(container.propertySink(), &cookie), S_OK);
    ASSERT_EQ(as<IViewObjectEx>()->SetAdvise(DVASPECT_CONTENT, 0, container.adviseSink()), S_OK);
    EXPECT_EQ(terminal->put_BackColor(5), S_OK);
    EXPECT_EQ(container.takeCalls(), "OnRequestEdit -501, OnChanged -501, OnViewChange");
    container.onCall = [](const std::string& call) { return call[2] == 'R' ? S_FALSE : S_OK; };
    const std::string before = settingsOf(terminal.Get());
    EXPECT_EQ(terminal->put_ForeColor(5), S_FALSE);
    EXPECT_EQ(terminal->put_CommandLineBackColor(5), S_FALSE);
    EXPECT_EQ(terminal->put_ShowCommandLine(VARIANT_FALSE), S_FALSE);
    com::ComPtr<IFontDisp> font;
    terminal->get_Font(&font);
    EXPECT_EQ(terminal->put_Font(font.Get()), S_FALSE);
    EXPECT_EQ(settingsOf(terminal.Get()), before);
    EXPECT_EQ(container.takeCalls(),
              "OnRequestEdit -513, OnRequestEdit 12, OnRequestEdit 5, OnRequestEdit -512");
    EXPECT_EQ(terminal->put_ForeColor(0x7F000000), E_INVALIDARG);
    EXPECT_EQ(terminal->putref_Font(nullptr), E_INVALIDARG);
    as<IOleControl>()->FreezeEvents(TRUE);
    EXPECT_EQ(terminal->put_ForeColor(6), S_OK);
    EXPECT_EQ(container.takeCalls(), "OnViewChange");
    EXPECT_EQ(point->Unadvise(cookie), S_OK);
    as<IViewObjectEx>()->SetAdvise(0, 0, nullptr);
}

TEST_F(ControlTest, KeepsItsSettingsInBagStreamAndStorage) {
    EXPECT_EQ(settingsOf(terminal.Get()), kDefaults);
    setOthers(terminal.Get());
    EXPECT_EQ(settingsOf(terminal.Get()), kOthers);
    EXPECT_EQ(as<IPersistStreamInit>()->IsDirty(), S_OK);

    const auto bag = com::makeObject<Bag>();
    EXPECT_EQ(as<IPersistPropertyBag>()->Save(bag.Get(), TRUE, TRUE), S_OK);
    EXPECT_EQ(as<IPersistStreamInit>()->IsDirty(), S_FALSE);
    EXPECT_EQ(bag->values.size(), 6u);
    com::ComPtr<IKelTerminal3> copy = to<IKelTerminal3>(newTerminal().Get());
    EXPECT_EQ(to<IPersistPropertyBag>(copy.Get())->Load(bag.Get(), nullptr), S_OK);
    EXPECT_EQ(settingsOf(copy.Get()), kOthers);

    com::ComPtr<IStorage> storage;
    com::ComPtr<ILockBytes> memory;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, &memory), S_OK);
    ASSERT_EQ(StgCreateDocfileOnILockBytes(
                  memory.Get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, &storage),
              S_OK);
    EXPECT_EQ(as<IPersistStorage>()->Save(storage.Get(), FALSE), S_OK);
    copy = to<IKelTerminal3>(newTerminal().Get());
    EXPECT_EQ(to<IPersistStorage>(copy.Get())->Load(storage.Get()), S_OK);
    EXPECT_EQ(settingsOf(copy.Get()), kOthers);

    // Two on one stream, and something of the container's behind them.
    const auto stream = newStream();
    copy = to<IKelTerminal3>(newTerminal().Get());
    EXPECT_EQ(to<IPersistStreamInit>(copy.Get())->Save(stream.Get(), TRUE), S_OK);
    EXPECT_EQ(as<IPersistStreamInit>()->Save(stream.Get(), TRUE), S_OK);
    stream->Write("end", 3, nullptr);
    rewind(stream.Get());
    EXPECT_EQ(as<IPersistStreamInit>()->Load(stream.Get()), S_OK);
    EXPECT_EQ(to<IPersistStreamInit>(copy.Get())->Load(stream.Get()), S_OK);
    EXPECT_EQ(settingsOf(terminal.Get()), kDefaults);
    EXPECT_EQ(settingsOf(copy.Get()), kOthers);
    char end[4] = "";
    stream->Read(end, 3, nullptr);
    EXPECT_STREQ(end, "end");
}

TEST_F(ControlTest, IsLeftAsItWasByDamagedSettings) {
    setOthers(terminal.Get());
    const auto whole = newStream();
    ASSERT_EQ(as<IPersistStreamInit>()->Save(whole.Get(), TRUE), S_OK);
    const std::string bytes = bytesOf(whole.Get());
    ASSERT_GT(bytes.size(), 100u);
    const com::ComPtr<IKelTerminal3> copy = to<IKelTerminal3>(newTerminal().Get());
    const auto persistence = to<IPersistStreamInit>(copy.Get());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_TRUE(FAILED(persistence->Load(streamOf(bytes.substr(0, size)).Get()))) << size;
        EXPECT_EQ(settingsOf(copy.Get()), kDefaults) << size;
    }
    EXPECT_EQ(persistence->Load(streamOf(bytes).Get()), S_OK);
    EXPECT_EQ(settingsOf(copy.Get()), kOthers);
}

TEST_F(ControlTest, TakesFromABagWhatItCanUse) {
    const auto bag = com::makeObject<Bag>();
    bag->values.insert_or_assign(L"ForeColor", com::Variant(L"255"));
    bag->values.insert_or_assign(L"BackColor", com::Variant(L"no colour"));
    bag->values.insert_or_assign(L"CommandLineTextColor", com::Variant(0x7F000000L));
    bag->values.insert_or_assign(L"Font", com::Variant(static_cast<IDispatch*>(terminal.Get())));
    bag->values.insert_or_assign(L"ShowCommandLine", com::Variant(0L));
    EXPECT_EQ(as<IPersistPropertyBag>()->Load(bag.Get(), nullptr), S_OK);
    EXPECT_FALSE(takeError());
    EXPECT_EQ(settingsOf(terminal.Get()), "Arial 120000 255 0 16777215 0");
    bag->values.clear();
    EXPECT_EQ(as<IPersistPropertyBag>()->Load(bag.Get(), nullptr), S_OK);
    EXPECT_EQ(settingsOf(terminal.Get()), "Arial 120000 255 0 16777215 0");
}

TEST_F(ControlTest, ActivatesQuickly) {
    QACONTAINER offered{};
    offered.cbSize = sizeof offered;
    offered.pClientSite = container.site();
    offered.pAdviseSink = reinterpret_cast<IAdviseSinkEx*>(container.adviseSink());
    offered.pPropertyNotifySink = container.propertySink();
    QACONTROL taken{};
    taken.cbSize = sizeof taken;
    EXPECT_EQ(as<IQuickActivate>()->QuickActivate(&offered, &taken), S_OK);
    EXPECT_EQ(taken.dwMiscStatus, 131473u);
    EXPECT_NE(taken.dwPropNotifyCookie, 0u);
    terminal->put_BackColor(1);
    EXPECT_EQ(container.takeCalls(), "OnRequestEdit -501, OnChanged -501, OnViewChange");
    EXPECT_EQ(as<IQuickActivate>()->QuickActivate(nullptr, &taken), E_POINTER);
    eventsOf(terminal.Get(), IID_IPropertyNotifySink)->Unadvise(taken.dwPropNotifyCookie);
    as<IViewObjectEx>()->SetAdvise(0, 0, nullptr);
}

}  // namespace
}  // namespace kel::test
