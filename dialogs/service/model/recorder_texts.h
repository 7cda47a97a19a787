#pragma once
// What the recorder dialog shows of times and files, and how it names what runs.

#include <cstdint>
#include <string>

namespace kel::service {

// The numbers are those of the dialog's state.
enum class Operation { None = 0, Download = 1, Format = 2 };

// "Download" or "Format".
std::wstring nameOf(Operation operation);
// The question before an operation is cancelled, and its caption.
std::wstring cancelQuestion(Operation operation);
std::wstring cancelCaption(Operation operation);

// Transfer rates in the order in which they are offered.
inline constexpr long kRecorderRates[] = {300,  600,   1200,  2400,  4800,
                                          9600, 19200, 38400, 57600, 115200};
inline constexpr char kDefaultRecorderRate[] = "57600";
inline constexpr char kDefaultDownloadFolder[] = "C:\\KelData";

// The time that is left of a transfer, from the milliseconds since its start. The estimate wraps at
// 32 bits, as it always did: that shows with large files over slow lines.
std::wstring remainingTimeText(std::uint32_t elapsed, std::uint32_t done, std::uint32_t total);
std::wstring doneText(std::uint32_t elapsed);

// What there is to tell of a listing that has taken so many milliseconds: how many files are listed
// of how many, and the time that is left; while their number is unknown, the time that has passed.
// Empty in the first two seconds.
std::wstring listingText(std::uint32_t elapsed, std::uint32_t listed, std::uint32_t total);

std::wstring fileDateText(int year, int month, int day);
std::wstring fileTimeText(int hour, int minute);

// With a backslash at its end.
std::wstring asFolder(std::wstring path);

std::wstring replaceQuestion(const std::wstring& fileName);

}  // namespace kel::service
