// What the helper's tick costs before it does anything: a pause of 33 ms, over and over, until somebody ends it.

#include <chrono>
#include <thread>

int main() {
    for (;;) std::this_thread::sleep_for(std::chrono::milliseconds(33));
}
