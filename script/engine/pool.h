#pragma once
// A sequence that grows without moving what it holds.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kel::script {

// Holds its elements in few large blocks: growing copies nothing, which would double the memory of
// a large script, and asks for memory seldom.
template <class Element>
class Pool {
public:
    // A program has no more elements of a kind than its text has characters.
    std::uint32_t size() const { return size_; }

    const Element& operator[](std::size_t index) const {
        return blocks_[index / kBlockSize][index % kBlockSize];
    }

    void push_back(Element element) {
        if (size_ == blocks_.size() * kBlockSize) {
            blocks_.emplace_back();
            blocks_.back().reserve(kBlockSize);
        }
        blocks_.back().push_back(std::move(element));
        ++size_;
    }

private:
    static constexpr std::size_t kBlockSize = 2048;

    std::vector<std::vector<Element>> blocks_;
    std::uint32_t size_ = 0;
};

}  // namespace kel::script
