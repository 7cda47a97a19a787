#include "terminal/terminal.h"

#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::terminal {
namespace {

constexpr DISPID kShowCommandLine = 5;
constexpr DISPID kCommandLineBackColor = 12;
constexpr DISPID kCommandLineTextColor = 13;

constexpr ole::PersistedProperty kPersisted[] = {
    {L"ShowCommandLine", kShowCommandLine, ole::PropertyKind::Flag},
    {L"ForeColor", DISPID_FORECOLOR, ole::PropertyKind::Colour},
    {L"Font", DISPID_FONT, ole::PropertyKind::Font},
    {L"CommandLineBackColor", kCommandLineBackColor, ole::PropertyKind::Colour},
    {L"CommandLineTextColor", kCommandLineTextColor, ole::PropertyKind::Colour},
    {L"BackColor", DISPID_BACKCOLOR, ole::PropertyKind::Colour},
};

constexpr const CLSID* kPropertyPages[] = {&CLSID_CColorPropPage, &CLSID_CFontPropPage};

constexpr DWORD kMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE |
                              OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE |
                              OLEMISC_SETCLIENTSITEFIRST;
static_assert(kMiscStatus == 131473);

const ole::ControlDescription kControl{CLSID_KelTerminal,    KelTerminal::kClass.programIdentifier,
                                       L"KelTerminal Class", kMiscStatus,
                                       kPersisted,           kPropertyPages};

com::ComPtr<IFontDisp> defaultFont() {
    return ole::makeFont({.name = L"Arial", .size = 12 * 10000});
}

}  // namespace

KelTerminal::KelTerminal() : window_(*this, look_, *this) {
    look_.font = defaultFont();
}

KelTerminal::~KelTerminal() {
    leaveContainer();
    window_.close();
}

const ole::ControlDescription& KelTerminal::description() const {
    return kControl;
}

OLE_COLOR& KelTerminal::colourOf(DISPID member) {
    switch (member) {
        case DISPID_BACKCOLOR:
            return look_.outputBackground;
        case DISPID_FORECOLOR:
            return look_.outputText;
        case kCommandLineBackColor:
            return look_.commandBackground;
        default:
            return look_.commandText;
    }
}

HRESULT KelTerminal::setColour(DISPID member, OLE_COLOR colour) {
    return guarded<IKelTerminal>([&] {
        const com::KeepAlive alive(*this);
        translated(colour);
        if (!mayChange(member)) return S_FALSE;
        colourOf(member) = colour;
        window_.followColours();
        changed(member);
        return S_OK;
    });
}

HRESULT KelTerminal::put_BackColor(OLE_COLOR colour) {
    return setColour(DISPID_BACKCOLOR, colour);
}

HRESULT KelTerminal::get_BackColor(OLE_COLOR* colour) {
    return guarded<IKelTerminal>([&] { com::out(colour) = look_.outputBackground; });
}

HRESULT KelTerminal::put_ForeColor(OLE_COLOR colour) {
    return setColour(DISPID_FORECOLOR, colour);
}

HRESULT KelTerminal::get_ForeColor(OLE_COLOR* colour) {
    return guarded<IKelTerminal>([&] { com::out(colour) = look_.outputText; });
}

HRESULT KelTerminal::put_CommandLineBackColor(OLE_COLOR colour) {
    return setColour(kCommandLineBackColor, colour);
}

HRESULT KelTerminal::get_CommandLineBackColor(OLE_COLOR* colour) {
    return guarded<IKelTerminal>([&] { com::out(colour) = look_.commandBackground; });
}

HRESULT KelTerminal::put_CommandLineTextColor(OLE_COLOR colour) {
    return setColour(kCommandLineTextColor, colour);
}

HRESULT KelTerminal::get_CommandLineTextColor(OLE_COLOR* colour) {
    return guarded<IKelTerminal>([&] { com::out(colour) = look_.commandText; });
}

HRESULT KelTerminal::setFont(const com::ComPtr<IFontDisp>& font) {
    const com::KeepAlive alive(*this);
    if (!mayChange(DISPID_FONT)) return S_FALSE;
    takeFont(font);
    changed(DISPID_FONT);
    return S_OK;
}

void KelTerminal::takeFont(const com::ComPtr<IFontDisp>& font) {
    // What is no font the windows could draw with is refused before anything changes.
    const ole::FontHandle usable(font.Get());
    look_.font = font;
    window_.followFont();
}

HRESULT KelTerminal::putref_Font(IFontDisp* font) {
    return guarded<IKelTerminal>([&] {
        if (!font) throw com::Error(E_INVALIDARG, L"The terminal needs a font");
        return setFont(font);
    });
}

// The terminal gets a font of its own, which later changes of the other one do not reach.
HRESULT KelTerminal::put_Font(IFontDisp* font) {
    return guarded<IKelTerminal>([&] {
        if (!font) throw com::Error(E_INVALIDARG, L"The terminal needs a font");
        return setFont(ole::makeFont(ole::fontData(font)));
    });
}

HRESULT KelTerminal::get_Font(IFontDisp** font) {
    return guarded<IKelTerminal>([&] {
        com::out(font) = nullptr;
        look_.font.CopyTo(font);
    });
}

HRESULT KelTerminal::get_Communicator(IKelCommunicator** communicator) {
    return guarded<IKelTerminal>([&] {
        com::out(communicator) = nullptr;
        communicator_.CopyTo(communicator);
    });
}

HRESULT KelTerminal::put_Communicator(IKelCommunicator* communicator) {
    return guarded<IKelTerminal>([&] {
        const com::KeepAlive alive(*this);
        communicator_ = communicator;
        claimStream();
    });
}

// A stream that fails is no reason to refuse its communicator: another port may come.
void KelTerminal::claimStream() {
    const com::ComPtr<IKelCommunicator> communicator = communicator_;
    try {
        poll_.claim(communicator, isInUse_ ? window_.outputWindow() : nullptr);
    } catch (...) {
        window_.showFailure(com::textOfCurrentException());
    }
}

HRESULT KelTerminal::get_hwnd(long* window) {
    return guarded<IKelTerminal>([&] { com::out(window) = HandleToLong(window_.window()); });
}

HRESULT KelTerminal::get_Timer(VARIANT_BOOL* enabled) {
    return guarded<IKelTerminal>([&] { com::out(enabled) = com::variantBool(polls_); });
}

HRESULT KelTerminal::put_Timer(VARIANT_BOOL enabled) {
    return guarded<IKelTerminal>([&] { polls_ = com::isTrue(enabled); });
}

HRESULT KelTerminal::get_ShowCommandLine(VARIANT_BOOL* show) {
    return guarded<IKelTerminal>(
        [&] { com::out(show) = com::variantBool(look_.showsCommandLine); });
}

HRESULT KelTerminal::put_ShowCommandLine(VARIANT_BOOL show) {
    return guarded<IKelTerminal>([&] {
        const com::KeepAlive alive(*this);
        if (!mayChange(kShowCommandLine)) return S_FALSE;
        look_.showsCommandLine = com::isTrue(show);
        window_.followCommandLine();
        changed(kShowCommandLine);
        return S_OK;
    });
}

HRESULT KelTerminal::Send() {
    return guarded<IKelTerminal>([&] {
        const com::KeepAlive alive(*this);
        send();
    });
}

void KelTerminal::send() {
    const com::ComPtr<IKelCommunicator> communicator = communicator_;
    if (!communicator)
        throw com::Error(E_INVALIDARG, L"The terminal is not connected to an instrument");
    if (isSending_)
        throw com::Error(HRESULT_FROM_WIN32(ERROR_BUSY), L"A command is being sent already");
    const com::Scoped sending(isSending_, true);
    const std::wstring text = window_.commandLine().text();
    VARIANT_BOOL isSent = VARIANT_FALSE;
    com::check(communicator->SendCommand(com::Bstr(text).get(), VARIANT_FALSE, 0, &isSent),
               communicator);
    if (!com::isTrue(isSent))
        throw com::Error(E_FAIL, L"The command could not be sent to the instrument");
    window_.commandLine().keep(text);
}

HRESULT KelTerminal::Clear() {
    return guarded<IKelTerminal2>([&] {
        if (OutputPane* output = window_.output()) output->clear();
    });
}

HRESULT KelTerminal::get_OutputLimit(long* characters) {
    return guarded<IKelTerminal3>(
        [&] { com::out(characters) = static_cast<long>(look_.outputLimit); });
}

HRESULT KelTerminal::put_OutputLimit(long characters) {
    return guarded<IKelTerminal3>([&] {
        if (characters < 1)
            throw com::Error(E_INVALIDARG, L"The output pane keeps one character at least");
        look_.outputLimit = static_cast<std::size_t>(characters);
        window_.followOutput();
    });
}

HRESULT KelTerminal::get_TimeStamps(VARIANT_BOOL* show) {
    return guarded<IKelTerminal3>(
        [&] { com::out(show) = com::variantBool(look_.showsTimeStamps); });
}

HRESULT KelTerminal::put_TimeStamps(VARIANT_BOOL show) {
    return guarded<IKelTerminal3>([&] {
        look_.showsTimeStamps = com::isTrue(show);
        window_.followOutput();
    });
}

HRESULT KelTerminal::get_OutputWindow(long* window) {
    return guarded<IKelTerminal3>([&] { com::out(window) = HandleToLong(window_.outputWindow()); });
}

HRESULT KelTerminal::ShowSearch() {
    return guarded<IKelTerminal3>([&] {
        if (!window_.window()) throw com::Error(E_UNEXPECTED, L"The terminal has no window");
        const com::KeepAlive alive(*this);
        window_.openSearch();
    });
}

void KelTerminal::createWindow(HWND parent, const RECT&) {
    window_.open(parent);
}

void KelTerminal::drawInactive(HDC device, const RECT& place) {
    FillRect(device, &place, Brush(look_.outputBackground).get());
}

com::Variant KelTerminal::persisted(DISPID member) const {
    switch (member) {
        case kShowCommandLine:
            return com::Variant(look_.showsCommandLine);
        case DISPID_FONT:
            return com::Variant(look_.font.Get());
        default:
            return com::Variant(
                static_cast<long>(const_cast<KelTerminal*>(this)->colourOf(member)));
    }
}

void KelTerminal::restore(DISPID member, const com::Variant& value) {
    switch (member) {
        case kShowCommandLine:
            put_ShowCommandLine(value.get().boolVal);
            break;
        case DISPID_FONT: {
            com::ComPtr<IFontDisp> font;
            if (SUCCEEDED(value.get().pdispVal->QueryInterface(IID_PPV_ARGS(&font))))
                putref_Font(font.Get());
            break;
        }
        default:
            setColour(member, static_cast<OLE_COLOR>(value.get().lVal));
    }
}

void KelTerminal::ambientChanged() {
    const auto background = site().ambient(DISPID_AMBIENT_BACKCOLOR, VT_I4);
    if (background && isColour(static_cast<OLE_COLOR>(background->get().lVal)))
        look_.background = static_cast<OLE_COLOR>(background->get().lVal);
    window_.followColours();
    isInUse_ = site().isInUse();
    if (window_.window()) claimStream();
}

void KelTerminal::opened() {
    claimStream();
}

void KelTerminal::fontChanged() {
    const com::KeepAlive alive(*this);
    changed(DISPID_FONT);
}

void KelTerminal::ticked() {
    if (!polls_ || !isInUse_) return;
    const com::ComPtr<IKelCommunicator> communicator = communicator_;
    poll_.tick(communicator, window_.outputWindow());
}

}  // namespace kel::terminal
