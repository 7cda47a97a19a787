#include "html/kel_script.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "com/creation.h"
#include "com/text.h"
#include "com/text_file.h"
#include "html/kel_objects.h"

namespace kel::html {
namespace {

constexpr CLSID kControlClass = {
    0x0E59F1D5, 0x1FBE, 0x11D0, {0x8F, 0xF2, 0x00, 0xA0, 0xD1, 0x00, 0x38, 0xBC}};
constexpr IID kControlInterface = {
    0x0E59F1D3, 0x1FBE, 0x11D0, {0x8F, 0xF2, 0x00, 0xA0, 0xD1, 0x00, 0x38, 0xBC}};

com::LateBound makeControl() {
    com::ComPtr<IUnknown> object;
    com::check(com::createStarted(kControlClass, object));
    com::ComPtr<IDispatch> control;
    com::check(object->QueryInterface(kControlInterface, &control));
    return com::LateBound(control);
}

// What a file says; nothing when there is no such text file.
std::optional<std::wstring> readScript(const std::wstring& path) {
    std::error_code failure;
    if (!std::filesystem::is_regular_file(path, failure)) return std::nullopt;
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (!file) return std::nullopt;
    try {
        return com::decodeTextFile(bytes);
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

}  // namespace

void KelScript::finalConstruct() {
    control_ = makeControl();
    control_->put(L"Language", com::Variant(std::wstring_view(L"JScript")));
    control_->put(L"AllowUI", com::Variant(true));
    // Scripts reach the library's own components only so.
    control_->put(L"UseSafeSubset", com::Variant(false));
    adviseSink();
}

// Some script controls have no events: then errors are looked for after each call.
void KelScript::adviseSink() {
    com::ComPtr<IConnectionPointContainer> container;
    com::ComPtr<IConnectionPoint> point;
    if (FAILED(control_->object().As(&container)) ||
        FAILED(container->FindConnectionPoint(kControlEvents, &point))) {
        return;
    }
    sink_ = com::makeObject<ErrorSink>([this] { tellError(); });
    if (SUCCEEDED(point->Advise(sink_->controlling(), &cookie_))) point_ = point;
}

KelScript::~KelScript() {
    if (sink_) sink_->leave();
    if (point_) point_->Unadvise(cookie_);
    leaveTable();
}

void KelScript::leaveTable() {
    com::ComPtr<ITableSource> source;
    if (table_->objects && SUCCEEDED(table_->objects.As(&source))) source->removeListener(*this);
    table_->objects = nullptr;
}

HRESULT KelScript::LoadFile(BSTR path, VARIANT_BOOL* success) {
    return guarded<IKelScriptObject>([&] {
        com::out(success) = VARIANT_FALSE;
        const com::KeepAlive alive(*this);
        lastError_ = {};
        const auto text = readScript(std::wstring(com::view(path)));
        if (!text) return;
        try {
            control_->call(L"AddCode", {com::Variant(std::wstring_view(*text))});
        } catch (const com::Error&) {
            tellError();
            // What is no error of the script is told as it is.
            if (lastError_.text.empty()) throw;
            if (isUnattended_) throw com::Error(E_FAIL, lastError_.text);
            return;
        }
        *success = VARIANT_TRUE;
    });
}

com::LateBound KelScript::errorObject() const {
    const com::Variant error = control_->get(L"Error").convertedTo(VT_DISPATCH);
    const com::ComPtr<IDispatch> object = error.get().pdispVal;
    if (!object) throw com::Error(E_UNEXPECTED, L"The script control gives no error object");
    return com::LateBound(object);
}

bool KelScript::takeError() {
    const com::LateBound error = errorObject();
    const auto number = [&](const wchar_t* name) {
        return error.get(name).convertedTo(VT_I4).get().lVal;
    };
    const auto text = [&](const wchar_t* name) {
        const com::Variant value = error.get(name).convertedTo(VT_BSTR);
        return std::wstring(com::view(value.get().bstrVal));
    };
    const long code = number(L"Number");
    const std::wstring description = text(L"Description");
    const std::wstring source = text(L"Text");
    const long line = number(L"Line");
    const long column = number(L"Column");
    const std::wstring origin = text(L"Source");
    if (code == 0) return false;
    // The control counts columns from 0.
    lastError_ = {L"Error #" + std::to_wstring(code) + L", " + description + L", " + source +
                      L", Line: " + std::to_wstring(line) + L", Column: " +
                      std::to_wstring(column) + L" (src:" + origin + L")",
                  description, line, column + 1};
    return true;
}

void KelScript::tellError() {
    const com::KeepAlive alive(*this);
    // The event has told of it already.
    if (!takeError()) return;
    if (!isUnattended_) {
        const long number = control_->get(L"SitehWnd").convertedTo(VT_I4).get().lVal;
        // An owner that has gone must not keep the error from being shown.
        const HWND owner = static_cast<HWND>(LongToHandle(number));
        MessageBoxW(IsWindow(owner) ? owner : nullptr, lastError_.text.c_str(), L"Script Error",
                    MB_OK | MB_ICONSTOP);
    }
    clearError();
}

void KelScript::clearError() const {
    errorObject().call(L"Clear");
}

const KelScript::ScriptError& KelScript::lastError() {
    if (takeError()) clearError();
    return lastError_;
}

HRESULT KelScript::get_ScriptControl(IDispatch** control) {
    return guarded<IKelScriptObject2>([&] {
        com::out(control) = nullptr;
        com::ComPtr<IDispatch>(control_->object()).CopyTo(control);
    });
}

HRESULT KelScript::put_Objects(IKelObjects* objects) {
    return guarded<IKelScriptObject2>([&] {
        const com::KeepAlive alive(*this);
        leaveTable();
        const com::ComPtr<IKelObjects> table(objects);
        table_->objects = table;
        if (!table) return;
        com::ComPtr<ITableSource> source;
        if (SUCCEEDED(table.As(&source))) source->addListener(*this);
        long count = 0;
        com::check(table->get_Count(&count), table);
        for (long index = 0; index < count; ++index) {
            com::Bstr name;
            com::check(table->get_Name(index, name.put()), table);
            nameAdded(std::wstring(name.view()));
        }
    });
}

// The control learns a name only once; what stands under it follows the table.
void KelScript::nameAdded(const std::wstring& name) {
    if (names_.contains(name)) return;
    const auto item = com::makeObject<NamedItem>(table_, name);
    control_->call(L"AddObject",
                   {com::Variant(std::wstring_view(name)),
                    com::Variant(static_cast<IDispatch*>(item.Get())), com::Variant(false)});
    names_.insert(name);
}

HRESULT KelScript::get_Objects(IKelObjects** objects) {
    return guarded<IKelScriptObject2>([&] {
        com::out(objects) = nullptr;
        com::ComPtr<IKelObjects>(table_->objects).CopyTo(objects);
    });
}

HRESULT KelScript::get_Unattended(VARIANT_BOOL* isUnattended) {
    return guarded<IKelScriptObject2>(
        [&] { com::out(isUnattended) = com::variantBool(isUnattended_); });
}

HRESULT KelScript::put_Unattended(VARIANT_BOOL isUnattended) {
    return guarded<IKelScriptObject2>([&] { isUnattended_ = com::isTrue(isUnattended); });
}

HRESULT KelScript::get_LastError(BSTR* text) {
    return guarded<IKelScriptObject2>([&] {
        com::out(text) = nullptr;
        *text = com::Bstr(std::wstring_view(lastError().text)).release();
    });
}

HRESULT KelScript::get_LastErrorDescription(BSTR* text) {
    return guarded<IKelScriptObject2>([&] {
        com::out(text) = nullptr;
        *text = com::Bstr(std::wstring_view(lastError().description)).release();
    });
}

HRESULT KelScript::get_LastErrorLine(long* line) {
    return guarded<IKelScriptObject2>([&] {
        com::out(line) = 0;
        *line = lastError().line;
    });
}

HRESULT KelScript::get_LastErrorColumn(long* column) {
    return guarded<IKelScriptObject2>([&] {
        com::out(column) = 0;
        *column = lastError().column;
    });
}

HRESULT KelScript::ClearLastError() {
    return guarded<IKelScriptObject2>([&] {
        clearError();
        lastError_ = {};
    });
}

}  // namespace kel::html
