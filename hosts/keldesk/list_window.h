#pragma once
// A window beside the main one that shows a table.

#include <windows.h>

#include <string>
#include <vector>

namespace kel::keldesk {

struct Column {
    const wchar_t* title;
    int width;  // in pixels at 96 to the inch
};

// Closing hides it; what it shows stays. Belongs to its owner's thread.
class ListWindow {
public:
    // Not yet visible. Throws com::Error.
    ListWindow(HWND owner, const wchar_t* title, const std::vector<Column>& columns);
    ~ListWindow();
    ListWindow(const ListWindow&) = delete;
    ListWindow& operator=(const ListWindow&) = delete;

    using Row = std::vector<std::wstring>;
    void setRows(const std::vector<Row>& rows);
    // Changes the row with that first text, or adds one.
    void setRow(const Row& row);
    void show();

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer);

    void insert(int index, const Row& row);

    HWND window_ = nullptr;
    HWND list_ = nullptr;
};

}  // namespace kel::keldesk
