#pragma once
// Calls as script languages make them, written as lines.

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "com/variant.h"

namespace kel::conformance {

// What became of a call.
struct Outcome {
    DISPID member = 0;
    HRESULT code = S_OK;
    std::string reason;  // that a failing member told, and who told it
    std::string source;
    com::Variant result;
    std::deque<com::Variant> outs;
    DWORD lastError = 0;  // of the thread, behind the call
};

// Calls a member. Arguments are passed as they stand: named ones first, then the last one first;
// the value of a put, which is not in `named`, comes before all.
Outcome invoke(IDispatch* object, DISPID member, WORD flags, std::vector<VARIANT> arguments,
               std::vector<DISPID> named = {});

// Calls a member by its name: "Name argument ..." or "Name argument ... = value"; with
// "Member.Name" one of the object that a member gives. An argument is a text in quotes, a number,
// "true", "false", "yes" (1, which is not VARIANT_TRUE), "none" (a text that is a null pointer),
// "out", which takes a result, or the name of one of the values.
Outcome invoke(IDispatch* object, const std::string& line,
               const std::map<std::string, com::Variant>& values = {});

// A text in quotes, with escapes; another value as its text, nothing as an empty one.
std::string show(const com::Variant& value);

}  // namespace kel::conformance
