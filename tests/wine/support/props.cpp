// The kinds of doubles besides the link and its ports.
#include "interfaces/link_classes.h"
#include "tests/wine/service/access_prop.h"
#include "tests/wine/service/fake_compass.h"
#include "tests/wine/service/fake_pressure.h"
#include "tests/wine/service/fake_recorder.h"
#include "tests/wine/support/stage.h"

namespace kel::test {
namespace {

//     recorder card                has a card with twelve files, which are all there already
//     recorder fail METHOD
class RecorderProp final : public Prop {
public:
    explicit RecorderProp(Stage& stage) {
        for (int number = 1; number <= 12; ++number)
            recorder_->files.push_back({L"DATA" + std::to_wstring(number + 100) + L".BIN",
                                        (number * 7919LL) << number, 45000.31 + number});
        recorder_->used = 91LL << 20;
        recorder_->capacity = 4LL << 30;
        recorder_->operation = [recorder = recorder_.Get()] {
            recorder->fire(4, {com::Variant(L"DATA101.BIN")});
            return true;
        };
        stage.link.access = recorder_->controlling();
    }

    void prepare(const std::string& line) override {
        std::string rest = line;
        if (line == "card") return;
        if (takeWord(rest) != "fail") throw std::invalid_argument("not understood: " + line);
        recorder_->onCall = [rest](const std::string& call) {
            if (call.starts_with(rest)) throw com::Error(E_FAIL, L"The port is not open");
        };
    }

private:
    const com::ComPtr<FakeRecorder> recorder_ = com::makeObject<FakeRecorder>(false);
    const ClassObject collections_{link::kCollectionClass, [] { return makeCollection(false); }};
};

}  // namespace

const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)>& propMakers() {
    static const std::map<std::string_view, std::unique_ptr<Prop> (*)(Stage&)> makers = {
        {"compass", makeProp<AccessProp<FakeCompass, link::kCompassAccessClass>>},
        {"pressure", makeProp<AccessProp<FakePressure, link::kPressureAccessClass>>},
        {"recorder", makeProp<RecorderProp>},
    };
    return makers;
}

}  // namespace kel::test
