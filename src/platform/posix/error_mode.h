#pragma once

namespace posix_layer {

// What would show a dialog of the system asks here first: unless the calling thread's error mode forbids that, the
// process is aborted, with a line on stderr.
void ExpectNoDialog(const char* call);

}  // namespace posix_layer
