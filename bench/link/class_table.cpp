#include "bench/link/class_table.h"

#include "bench/link/access/compass_access.h"
#include "bench/link/access/firmware_uploader.h"
#include "bench/link/access/pressure_access.h"
#include "bench/link/agile.h"
#include "bench/link/communicator.h"
#include "bench/link/network_stream.h"
#include "bench/link/serial_stream.h"
#include "com/collection.h"
#include "interfaces/link_classes.h"

namespace kel::bench {
namespace {

// A communicator has no fixed identifier, each link library has its own.
constexpr CLSID kCommunicatorClass = {
    0x4D0F6B1C, 0x92E7, 0x4A53, {0xB8, 0x1E, 0x63, 0xC5, 0x0A, 0x7D, 0xF2, 0x98}};

constexpr UINT kNoScript = 0;

template <class Component>
constexpr auto kCreate = com::rowCreator<com::createInstance<Component>>;

com::ClassRow table[] = {
    {L"Communicator", &kCommunicatorClass, kNoScript, kCreate<Communicator>},
    {L"SerialStream", &link::kSerialStreamClass, kNoScript, kCreate<SerialStream>},
    {L"NetworkStream", &link::kNetworkStreamClass, kNoScript, kCreate<NetworkStream>},
    {L"FirmwareUploader", &link::kFirmwareUploaderClass, kNoScript, kCreate<FirmwareUploader>},
    {L"PressureAccess", &link::kPressureAccessClass, kNoScript, kCreate<PressureAccess>},
    {L"CompassAccess", &link::kCompassAccessClass, kNoScript, kCreate<CompassAccess>},
    {L"Collection", &link::kCollectionClass, kNoScript,
     com::rowCreator<Agile<com::Collection>::create>},
};

}  // namespace

std::span<com::ClassRow> classTable() {
    return table;
}

}  // namespace kel::bench
