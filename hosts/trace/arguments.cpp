#include "hosts/trace/arguments.h"

#include <cstring>
#include <limits>
#include <new>

#include "com/error.h"
#include "com/text.h"
#include "com/variant.h"
#include "hosts/trace/model/hexadecimal.h"
#include "hosts/trace/traced_object.h"

namespace kel::trace {
namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
std::u16string hexadecimal(SAFEARRAY* array) {
    LONG first = 0;
    LONG last = -1;
    com::check(SafeArrayGetLBound(array, 1, &first));
    com::check(SafeArrayGetUBound(array, 1, &last));
    std::string bytes;
    for (LONG i = first; i <= last; ++i) {
        BYTE byte = 0;
        com::check(SafeArrayGetElement(array, &i, &byte));
        bytes += static_cast<char>(byte);
    }
    return toHexadecimal(bytes);
}

void putBytes(const std::u16string& text, VARIANT& value) {
    const std::string bytes = fromHexadecimal(text);
    com::Variant array;
    VARIANT* place = array.put();
    place->parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!place->parray) throw std::bad_alloc();
    place->vt = kByteArray;
    std::memcpy(place->parray->pvData, bytes.data(), bytes.size());
    value = array.release();
}

com::Variant plainVariant(const Json& json) {
    if (json.isNull()) return {};
    if (const auto* truth = std::get_if<bool>(&json.value)) return com::Variant(*truth);
    if (const auto* text = std::get_if<std::u16string>(&json.value))
        return com::Variant(std::wstring_view(fromText(*text)));
    if (const auto* number = std::get_if<std::int64_t>(&json.value))
        return com::Variant(static_cast<long>(*number));
    return com::Variant(std::wstring_view(com::widen(hosts::write(json), CP_UTF8)));
}

}  // namespace

Json toJson(long number) {
    return number;
}

Json toJson(LONGLONG number) {
    return number;
}

Json toJson(double number) {
    return number;
}

Json toJson(unsigned char number) {
    return number;
}

Json toJson(VARIANT_BOOL truth) {
    if (truth == VARIANT_TRUE || truth == VARIANT_FALSE) return truth == VARIANT_TRUE;
    return truth;
}

Json toJson(BSTR text) {
    return text ? Json(toText(com::view(text))) : Json();
}

Json toJson(const VARIANT& given) {
    const com::Variant value(given);
    const VARIANT& plain = value.get();
    switch (value.type()) {
        case VT_EMPTY:
            return {};
        case VT_BOOL:
            return toJson(plain.boolVal);
        case VT_I4:
            return toJson(plain.lVal);
        case VT_BSTR:
            return toJson(com::Bstr(com::view(plain.bstrVal)).get());
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return Json::Object{{"type", value.type()}, {"object", toJson(plain.punkVal)}};
        case kByteArray:
            if (SafeArrayGetDim(plain.parray) != 1) break;
            return Json::Object{{"bytes", hexadecimal(plain.parray)}};
        default:
            break;
    }
    Json::Object other{{"type", value.type()}};
    com::Variant text;
    if (SUCCEEDED(VariantChangeTypeEx(text.put(), const_cast<VARIANT*>(&plain), LOCALE_INVARIANT, 0,
                                      VT_BSTR))) {
        other.push_back({"text", toJson(text.get().bstrVal)});
    }
    return other;
}

Json toJson(IPreprocessor* preprocessor) {
    return preprocessor ? Json("preprocessor") : Json();
}

Json toJson(IUnknown* object) {
    if (!object) return {};
    const TracedObject* traced = TracedObject::from(object);
    return traced ? Json(traced->name()) : Json("foreign");
}

com::Variant toVariant(const Json::Array& values) {
    com::Variant array;
    VARIANT* place = array.put();
    place->parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(values.size()));
    if (!place->parray) throw std::bad_alloc();
    place->vt = VT_ARRAY | VT_VARIANT;
    auto* elements = static_cast<VARIANT*>(place->parray->pvData);
    for (const Json& value : values)
        *elements++ = plainVariant(value).release();
    return array;
}

void fromJson(const Json& json, long& number) {
    number = static_cast<long>(json.integer());
}

void fromJson(const Json& json, LONGLONG& number) {
    number = json.integer();
}

void fromJson(const Json& json, double& number) {
    number = json.isNull() ? std::numeric_limits<double>::quiet_NaN() : json.number();
}

void fromJson(const Json& json, unsigned char& number) {
    number = static_cast<unsigned char>(json.integer());
}

void fromJson(const Json& json, VARIANT_BOOL& truth) {
    const bool* plain = std::get_if<bool>(&json.value);
    truth = plain ? com::variantBool(*plain) : static_cast<VARIANT_BOOL>(json.integer());
}

void fromJson(const Json& json, BSTR& text) {
    text = json.isNull() ? nullptr : com::Bstr(fromText(json.text())).release();
}

void fromJson(const Json& json, VARIANT& value) {
    VariantInit(&value);
    if (json.isNull()) return;
    if (std::holds_alternative<Json::Object>(json.value)) {
        if (const Json* bytes = json.find("bytes")) return putBytes(bytes->text(), value);
        const com::Variant text(std::wstring_view(fromText(json.at("text").text())));
        return com::check(VariantChangeTypeEx(&value, const_cast<VARIANT*>(&text.get()),
                                              LOCALE_INVARIANT, 0,
                                              static_cast<VARTYPE>(json.at("type").integer())));
    }
    const bool isText = std::holds_alternative<std::u16string>(json.value);
    const bool isNumber = std::holds_alternative<std::int64_t>(json.value);
    if (isText) {
        fromJson(json, value.bstrVal);
    } else if (isNumber) {
        fromJson(json, value.lVal);
    } else {
        fromJson(json, value.boolVal);
    }
    value.vt = static_cast<VARTYPE>(isText ? VT_BSTR : isNumber ? VT_I4 : VT_BOOL);
}

void refuseObject() {
    throw com::Error(E_NOTIMPL, L"An object does not come back from a recording");
}

}  // namespace kel::trace
