#pragma once
// What the engine knows of the code page that scripts are written in, by the platform's tables.

#include <windows.h>

#include "script/engine/text_rules.h"

namespace kel::script {

class CodePageRules final : public TextRules {
public:
    explicit CodePageRules(UINT codePage = CP_ACP) : codePage_(codePage) {}

    bool isLeadByte(unsigned char byte) const override;
    bool isLetter(unsigned char byte) const override;
    std::string fold(std::string_view text) const override;

private:
    UINT codePage_;
};

}  // namespace kel::script
