#include "hosts/keldesk/look.h"

#include <commdlg.h>
#include <olectl.h>

#include "com/text.h"

namespace kel::keldesk {
namespace {

constexpr int kPointsInAnInch = 72;
constexpr int kSizeOfAPoint = 10000;

int linesInAnInch() {
    const HDC screen = GetDC(nullptr);
    const int lines = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return lines;
}

LOGFONTW describe(IFont* font) {
    com::Bstr name;
    CY size{};
    SHORT weight = FW_NORMAL;
    SHORT characterSet = 0;
    BOOL isItalic = FALSE;
    com::check(font->get_Name(name.put()), font);
    com::check(font->get_Size(&size), font);
    com::check(font->get_Weight(&weight), font);
    com::check(font->get_Charset(&characterSet), font);
    com::check(font->get_Italic(&isItalic), font);
    LOGFONTW description{};
    description.lfHeight =
        -MulDiv(static_cast<int>(size.int64), linesInAnInch(), kPointsInAnInch * kSizeOfAPoint);
    description.lfWeight = weight;
    description.lfCharSet = static_cast<BYTE>(characterSet);
    description.lfItalic = static_cast<BYTE>(isItalic);
    name.view().copy(description.lfFaceName, LF_FACESIZE - 1);
    return description;
}

com::ComPtr<IStream> newStream() {
    com::ComPtr<IStream> stream;
    com::check(CreateStreamOnHGlobal(nullptr, TRUE, &stream));
    return stream;
}

}  // namespace

void chooseColour(HWND owner, const com::ComPtr<IKelTerminal3>& terminal, TerminalColour colour) {
    static COLORREF own[16];
    OLE_COLOR now = 0;
    com::check((terminal.Get()->*colour.get)(&now), terminal);
    CHOOSECOLORW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    question.lpCustColors = own;
    question.Flags = CC_RGBINIT | CC_FULLOPEN;
    com::check(OleTranslateColor(now, nullptr, &question.rgbResult));
    if (!ChooseColorW(&question)) return;
    com::check((terminal.Get()->*colour.put)(question.rgbResult), terminal);
}

void chooseFont(HWND owner, const com::ComPtr<IKelTerminal3>& terminal) {
    com::ComPtr<IFontDisp> present;
    com::ComPtr<IFont> details;
    com::check(terminal->get_Font(&present), terminal);
    com::check(present.As(&details), present);
    LOGFONTW description = describe(details.Get());
    CHOOSEFONTW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = owner;
    question.lpLogFont = &description;
    question.Flags = CF_SCREENFONTS | CF_INITTOLOGFONTSTRUCT | CF_FORCEFONTEXIST;
    if (!ChooseFontW(&question)) return;

    FONTDESC chosen{};
    chosen.cbSizeofstruct = sizeof chosen;
    chosen.lpstrName = description.lfFaceName;
    chosen.cySize.int64 = LONGLONG{question.iPointSize} * (kSizeOfAPoint / 10);
    chosen.sWeight = static_cast<SHORT>(description.lfWeight);
    chosen.sCharset = description.lfCharSet;
    chosen.fItalic = description.lfItalic;
    com::ComPtr<IFontDisp> font;
    com::check(OleCreateFontIndirect(&chosen, IID_PPV_ARGS(&font)));
    com::check(terminal->putref_Font(font.Get()), terminal);
}

std::string savedLook(const com::ComPtr<IKelTerminal3>& terminal) {
    com::ComPtr<IPersistStreamInit> control;
    com::check(terminal.As(&control), terminal);
    const com::ComPtr<IStream> stream = newStream();
    com::check(control->Save(stream.Get(), TRUE), control);
    HGLOBAL memory = nullptr;
    com::check(GetHGlobalFromStream(stream.Get(), &memory));
    STATSTG state{};
    com::check(stream->Stat(&state, STATFLAG_NONAME), stream);
    const std::string saved(static_cast<const char*>(GlobalLock(memory)),
                            static_cast<std::size_t>(state.cbSize.QuadPart));
    GlobalUnlock(memory);
    return saved;
}

void restoreLook(const com::ComPtr<IKelTerminal3>& terminal, const std::string& saved) {
    com::ComPtr<IPersistStreamInit> control;
    com::check(terminal.As(&control), terminal);
    const com::ComPtr<IStream> stream = newStream();
    com::check(stream->Write(saved.data(), static_cast<ULONG>(saved.size()), nullptr), stream);
    com::check(stream->Seek({}, STREAM_SEEK_SET, nullptr), stream);
    com::check(control->Load(stream.Get()), control);
}

}  // namespace kel::keldesk
