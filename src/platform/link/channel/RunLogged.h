#pragma once

#include <exception>

#include "platform/os/Log.h"

namespace Korvex3Sync::link {

/// Runs a function that must not end its thread or leave a library. False, with a log record that
/// starts with `what`, if it throws.
template <class Function>
bool RunLogged(const char* what, const Function& run) {
    try {
        run();
        return true;
    } catch (const std::exception& e) {
        LOG(ERROR) << what << ": " << e.what();
    } catch (...) {
        LOG(ERROR) << what << ": unknown exception";
    }
    return false;
}

}  // namespace Korvex3Sync::link
