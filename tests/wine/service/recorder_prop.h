#pragma once
// The recorder of the link in scenes: with a card of three files, called by the dialog's thread.
//
//     recorder agile               any thread may call it, and read collections; comes first
//     recorder passes nothing      collections can be read on the dialog's thread only
//     recorder card                has a card with twelve files, which are all there already
//     recorder files COUNT         that many, all alike
//     recorder does ACT; ACT…      what a download or format does, and tells, see below
//     recorder goes                a "wait" is over
//     recorder hasty               Cancel is pressed before what was started can have begun
//     recorder threadless          no thread can be started
//
// It may "say TEXT", tell "progress DONE ALL" and that it will "begin NAME", "ask NAME" whether to
// replace a file, which tells the answer, "wait", "work" until it is aborted, "hurry NAME" until
// then, with progress and questions all the time, tell its "end" and "where" it is called. What was
// aborted is not complete.

#include <sstream>

#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "tests/support/cases.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/stage.h"

namespace kel::test {

class RecorderProp final : public Prop {
public:
    explicit RecorderProp(Stage& stage) : stage_(stage) { install(false); }

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string word = takeWord(rest);
        if (word == "agile") {
            install(true);
        } else if (word == "passes") {
            passesCollections_ = false;
        } else if (word == "card") {
            setCard();
        } else if (word == "files") {
            const bench::CardEntry one{1, 1, 2000, 1, 1, 0, 0, 0, "F"};
            setFiles(std::vector(std::stoul(rest), one), 3, 8192);
        } else if (word == "does") {
            acts_ = rest;
        } else if (word == "goes") {
            ++goes_;
        } else if (word == "hasty") {
            isHasty_ = true;
        } else if (word == "threadless") {
            threads_.emplace(kelUtils().module(), "CreateThread",
                             reinterpret_cast<void*>(startNoThread));
        } else {
            throw std::invalid_argument("not understood: " + line);
        }
    }

private:
    static HANDLE WINAPI startNoThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE,
                                       LPVOID, DWORD, LPDWORD) {
        return nullptr;
    }

    void install(bool isAgile) {
        passesCollections_ = isAgile;
        double_ = com::makeObject<FakeRecorder>(isAgile);
        double_->operation = [this] { return operate(); };
        stage_.link.access = stage_.link.around<IUnknown>(double_->controlling());
        setFiles({{1, 1023, 2003, 11, 1, 12, 0, 0, "A.DAT"},
                  {2, 1024, 1900, 1, 1, 0, 0, 0, "B.DAT"},
                  {3, 5LL << 30, 1900, 1, 1, 7, 12, 0, "C.DAT"}},
                 3, 8192);
    }
    void setFiles(const std::vector<bench::CardEntry>& files, double used, double capacity) {
        double_->files = files;
        double_->answers["used"] = {used * (1 << 20)};
        double_->answers["capacity"] = {capacity * (1 << 20)};
    }
    void setCard() {
        std::vector<bench::CardEntry> files;
        for (int number = 1; number <= 12; ++number)
            files.push_back({number, (number * 7919LL) << number, 2023, 3, 15 + number, 7, 26, 24,
                             "DATA" + std::to_string(number + 100) + ".BIN"});
        setFiles(files, 91, 4096);
        acts_ = "ask DATA101.BIN";
        isSilent_ = true;
    }
    com::ComPtr<IUnknown> make() {
        const HWND window = FindWindowW(nullptr, L"Recorder");
        if (isHasty_) PostMessageW(window, WM_COMMAND, IDC_RECORDER_DOWNLOAD, 0);
        return makeCollection(passesCollections_);
    }

    bool operate() {
        std::istringstream acts(acts_);
        for (std::string act; std::getline(acts >> std::ws, act, ';');)
            perform(act);
        return !double_->isAborted;
    }
    void perform(std::string rest) {
        const std::string word = takeWord(rest);
        const com::Variant text(widened(rest));
        if (word == "say") {
            double_->fire(1, {text});
        } else if (word == "progress") {
            const long done = std::stol(takeWord(rest));
            double_->fire(2, {com::Variant(done), com::Variant(std::stol(rest))});
        } else if (word == "begin") {
            double_->fire(5, {text});
        } else if (word == "ask") {
            const bool answer = com::isTrue(double_->fire(4, {text}).get().boolVal);
            if (!isSilent_) stage_.transcript.tell(rest + (answer ? ": yes" : ": no"));
        } else if (word == "end") {
            double_->fire(3);
        } else if (word == "where") {
            stage_.transcript.tell(GetCurrentThreadId() == thread_ ? "here" : "elsewhere");
        } else if (word == "wait") {
            while (goes_ == 0 && double_->work()) {
            }
            --goes_;
        } else if (word == "hurry") {
            for (long i = 0; double_->work(); ++i) {
                double_->fire(2, {com::Variant(i), com::Variant(100L)});
                if (i % 3 == 0) double_->fire(4, {text});
            }
        } else if (word == "work") {
            stage_.transcript.tell("works");
            while (double_->work()) {
            }
            stage_.transcript.tell("has worked");
        } else {
            throw std::invalid_argument("not understood: " + word);
        }
    }

    Stage& stage_;
    const DWORD thread_ = GetCurrentThreadId();
    std::string acts_;
    bool passesCollections_ = false;
    bool isHasty_ = false;
    bool isSilent_ = false;
    std::atomic<int> goes_ = 0;
    std::optional<ImportPatch> threads_;
    com::ComPtr<FakeRecorder> double_;
    const ClassObject collections_{link::kCollectionClass, [this] { return make(); }};
};

}  // namespace kel::test
