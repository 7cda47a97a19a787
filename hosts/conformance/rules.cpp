#include "hosts/conformance/rules.h"

#include <windows.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace kel::conformance {

const std::vector<Rule>& rules() {
    static const std::vector<Rule> all = [] {
        std::vector<Rule> read;
        const HRSRC resource = FindResourceW(nullptr, L"RULES", MAKEINTRESOURCEW(10));
        const auto* bytes = static_cast<const char*>(LockResource(LoadResource(nullptr, resource)));
        std::istringstream text(std::string(bytes, SizeofResource(nullptr, resource)));
        for (Case& lines : readCases(text)) {
            Rule rule;
            for (std::string setting : lines.steps.front().settings) {
                const std::string word = takeWord(setting);
                if (word == "rule") {
                    rule.name = setting;
                } else if (word == "for") {
                    for (std::size_t end; !setting.empty(); setting.erase(0, end)) {
                        end = std::min(setting.find(" | "), setting.size());
                        rule.variants.push_back(setting.substr(0, end));
                        end = std::min(end + 3, setting.size());
                    }
                } else {
                    rule.subject = word;
                    rule.wire = setting;
                }
            }
            if (rule.variants.empty()) rule.variants.emplace_back();
            rule.lines = std::move(lines);
            read.push_back(std::move(rule));
        }
        return read;
    }();
    return all;
}

}  // namespace kel::conformance
