// The kinds of doubles besides the link and its ports.
#include <cderr.h>
#include <commdlg.h>

#include <cwchar>
#include <optional>

#include "com/text.h"
#include "interfaces/link_classes.h"
#include "tests/wine/keldesk/program_prop.h"
#include "tests/wine/script/preprocessor_props.h"
#include "tests/wine/service/access_prop.h"
#include "tests/wine/service/fake_access.h"
#include "tests/wine/service/fake_uploader.h"
#include "tests/wine/service/recorder_prop.h"
#include "tests/wine/support/here_prop.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/stage.h"
#include "tests/wine/terminal/container_prop.h"

namespace kel::test {
namespace {

// Answers as the other access objects, and besides:
//
//     uploader plain               takes one file and tells nothing
//     uploader bare                is not traced: nothing stands between it and who listens
//     uploader say TEXT            its events
//     uploader progress 250 1000
//     uploader late TEXT           to those who heard the last upload
//     uploader heard               tells whether anybody listens
class UploaderProp final : public AccessProp<FakeUploader, link::kFirmwareUploaderClass> {
public:
    using AccessProp::AccessProp;

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string word = takeWord(rest);
        if (word == "plain") {
            double_ = com::makeObject<FakeUploader>();
            double_->isPlain = true;
            install();
        } else if (word == "bare") {
            registerClass(double_->controlling());
        } else if (word == "say") {
            double_->say(widened(rest));
        } else if (word == "late") {
            double_->askFormerSinks(1, widened(rest));
        } else if (word == "progress") {
            const long done = std::stol(takeWord(rest));
            double_->progress(done, std::stol(rest));
        } else if (word == "heard") {
            stage_.transcript.tell(double_->isHeard() ? "heard" : "not heard");
        } else {
            AccessProp::prepare(line);
        }
    }
};

// "clock 52000": so many milliseconds have passed since the start of the system, until it is told
// anew.
class ClockProp final : public Prop {
public:
    explicit ClockProp(Stage&) {}
    void prepare(const std::string& line) override { time_ = std::stoull(line); }

private:
    static ULONGLONG WINAPI tell() { return time_; }
    static DWORD WINAPI tellShort() { return static_cast<DWORD>(time_); }

    static inline std::atomic<ULONGLONG> time_ = 0;
    const ImportPatch clock_{kelUtils().module(), "GetTickCount64", reinterpret_cast<void*>(tell)};
    const ImportPatch shortClock_{kelUtils().module(), "GetTickCount",
                                  reinterpret_cast<void*>(tellShort)};
};

// "platform as Windows": from now on the active dialog gets no Cancel in the name of a button that
// is disabled, which Wine sends. "platform refuses waits": COM does not wait for other threads.
class PlatformProp final : public Prop {
public:
    explicit PlatformProp(Stage&) {}
    void prepare(const std::string& line) override {
        if (line == "refuses waits") {
            waits_.emplace(kelUtils().module(), "CoWaitForMultipleHandles",
                           reinterpret_cast<void*>(refuseToWait));
            return;
        }
        if (line != "as Windows") throw std::invalid_argument("not understood: " + line);
        original_ = reinterpret_cast<DLGPROC>(
            SetWindowLongPtrW(GetActiveWindow(), DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(behave)));
    }

private:
    static INT_PTR CALLBACK behave(HWND window, UINT message, WPARAM wide, LPARAM longer) {
        if (message == WM_COMMAND && wide == IDCANCEL && longer != 0 &&
            !IsWindowEnabled(reinterpret_cast<HWND>(longer)))
            return TRUE;
        return original_(window, message, wide, longer);
    }

    static HRESULT WINAPI refuseToWait(DWORD, DWORD, ULONG, HANDLE*, DWORD*) {
        return E_UNEXPECTED;
    }

    static inline DLGPROC original_ = nullptr;
    std::optional<ImportPatch> waits_;
};

// "chooser as Windows": the platform's chooser of files refuses names with a bar, and what it is
// asked is told: the name, the extension by default, the kinds of files.
class ChooserProp final : public Prop {
public:
    explicit ChooserProp(Stage& stage) {
        stage_ = &stage;
        original_ = chooser_.original<decltype(GetOpenFileNameW)>();
    }
    void prepare(const std::string& line) override {
        if (line != "as Windows") throw std::invalid_argument("not understood: " + line);
    }

private:
    static BOOL WINAPI choose(OPENFILENAMEW* question) {
        std::wstring asked = std::wstring(question->lpstrFile) + L"; " + question->lpstrDefExt;
        for (const wchar_t* part = question->lpstrFilter; *part != L'\0'; part += wcslen(part) + 1)
            asked.append(L"; ").append(part);
        stage_->transcript.tell(com::narrow(asked, CP_UTF8));
        return !wcschr(question->lpstrFile, L'|') && original_(question);
    }
    static DWORD WINAPI tellRefusal() { return FNERR_INVALIDFILENAME; }

    static inline Stage* stage_ = nullptr;
    static inline decltype(GetOpenFileNameW)* original_ = nullptr;
    const ImportPatch chooser_{kelUtils().module(), "GetOpenFileNameW",
                               reinterpret_cast<void*>(choose)};
    const ImportPatch error_{kelUtils().module(), "CommDlgExtendedError",
                             reinterpret_cast<void*>(tellRefusal)};
};

}  // namespace

const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)>& propMakers() {
    static const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)> makers = {
        {"box", makeProp<BoxProp>},
        {"chooser", makeProp<ChooserProp>},
        {"clock", makeProp<ClockProp>},
        {"container", makeContainerProp},
        {"here", makeProp<HereProp>},
        {"program", makeProgramProp},
        {"compass", makeProp<AccessProp<FakeCompass, link::kCompassAccessClass>>},
        {"diagnostics", makeProp<DiagnosticsProp>},
        {"inside", makeProp<InsideProp>},
        {"listener", makeProp<ListenerProp>},
        {"own", makeProp<OwnProp>},
        {"platform", makeProp<PlatformProp>},
        {"pressure", makeProp<AccessProp<FakePressure, link::kPressureAccessClass>>},
        {"recorder", makeProp<RecorderProp>},
        {"uploader", makeProp<UploaderProp>},
        {"windows", makeProp<WindowsProp>},
        {"word", makeProp<WordProp>},
    };
    return makers;
}

}  // namespace kel::test
