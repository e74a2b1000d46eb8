#pragma once

#include <array>
#include <cstddef>
#include <system_error>

namespace Korvex3Sync::os {

/// What the other files of this folder do with descriptors; each system has its own names for it.
/// No child process inherits a descriptor that is made here.

/// Why the last call of the system failed, as an error that compares with std::errc and has the
/// same text on every system.
std::error_code LastError();

/// Another descriptor of the same file, above those of standard input, output and error; -1 on an
/// error.
int DuplicateDescriptor(int descriptor);
/// Makes `descriptor` mean the same file as `source`. A child process inherits it.
bool RedirectDescriptor(int source, int descriptor);
/// Discards what is written, and has nothing to read.
int OpenNothing();
/// The read end and the write end of a pipe; false on an error.
bool MakePipe(std::array<int, 2>& ends);

/// How many bytes were read; 0 at the end, negative on an error.
std::ptrdiff_t ReadDescriptor(int descriptor, char* bytes, std::size_t most);
/// How many bytes were written; negative on an error.
std::ptrdiff_t WriteDescriptor(int descriptor, const char* bytes, std::size_t count);
bool CloseDescriptor(int descriptor);

}  // namespace Korvex3Sync::os
