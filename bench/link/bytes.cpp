#include "bench/link/bytes.h"

#include <cstring>
#include <new>

#include "com/error.h"

namespace kel::bench {
namespace {

// Gives access to the elements of an array of bytes.
class ArrayData {
public:
    explicit ArrayData(SAFEARRAY* array) : array_(array) {
        com::check(SafeArrayAccessData(array, &data_));
    }
    ~ArrayData() { SafeArrayUnaccessData(array_); }
    ArrayData(const ArrayData&) = delete;
    ArrayData& operator=(const ArrayData&) = delete;

    char* get() const { return static_cast<char*>(data_); }

private:
    SAFEARRAY* array_;
    void* data_ = nullptr;
};

}  // namespace

com::Variant byteArray(std::string_view bytes) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!array) throw std::bad_alloc();
    com::Variant value;
    VARIANT* place = value.put();
    place->vt = VT_ARRAY | VT_UI1;
    place->parray = array;
    if (!bytes.empty()) std::memcpy(ArrayData(array).get(), bytes.data(), bytes.size());
    return value;
}

std::string bytesOf(const VARIANT& array) {
    const com::Variant value(array);
    SAFEARRAY* elements = value.type() == (VT_ARRAY | VT_UI1) ? value.get().parray : nullptr;
    if (!elements || SafeArrayGetDim(elements) != 1) {
        throw com::Error(E_INVALIDARG, L"An array of bytes is expected");
    }
    LONG first = 0;
    LONG last = 0;
    com::check(SafeArrayGetLBound(elements, 1, &first));
    com::check(SafeArrayGetUBound(elements, 1, &last));
    return {ArrayData(elements).get(), static_cast<std::size_t>(last - first + 1)};
}

}  // namespace kel::bench
