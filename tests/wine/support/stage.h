#pragma once
// What a scene is played on: a component, doubles around it, the store, and what is told of all.

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "com/variant.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/registry_sandbox.h"
#include "tests/wine/support/tcp_peer.h"
#include "tests/wine/support/temporary_folder.h"
#include "tests/wine/support/test_window.h"

namespace kel::test {

// From the encoding of the files with scenes.
std::wstring widened(const std::string& text);

// A text of lines for each step. From any thread.
class Transcript {
public:
    // Control characters are shown as escapes.
    void tell(std::string line);
    // A text that is another one in every run is told by its sign.
    void abbreviate(const std::string& text, const std::string& sign);
    // Whether the step that runs has a line that begins so.
    bool tells(const std::string& start) const;
    // Empties the step that runs.
    void forget();
    void nextStep();
    std::string step(std::size_t index) const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, std::string> signs_;
    std::vector<std::string> steps_{1};
};

class Stage;

// A double besides the link and its ports, made by the first line that begins with its word.
class Prop {
public:
    virtual ~Prop() = default;
    // The rest of such a line. Throws when it is not understood.
    virtual void prepare(const std::string& line) = 0;
};

// All kinds by their words. A further one holds a ClassObject with what stage.link.around() gives
// for its double, so that its calls are told and fail on demand as those of the link.
const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)>& propMakers();

// Made and used on the thread of the dialogs.
class Stage {
public:
    // With a number that call of the doubles fails, counted from the first; or the platform fails.
    explicit Stage(long failing = 0);
    static constexpr long kAnything = -1;
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    // A line of the host. Throws when it is not understood.
    void play(const std::string& line);

    // Waits on another thread until the thread of the dialogs has done all that waits for it.
    void settle(DialogDriver& user) { playInside(user, {}); }
    // The same, after the host's line.
    void playInside(DialogDriver& user, const std::string& line);

    // The line with what its signs stand for: "$peer", a port on which somebody listens,
    // "$instrument", the address of a virtual instrument, "$vanishing", of one that is gone after a
    // command, "$folder", a folder that goes with the scene, and "$owner", a window that does. From
    // any thread.
    std::string expanded(std::string line);

    // Whether the call has failed that was to, or anything may have. From any thread.
    bool hasFailed() const;
    bool mayFail() const { return failing_ == kAnything; }

    // What was made last.
    IDispatch* component() const { return object_.Get(); }

    FakeLink link;
    FakeLink ports{link, "new "};  // the streams that components make
    Transcript transcript;
    // Looks at the window of a picture, on the user's thread.
    std::function<void(HWND)> look;
    // What lines named "recall" told.
    std::string recalled;
    // The thread of the program that the user works with, where that is another one.
    std::atomic<DWORD> programThread = 0;
    // Whether all lines of the host are through, for the user's thread.
    std::atomic<bool> isThrough = false;

private:
    void make(std::string line);
    void call(const std::string& line, const std::map<std::string, com::Variant>& values = {});
    void setLink(std::string line);
    void setPort(std::string line);
    void setAnswers(std::string line);
    void setClass(std::string line);
    void setFailure(std::string line);
    void hold();
    void compareFile(std::string line) const;
    void recall(const std::string& section);
    void tellVariables();
    void checkOrder(const std::string& line) const;

    const long failing_;
    const RegistrySandbox store_{HKEY_CURRENT_USER};
    std::mutex signs_;
    std::optional<bench::test::TcpPeer> peer_;
    std::optional<bench::test::InstrumentServer> instrument_;
    std::optional<bench::test::InstrumentServer> vanishing_;
    std::optional<TemporaryFolder> folder_;
    std::optional<ClassObject> serial_;
    std::optional<ClassObject> network_;
    std::map<std::string, std::unique_ptr<Prop>, std::less<>> props_;
    bench::test::TestWindow window_;
    com::ComPtr<IDispatch> object_;
    HWND owner_ = nullptr;
    std::string script_;
    std::string held_;
    bool tellsCalls_ = true;
};

}  // namespace kel::test
