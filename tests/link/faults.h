#pragma once
// Faults that a link may have: each takes the place of a member in the table of virtual functions.

#include <span>

namespace kel::conformance {

enum class Place { kSerial, kNetwork, kLink };

struct Fault {
    Place place;
    unsigned slot;
    void* member;
    const char* rule;  // how the name of the rule that is to find it begins
};

std::span<const Fault> faults();

// What the fault of the moment stands in for, and calls.
extern void* replacedMember;

}  // namespace kel::conformance
