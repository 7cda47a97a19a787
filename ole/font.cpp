#include "ole/font.h"

#include <utility>

#include "com/object.h"
#include "com/text.h"

namespace kel::ole {

com::ComPtr<IFontDisp> makeFont(const FontData& data) {
    std::wstring name = data.name;
    FONTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.lpstrName = name.data();
    description.cySize.int64 = data.size;
    description.sWeight = data.weight;
    description.sCharset = data.characterSet;
    description.fItalic = data.isItalic;
    description.fUnderline = data.isUnderlined;
    description.fStrikethrough = data.isStruckOut;
    com::ComPtr<IFontDisp> font;
    com::check(OleCreateFontIndirect(&description, IID_PPV_ARGS(&font)));
    return font;
}

FontData fontData(IFontDisp* object) {
    com::ComPtr<IFont> font;
    com::check(object->QueryInterface(IID_PPV_ARGS(&font)));
    com::Bstr name;
    CY size{};
    BOOL italic = FALSE;
    BOOL underlined = FALSE;
    BOOL struckOut = FALSE;
    FontData data;
    com::check(font->get_Name(name.put()));
    com::check(font->get_Size(&size));
    com::check(font->get_Weight(&data.weight));
    com::check(font->get_Charset(&data.characterSet));
    com::check(font->get_Italic(&italic));
    com::check(font->get_Underline(&underlined));
    com::check(font->get_Strikethrough(&struckOut));
    data.name = name.view();
    data.size = size.int64;
    data.isItalic = italic;
    data.isUnderlined = underlined;
    data.isStruckOut = struckOut;
    return data;
}

FontHandle::FontHandle(IFontDisp* font) {
    com::check(font->QueryInterface(IID_PPV_ARGS(&font_)));
    HFONT handle = nullptr;
    com::check(font_->get_hFont(&handle));
    com::check(font_->AddRefHfont(handle));
    handle_ = handle;
}

FontHandle::FontHandle(FontHandle&& other) noexcept
    : font_(std::move(other.font_)), handle_(std::exchange(other.handle_, nullptr)) {}

FontHandle& FontHandle::operator=(FontHandle other) noexcept {
    std::swap(font_, other.font_);
    std::swap(handle_, other.handle_);
    return *this;
}

FontHandle::~FontHandle() {
    if (handle_) font_->ReleaseHfont(handle_);
}

class FontWatch::Sink final : public com::Object<Sink, com::Plain<IPropertyNotifySink>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit Sink(std::function<void()> changed) : changed_(std::move(changed)) {}

    // The font may keep the sink for longer than it is watched.
    void disconnect() { changed_ = nullptr; }

    STDMETHODIMP OnChanged(DISPID) override {
        return guarded<IPropertyNotifySink>([&] {
            const com::KeepAlive alive(*this);
            // The call may end the watch.
            const auto changed = changed_;
            if (changed) changed();
        });
    }
    STDMETHODIMP OnRequestEdit(DISPID) override { return S_OK; }

private:
    std::function<void()> changed_;
};

FontWatch::FontWatch(IFontDisp* font, std::function<void()> changed)
    : sink_(com::makeObject<Sink>(std::move(changed))) {
    com::ComPtr<IConnectionPointContainer> container;
    if (FAILED(font->QueryInterface(IID_PPV_ARGS(&container)))) return;
    com::ComPtr<IConnectionPoint> point;
    if (FAILED(container->FindConnectionPoint(IID_IPropertyNotifySink, &point))) return;
    // A font that takes no sink is drawn as it is, as one without events.
    const auto sink = static_cast<IPropertyNotifySink*>(sink_.Get());
    if (SUCCEEDED(point->Advise(sink, &cookie_))) point_ = point;
}

FontWatch::~FontWatch() {
    sink_->disconnect();
    if (point_) point_->Unadvise(cookie_);
}

}  // namespace kel::ole
