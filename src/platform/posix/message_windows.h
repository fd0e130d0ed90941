#pragma once

namespace posix_layer {

// Posts WM_CLOSE to every window. While there is none, the next one that is created gets it. Any thread.
void PostCloseToAllWindows();

}  // namespace posix_layer
