#pragma once
// The handler of an installed word, as the tables of a preprocessor hold it.

#include "com/error.h"
#include "interfaces/KelUtils.h"
#include "script/engine/word_table.h"

namespace kel::script {

class WordHandler {
public:
    // A handler of somebody else: holds a reference.
    static WordHandler foreign(IPreprocessorExtension* extension) {
        return WordHandler(extension, extension);
    }

    // The preprocessor itself: a reference would keep it alive for ever.
    static WordHandler own(IPreprocessorExtension* extension) {
        return WordHandler(extension, nullptr);
    }

    IPreprocessorExtension* extension() const { return extension_; }
    bool isForeign() const { return owner_ != nullptr; }

private:
    WordHandler(IPreprocessorExtension* extension, IPreprocessorExtension* owner)
        : extension_(extension), owner_(owner) {}

    IPreprocessorExtension* extension_;
    com::ComPtr<IPreprocessorExtension> owner_;
};

using WordHandlers = WordTable<WordHandler>;

}  // namespace kel::script
