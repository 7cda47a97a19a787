#pragma once
// The doubles of the access objects in scenes.
//
//     pressure MeanPressure 10     what a member answers
//     pressure NewData true false  in turn, the last one for good
//     pressure none                the class is not there

#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "tests/support/cases.h"
#include "tests/wine/support/class_object.h"
#include "tests/wine/support/stage.h"

namespace kel::test {

template <class Kind>
std::unique_ptr<Prop> makeProp(Stage& stage) {
    return std::make_unique<Kind>(stage);
}

template <class Double, const CLSID& identifier>
class AccessProp : public Prop {
public:
    explicit AccessProp(Stage& stage) : stage_(stage) { install(); }

    void prepare(const std::string& line) override {
        if (line == "none") return registerClass(nullptr);
        std::string rest = line;
        auto& answers = double_->answers[takeWord(rest)];
        answers.clear();
        std::istringstream words(rest);
        for (std::string word; words >> word;)
            answers.push_back(word == "true" ? 1 : word == "false" ? 0 : std::stod(word));
        if (answers.empty()) throw std::invalid_argument("no answers: " + line);
    }

protected:
    // Anew, since what it can do is asked only once.
    void install() { registerClass(stage_.link.around<IUnknown>(double_->controlling()).Get()); }
    void registerClass(IUnknown* object) {
        class_.reset();
        class_.emplace(identifier, object);
    }

    Stage& stage_;
    com::ComPtr<Double> double_ = com::makeObject<Double>();

private:
    std::optional<ClassObject> class_;
};

}  // namespace kel::test
