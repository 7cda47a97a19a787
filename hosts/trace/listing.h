#pragma once
// The listing of a recorder's card as a recording holds it.

#include "com/error.h"
#include "hosts/model/json.h"
#include "interfaces/KelUtils.h"

namespace kel::trace {

// What a collection of files tells, and how it goes to other threads. Throws com::Error where it
// fails, or holds something else.
hosts::Json listingToJson(ICollection* files);

// A collection that tells the same. Throws std::invalid_argument or com::Error.
com::ComPtr<ICollection> listingFromJson(const hosts::Json& json);

// The names of the files of a collection, as far as they can be had; null for no collection.
hosts::Json namesIn(ICollection* files);

}  // namespace kel::trace
