#pragma once
// What stands around a preprocessor in scenes, besides the link.
//
//     inside CALL | LINE           the host does the line in each call that begins so; calls are
//     also
//                                  the events and words below. Lines besides those of any host:
//                                  "fail TEXT" lets the call fail
//     inside 3 CALL | LINE         in the third one from now
//     listener NAME, listener NAME gone        hears the events of the preprocessor
//     word NAME directive|function WORD…       words that the host installs, numbered as they come
//     word NAME handled|result false, word NAME value TEXT      what NAME answers, true unless said
//     diagnostics                  tells those of the last run, "diagnostics of TEXT" those of a
//     check own reading                  tells whether the preprocessor claims the stream own send
//     TEXT                sends a line, as the host's words do own directive|function CODE  calls a
//     built-in word from outside box ok|cancel                takes the place of the platform's
//     message box: tells what it gets windows                      tells how many windows were made
//     since the last such line

#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "tests/support/cases.h"
#include "tests/wine/script/fake_extension.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/stage.h"

namespace kel::test {

class InsideProp final : public Prop {
public:
    explicit InsideProp(Stage& stage)
        : stage_(stage), others_(std::exchange(stage.link.onCall, [this](const std::string& call) {
              others_(call);
              react(call);
          })) {}

    void prepare(const std::string& line) override {
        const std::size_t bar = line.find(" | ");
        std::string call = line.substr(0, bar);
        const bool isNumbered = std::isdigit(static_cast<unsigned char>(call[0]));
        const int number = isNumbered ? std::stoi(takeWord(call)) : 0;
        rules_.push_back({number, 0, call, line.substr(bar + 3)});
    }

private:
    struct Rule {
        int number;  // of the call that is meant, from 1; 0 for all
        int seen;
        std::string call;
        std::string line;
    };

    // By index: a line may bring others.
    void react(const std::string& call) {
        for (std::size_t i = 0, size = rules_.size(); i < size; ++i) {
            Rule& rule = rules_[i];
            if (!call.starts_with(rule.call)) continue;
            if (rule.number > 0 && ++rule.seen != rule.number) continue;
            std::string line = rule.line;
            if (!line.starts_with("fail ")) {
                stage_.play(line);
                continue;
            }
            throw com::Error(E_FAIL, widened(line.substr(5)));
        }
    }

    Stage& stage_;
    const std::function<void(const std::string&)> others_;
    std::vector<Rule> rules_;
};

class ListenerProp final : public Prop {
public:
    explicit ListenerProp(Stage& stage) : stage_(stage) {}

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string name = takeWord(rest);
        const auto point = eventsOf(stage_.component(), DIID__IPreprocessorEvents);
        if (rest == "gone") {
            const HRESULT code = point->Unadvise(cookies_[name]);
            if (FAILED(code)) stage_.transcript.tell(std::to_string(code));
            return;
        }
        const auto sink = com::makeObject<EventSink>();
        sink->onEvent = [this, name, sink = sink.Get()](DISPID) {
            return com::guardLateBound([&] {
                std::string event = std::exchange(sink->events, {});
                event.pop_back();
                stage_.link.onCall(name + " " + event);
            });
        };
        com::check(point->Advise(sink->controlling(), &cookies_[name]));
    }

private:
    Stage& stage_;
    std::map<std::string, DWORD> cookies_;
};

class WordProp final : public Prop {
public:
    explicit WordProp(Stage& stage) : stage_(stage) {}

    void prepare(const std::string& line) override {
        std::istringstream words(line);
        std::string name, kind, word;
        words >> name >> kind;
        auto& extension = extensions_[name];
        if (!extension) {
            extension = com::makeObject<FakeExtension>();
            extension->onCall = [this, name](const std::string& call) {
                stage_.link.onCall(name + " " + call);
            };
        }
        com::ComPtr<IPreprocessorImpl> preprocessor;
        com::check(stage_.component()->QueryInterface(IID_PPV_ARGS(&preprocessor)));
        while (words >> word) {
            const com::Bstr text(widened(word));
            if (kind == "directive") {
                com::check(
                    preprocessor->InstallCustomDirective(text.get(), extension.Get(), ++number_));
            } else if (kind == "function") {
                com::check(
                    preprocessor->InstallCustomFunction(text.get(), extension.Get(), ++number_));
            } else if (kind == "value") {
                extension->value = widened(word);
            } else {
                (kind == "handled" ? extension->handled : extension->result) = word == "true";
            }
        }
    }

private:
    Stage& stage_;
    std::map<std::string, com::ComPtr<FakeExtension>> extensions_;
    int number_ = 0;
};

// "line:column severity message", an entry a line.
class DiagnosticsProp final : public Prop {
public:
    explicit DiagnosticsProp(Stage& stage) : stage_(stage) {}

    void prepare(const std::string& line) override {
        com::ComPtr<IPreprocessorControl> preprocessor;
        com::check(stage_.component()->QueryInterface(IID_PPV_ARGS(&preprocessor)));
        com::ComPtr<IScriptDiagnostics> all;
        if (line.empty()) {
            com::check(preprocessor->get_Diagnostics(&all));
        } else {
            com::check(preprocessor->Check(com::Bstr(widened(line.substr(3))).get(), &all));
        }
        long count = 0;
        long errors = 0;
        com::check(all->get_Count(&count));
        com::check(all->get_ErrorCount(&errors));
        stage_.transcript.tell(std::to_string(errors) + " error(s)");
        for (long i = 0; i < count; ++i) {
            com::ComPtr<IScriptDiagnostic> each;
            long row = 0;
            long column = 0;
            ScriptSeverity severity;
            com::Bstr message;
            com::check(all->get_Item(i, &each));
            com::check(each->get_Line(&row));
            com::check(each->get_Column(&column));
            com::check(each->get_Severity(&severity));
            com::check(each->get_Message(message.put()));
            stage_.transcript.tell(std::to_string(row) + ":" + std::to_string(column) +
                                   (severity == ScriptError ? " error " : " warning ") +
                                   com::narrow(message.get()));
        }
    }

private:
    Stage& stage_;
};

// The interfaces that are not for automation.
class OwnProp final : public Prop {
public:
    explicit OwnProp(Stage& stage) : stage_(stage) {}

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string word = takeWord(rest);
        com::ComPtr<IPreprocessor2> lines;
        com::ComPtr<IPreprocessorExtension> words;
        com::check(stage_.component()->QueryInterface(IID_PPV_ARGS(&lines)));
        com::check(stage_.component()->QueryInterface(IID_PPV_ARGS(&words)));
        VARIANT_BOOL handled = 7;
        VARIANT_BOOL result = 7;
        com::Bstr value;
        HRESULT code = S_OK;
        if (word == "reading") {
            code = lines->get_ReadingFromStream(&result);
        } else if (word == "send") {
            code = lines->Send(com::Bstr(widened(rest)).get(), &result);
        } else if (word == "directive") {
            code = words->DirectiveHandler(stage_.link.communicator(), std::stol(rest), nullptr,
                                           &handled, &result);
        } else {
            code = words->FunctionHandler(stage_.link.communicator(), std::stol(rest), nullptr,
                                          value.put(), &handled, &result);
        }
        std::string told = word + (FAILED(code)             ? " " + std::to_string(code)
                                   : result == VARIANT_TRUE ? " true"
                                                            : " false");
        if (handled == VARIANT_FALSE) told += ", not handled";
        if (!value.view().empty()) told += ", " + com::narrow(value.view());
        stage_.transcript.tell(told);
    }

private:
    Stage& stage_;
};

class BoxProp final : public Prop {
public:
    explicit BoxProp(Stage& stage) { stage_ = &stage; }

    void prepare(const std::string& line) override { answer_ = line == "ok" ? IDOK : IDCANCEL; }

private:
    static int WINAPI show(HWND owner, LPCWSTR text, LPCWSTR caption, UINT kind) {
        stage_->transcript.tell("box \"" + com::narrow(text) + "\" " + com::narrow(caption) + " " +
                                std::to_string(kind) + (owner ? " owned" : ""));
        return answer_;
    }

    static inline Stage* stage_ = nullptr;
    static inline int answer_ = IDOK;
    const ImportPatch box_{kelUtils().module(), "MessageBoxW", reinterpret_cast<void*>(show)};
};

class WindowsProp final : public Prop {
public:
    explicit WindowsProp(Stage& stage) : stage_(stage) { made_ = 0; }
    ~WindowsProp() override { UnhookWindowsHookEx(hook_); }

    void prepare(const std::string&) override {
        stage_.transcript.tell(std::exchange(made_, 0) > 0 ? "windows" : "no windows");
    }

private:
    static LRESULT CALLBACK count(int code, WPARAM window, LPARAM details) {
        if (code == HCBT_CREATEWND) ++made_;
        return CallNextHookEx(nullptr, code, window, details);
    }

    static inline int made_ = 0;
    Stage& stage_;
    const HHOOK hook_ = SetWindowsHookExW(WH_CBT, count, nullptr, GetCurrentThreadId());
};

}  // namespace kel::test
