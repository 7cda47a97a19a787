#include "script/engine/host.h"

#include <exception>

namespace kel::script {

std::string Host::failureText() {
    try {
        throw;
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "Unknown failure";
    }
}

}  // namespace kel::script
