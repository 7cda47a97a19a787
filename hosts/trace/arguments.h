#pragma once
// Arguments of the link's members as values of the trace file.

#include <windows.h>

#include <oleauto.h>

#include <concepts>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "com/error.h"
#include "com/text.h"
#include "com/variant.h"
#include "hosts/trace/model/event.h"
#include "interfaces/KelUtils.h"

namespace kel::trace {

inline std::u16string toText(std::wstring_view text) {
    return {text.begin(), text.end()};
}

inline std::wstring fromText(std::u16string_view text) {
    return {text.begin(), text.end()};
}

Json toJson(long number);
Json toJson(LONGLONG number);
Json toJson(double number);
Json toJson(unsigned char number);
// True and false for the two values of automation, the number for others.
Json toJson(VARIANT_BOOL truth);
// Null stays null in results; as an argument it is the empty text.
Json toJson(BSTR text);
// Arrays of bytes in hexadecimal form; values that the file has no form for as type and text.
Json toJson(const VARIANT& value);
// The name of a traced object; "preprocessor" for one, "foreign" for every other object.
Json toJson(IPreprocessor* preprocessor);
Json toJson(IUnknown* object);

// An array of plain values for callers of automation; what has no plain form as its text in the
// file.
com::Variant toVariant(const Json::Array& values);

// The way back, into a place that holds nothing. Throw std::invalid_argument or com::Error for what
// toJson() does not give.
void fromJson(const Json& json, long& number);
void fromJson(const Json& json, LONGLONG& number);
void fromJson(const Json& json, double& number);
void fromJson(const Json& json, unsigned char& number);
void fromJson(const Json& json, VARIANT_BOOL& truth);
void fromJson(const Json& json, BSTR& text);
void fromJson(const Json& json, VARIANT& value);

// Objects do not come back, unless a wrapper says how.
[[noreturn]] void refuseObject();
template <std::derived_from<IUnknown> Interface>
void fromJson(const Json&, Interface*&) {
    refuseObject();
}

// Results are pointers to values; objects and texts, which are pointers too, are arguments.
template <class Argument>
inline constexpr bool isResult = std::is_pointer_v<Argument> && !std::is_same_v<Argument, BSTR> &&
                                 !std::is_base_of_v<IUnknown, std::remove_pointer_t<Argument>>;

template <class Argument>
void addArgument(Json::Array& values, Argument argument) {
    if constexpr (std::is_same_v<Argument, BSTR>) {
        values.push_back(toText(com::view(argument)));
    } else if constexpr (!isResult<Argument>) {
        values.push_back(toJson(argument));
    }
}

template <class Argument>
void addResult(Json::Array& values, Argument argument) {
    if constexpr (isResult<Argument>) values.push_back(argument ? toJson(*argument) : Json());
}

template <class Argument>
void clearResult(Argument argument) {
    if constexpr (isResult<Argument>) {
        if (argument) *argument = {};
    }
}

// Takes the next recorded value for a result. Throws std::invalid_argument when there is none.
template <class Argument>
void giveResult(const Json::Array& values, std::size_t& index, Argument argument) {
    if constexpr (isResult<Argument>) {
        if (index == values.size()) throw std::invalid_argument("A recorded result is missing");
        fromJson(values[index++], com::out(argument));
    }
}

}  // namespace kel::trace
