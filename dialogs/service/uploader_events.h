#pragma once
// The events of the link's firmware uploader.

#include <windows.h>

#include <ocidl.h>

#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::service {

// Called in the middle of a transfer, on the thread that carries it out.
class UploadListener {
public:
    virtual void uploaderSays(std::wstring text) = 0;
    // In bytes.
    virtual void uploaderProgresses(long done, long total) = 0;

protected:
    ~UploadListener() = default;
};

// The listener hears an uploader as long as this lives, even where the uploader goes on to fire.
class UploaderEvents {
public:
    // Of an uploader without events there is nothing to hear. Throws com::Error when one that has
    // them refuses.
    UploaderEvents(const com::ComPtr<IFirmwareUploader>& uploader, UploadListener& listener);
    ~UploaderEvents();
    UploaderEvents(const UploaderEvents&) = delete;
    UploaderEvents& operator=(const UploaderEvents&) = delete;

private:
    class Sink;

    com::ComPtr<Sink> sink_;
    com::ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

}  // namespace kel::service
