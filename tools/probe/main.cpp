// A launcher on the command line: talks to the helper over its pipe. README.md tells how to use it.

#include "tools/probe/run.h"
#include "tools/surroundings/surroundings.h"

int main(int argc, char** argv) {
    surroundings::PrepareStandardStreams();
    return static_cast<int>(RunProbe(surroundings::Arguments(argc, argv)));
}
