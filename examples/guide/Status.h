#pragma once

#include <Korvex3Sync/Korvex3Sync.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace guide {

using namespace Korvex3Sync;

/// The text for a status.
inline std::string Describe(RETSTATUS status) {
    char none = 0;
    char* text = &none;  // any pointer but null: for null there is no text
    GetStatusDescriptionString(status, text);
    const std::unique_ptr<char[]> owned(text);  // the text is a new buffer that we own
    return owned ? owned.get() : "";            // null: out of memory
}

/// Throws if an operation did not succeed.
inline void Require(RETSTATUS status, const std::string& operation) {
    if (status != STATUS_SUCCESS) {
        throw std::runtime_error(operation + ": " + Describe(status));
    }
}

}  // namespace guide
