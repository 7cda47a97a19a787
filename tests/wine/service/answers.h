#pragma once
// What the doubles of access objects answer.

#include <windows.h>

#include <deque>
#include <map>
#include <string>

namespace kel::test {

// By the names of members: one answer after the other, the last one for good; 1 where there is
// none, which is not VARIANT_TRUE.
class Answers : public std::map<std::string, std::deque<double>, std::less<>> {
public:
    using map::map;

    template <class Value>
    HRESULT give(const char* member, Value* value) {
        std::deque<double>& left = (*this)[member];
        *value = left.empty() ? Value{1} : static_cast<Value>(left.front());
        if (left.size() > 1) left.pop_front();
        return S_OK;
    }
};

}  // namespace kel::test
