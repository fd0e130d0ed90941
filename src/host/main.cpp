#include "host/process.h"

int WINAPI wWinMain(HINSTANCE hInstance, HINSTANCE, LPWSTR lpCmdLine, int) {
    return RunProcess(hInstance, lpCmdLine);
}
