#pragma once
// Plays cases of the link's objects, as cases.txt tells.

#include <atomic>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "bench/instrument/card.h"
#include "com/variant.h"
#include "tests/support/cases.h"
#include "tests/wine/link/access_test.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::bench::test {

// Everywhere in a text.
void replace(std::string& text, const std::string& from, const std::string& to);
// What stands before and behind " | ".
std::pair<std::string, std::string> halves(const std::string& text);

class LinkCase : public AccessTest, public testing::WithParamInterface<kel::test::Case> {
protected:
    // The object that the settings name, and what it needs.
    void make();
    // The lines of the case, one after the other.
    void playSteps();

    // Does a line and gives what it shows, with a line end if that is something.
    std::string play(const std::string& line);
    // The same of a line whose first word is known.
    virtual std::string act(const std::string& word, std::string rest);
    // Does what stands for this event.
    void doInside();

    kel::test::TemporaryFolder folder_;
    TcpPeer peer_;
    TcpPeer gateway_;
    // What stands for names that differ from run to run.
    std::map<std::string, std::string> names_ = {{"$folder", com::narrow(folder_.path())},
                                                 {"$gate", com::narrow(gateway_.port().view())}};
    std::map<std::string, CLSID> classes_ = {
        {"serial", link::kSerialStreamClass},      {"network", link::kNetworkStreamClass},
        {"communicator", kCommunicatorClass},      {"collection", link::kCollectionClass},
        {"compass", link::kCompassAccessClass},    {"pressure", link::kPressureAccessClass},
        {"uploader", link::kFirmwareUploaderClass}};
    ComPtr<IDispatch> object_;
    std::map<std::string, com::Variant> values_;  // objects by their names, which begin with "$"
    kel::test::EventSink* sink_ = nullptr;

private:
    // Takes whoever connects where the other end is the case itself.
    virtual void acceptPeer() { peer_.accept(); }
    std::string playEach(const std::string& lines);
    kel::test::Outcome invoked(IDispatch* object, std::string line);
    std::string call(IDispatch* object, const std::string& line) {
        return kel::test::show(invoked(object, line));
    }

    // The other ends. Lines for later are done when a wait runs the message loop.
    void runLater();
    std::string answerAs(const std::string& dialogue);
    std::string greet();

    void listen(const IID& events);
    std::string callElsewhere(const std::string& line, bool leaves);

    std::string isLoaded(const std::string& place);
    std::string folderContent() const;

    CardKind card_ = CardKind::kUsual;
    ComPtr<IUnknown> sinkOwner_;
    std::map<std::string, std::string> inside_;  // lines by how an event begins
    std::deque<std::string> later_;
    std::string heard_, shownLater_;
    std::string meanwhile_;
    std::atomic<DWORD> error_ = 0;
};

}  // namespace kel::bench::test
