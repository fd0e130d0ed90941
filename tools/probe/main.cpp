// A launcher on the command line: talks to the helper over its pipe. README.md tells how to use it.

#include "support/system.h"
#include "tools/probe/run.h"

int main(int argc, char** argv) {
    support::PrepareStandardStreams();
    return static_cast<int>(RunProbe(support::Arguments(argc, argv)));
}
