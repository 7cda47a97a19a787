#pragma once
// The list of the files on the card.

#include <windows.h>

#include <string>
#include <vector>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

// A view of the list control, whose rows stand in the order of the listing.
class RecorderRows {
public:
    explicit RecorderRows(HWND list) : list_(list) {}

    void addColumns();
    // For so many rows to come.
    void reserve(long count);
    // Throws com::Error.
    void add(const std::wstring& name, const com::ComPtr<IRecorderFile>& file);
    void clear();

    void selectAll();
    std::vector<long> selected() const;

private:
    HWND list_;
};

}  // namespace kel::service
